// The chat page's send path: the request, the thinking state, the answers and the quick
// actions.

#include "AiChatPanel.h"

#include "ChatWidgets.h"
#include "core/Toast.h"
#include "service/ai/AiApiService.h"
#include "service/history/HistoryService.h"
#include "service/mcp/McpTool.h"
#include "widget/HistoryDetailPanel.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QStackedWidget>
#include <QTimer>
#include <QVBoxLayout>

namespace zelmor::widget {

using service::ai::ChatSession;

namespace {

constexpr int kDotIntervalMs = 350;

const char* const kSystemPrompt =
    "You are Zelmor AI, an intelligent desktop assistant.\n"
    "When an image screenshot is attached, analyze the visual content of the image (text OCR, "
    "UI layout, elements, buttons, or errors) and answer the user's prompt in clear markdown.\n"
    "Do NOT invoke screenshot or capture tools when an image is already attached in the "
    "request.\n"
    "Only output <tool_call><function=launch_app>target>path_or_url</tool_call> if the user "
    "explicitly asks to open an application or URL.";

// Some models write a tool call as text instead of asking for it.
const QRegularExpression& textToolCall()
{
    static const QRegularExpression pattern(QStringLiteral(
        "<tool_call>\\s*<function=([^>]+)>\\s*(?:target>([^\\n<]+))?(?:</tool_call>)?"));
    return pattern;
}

} // namespace

void AiChatPanel::send()
{
    if (thinking()) return;
    const QString text = m_input->toPlainText().trimmed();
    if (text.isEmpty() && m_attachment.isNull()) return;
    m_input->clear();
    const QString title = service::ai::chatTitleFor(text, tr("Image Chat", "ai.session.imageChat"));
    ChatSession* session = currentSession();
    if (!session)
        startSession(title);
    else if (session->title == tr("New Chat", "ai.session.newTitle") || session->messages.isEmpty())
        session->title = title;
    refreshSessionList();

    const QString shown = text.isEmpty() ? tr("(Image Only)", "ai.send.imageOnly") : text;
    m_stack->setCurrentIndex(1);
    addBubble(QStringLiteral("user"), shown, m_attachment);
    m_askedId = m_currentId;
    appendTo(m_askedId, QStringLiteral("user"), shown, m_attachment);

    service::ai::ChatRequest request;
    request.text = text.isEmpty() ? QStringLiteral("Describe this image.") : text;
    request.systemPrompt = QLatin1String(kSystemPrompt);
    request.image = m_attachment;
    request.maxTokens = 1024;
    request.enableTools = true;
    const QString model = m_modelSelect->currentText();
    if (model.contains(QLatin1String("gpt"), Qt::CaseInsensitive) ||
        model.contains(QLatin1String("openai"), Qt::CaseInsensitive))
        addBubble(QStringLiteral("system"),
                  QStringLiteral("ℹ 当前是 OpenAI 模型(Chat Completions 路径),不会调用 Zelmor "
                                 "的截图/历史/标注工具。如需工具能力,可切到 Anthropic Claude "
                                 "模型。"),
                  QPixmap());
    beginThinking();
    m_api->chat(request);
    setAttachment(QPixmap());
}

void AiChatPanel::stop()
{
    if (thinking()) m_api->cancel();
}

void AiChatPanel::beginThinking()
{
    endThinking();
    m_stack->setCurrentIndex(1);
    m_sendButton->setEnabled(false);
    m_sendButton->setText(QStringLiteral("⏳"));
    m_sendButton->setToolTip(tr("AI 正在思考回复中...", "ai.btn.thinkingTip"));
    m_stopButton->show();
    m_status->setText(tr("✨ AI 正在思考中...", "ai.status.thinking"));

    m_loadingBubble = new QWidget;
    m_loadingBubble->setObjectName(QStringLiteral("loadingBubble"));
    auto* column = new QVBoxLayout(m_loadingBubble);
    column->setContentsMargins(0, 0, 0, 0);
    auto* name = new QLabel(tr("Zelmor AI", "ai.role.ai"), m_loadingBubble);
    name->setObjectName(QStringLiteral("bubbleName"));
    column->addWidget(name);
    m_loadingLabel = new QLabel(tr("AI 正在思考中 · · ·", "ai.thinking.anim"), m_loadingBubble);
    m_loadingLabel->setObjectName(QStringLiteral("bubbleAiLoading"));
    column->addWidget(m_loadingLabel, 0, Qt::AlignLeft);
    m_conversation->insertWidget(m_conversation->count() - 1, m_loadingBubble);

    m_dots = 0;
    m_thinkingTimer = new QTimer(this);
    connect(m_thinkingTimer, &QTimer::timeout, this, [this] {
        m_dots = (m_dots + 1) % 4;
        if (m_loadingLabel)
            m_loadingLabel->setText(tr("AI 正在思考中%1", "ai.thinking.dots")
                                        .arg(QStringLiteral(" ·").repeated(m_dots + 1)));
        scrollToEnd();
    });
    m_thinkingTimer->start(kDotIntervalMs);
    QTimer::singleShot(50, this, &AiChatPanel::scrollToEnd);
}

void AiChatPanel::endThinking()
{
    delete m_thinkingTimer;
    m_thinkingTimer = nullptr;
    delete m_loadingBubble;
    m_loadingBubble = nullptr;
    m_loadingLabel = nullptr;
    m_sendButton->setEnabled(true);
    m_sendButton->setText(QStringLiteral("➔"));
    m_sendButton->setToolTip(tr("发送消息 (Enter)", "ai.btn.sendTip"));
    m_stopButton->hide();
    m_status->setText(tr("就绪", "ai.status.ready"));
}

void AiChatPanel::answerWith(const QString& role, const QString& text, bool keep)
{
    if (m_askedId == m_currentId) addBubble(role, text, QPixmap());
    if (!keep || !session(m_askedId)) return;
    appendTo(m_askedId, role, text, QPixmap());
    saveSessions();
}

void AiChatPanel::onAnswer(const QString& answer)
{
    endThinking();
    QString text = answer.trimmed();
    if (text.isEmpty()) text = tr("已为您完成桌面自动化操作！", "ai.mcp.completed");
    const QRegularExpressionMatch call = textToolCall().match(text);
    if (!call.hasMatch()) {
        answerWith(QStringLiteral("assistant"), text, true);
        refreshSessionList(); // the message count
        return;
    }
    // Shown, not kept: the session holds only what the model said in words.
    const QString function = call.captured(1).trimmed();
    const QString target = call.captured(2).trimmed();
    const QString rest = QString(text).remove(textToolCall()).trimmed();
    if (!rest.isEmpty()) answerWith(QStringLiteral("assistant"), rest, false);
    QVariantMap args;
    if (!target.isEmpty()) args.insert(QStringLiteral("target"), target);
    const QVariantMap result = service::mcp::callMcpTool(function, args);
    if (result.value(QStringLiteral("isError"), false).toBool()) {
        answerWith(QStringLiteral("system"),
                   tr("MCP 工具执行失败 (%1): %2", "ai.mcp.failed")
                       .arg(function, result.value(QStringLiteral("text")).toString()),
                   false);
        return;
    }
    QString line = tr("✅ MCP 工具已成功执行: %1", "ai.mcp.success").arg(function);
    if (!target.isEmpty()) line += QStringLiteral(" → ") + target;
    answerWith(QStringLiteral("system"), line, false);
}

void AiChatPanel::onToolExecuted(const QString& toolName, const QVariantMap& args,
                                 const QVariantMap& result)
{
    QString line;
    if (result.value(QStringLiteral("isError"), false).toBool()) {
        line = tr("⚠️ 自动化工具执行异常 [%1]: %2", "ai.tool.err")
                   .arg(toolName, result.value(QStringLiteral("text")).toString());
    } else {
        QString detail;
        for (const char* key : {"target", "name", "text", "hotkey"})
            if (args.contains(QLatin1String(key))) {
                detail = args.value(QLatin1String(key)).toString();
                break;
            }
        const QString what =
            detail.isEmpty() ? toolName : QStringLiteral("%1 → %2").arg(toolName, detail);
        line = tr("⚡ 已自动执行桌面操控: %1", "ai.tool.succ").arg(what);
    }
    answerWith(QStringLiteral("system"), line, true);
}

void AiChatPanel::onFailed(const QString& reason)
{
    endThinking();
    answerWith(QStringLiteral("system"), tr("Request failed: %1", "ai.error.fmt").arg(reason),
               false);
}

void AiChatPanel::fillInput(const QString& text)
{
    m_input->setPlainText(text);
    m_input->setFocus();
    m_input->moveCursor(QTextCursor::End);
}

void AiChatPanel::runQuickAction(const QString& key, const QString& prompt)
{
    if (key == QLatin1String("open_app")) {
        fillInput(tr("Help me open Notepad", "ai.prompt.openApp"));
        return;
    }
    if (key == QLatin1String("operate_ui")) {
        if (m_attachment.isNull())
            service::mcp::callMcpTool(QStringLiteral("capture_active_window"), {});
        fillInput(tr("Please help me operate current software window:", "ai.prompt.operateUi"));
        return;
    }
    if (m_attachment.isNull()) {
        const QList<core::HistoryItem> newest =
            service::history::HistoryService::instance().recent(1);
        QString tooLarge;
        const QPixmap picture =
            newest.isEmpty() ? QPixmap()
                             : HistoryDetailPanel::loadPicture(newest.first().path, &tooLarge);
        if (!tooLarge.isEmpty()) tellPictureRefused(tooLarge);
        if (picture.isNull()) {
            m_pendingAction = key;
            m_status->setText(tr("Please select screen region...", "ai.status.capturing"));
            Q_EMIT captureRegionRequested();
            return;
        }
        setAttachment(picture);
    }
    if (key == QLatin1String("ocr"))
        fillInput(tr("Recognize text on current screen (OCR)", "ai.prompt.ocr"));
    else if (key == QLatin1String("annotate"))
        fillInput(tr("Please analyze key areas and important information of this screenshot "
                     "and provide annotations.",
                     "ai.prompt.annotate"));
    else if (key == QLatin1String("translate"))
        fillInput(tr("Translate text content in current screenshot", "ai.prompt.translate"));
    else if (key == QLatin1String("explain"))
        fillInput(tr("Summarize this screenshot in 3-5 key points", "ai.prompt.explain"));
    else
        fillInput(prompt);
}

void AiChatPanel::onCaptureForChat(const QPixmap& pm)
{
    setAttachment(pm);
    window()->show();
    window()->raise();
    window()->activateWindow();
    if (m_pendingAction.isEmpty()) return;
    const QString key = m_pendingAction;
    m_pendingAction.clear();
    runQuickAction(key, cardTitle(key));
}

void AiChatPanel::tellPictureRefused(const QString& why)
{
    core::tool::Toast::showToast(tr("Picture not attached", "ai.toast.pictureRefusedTitle"), why,
                                 4000);
}

} // namespace zelmor::widget
