#include "AiChatPanel.h"

#include "ChatWidgets.h"
#include "core/ConfigManager.h"
#include "core/Toast.h"
#include "service/ai/AiApiService.h"
#include "service/ai/AiDialect.h"
#include "service/ai/AiProviderService.h"
#include "widget/ControlName.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScrollArea>
#include <QSplitter>
#include <QStackedWidget>
#include <QUrl>
#include <QVBoxLayout>

namespace zelmor::widget {

namespace {

QPushButton* namedButton(const QString& text, const char* name, QWidget* parent)
{
    QPushButton* button = makeButton(text, name, parent);
    button->setCursor(Qt::PointingHandCursor);
    return button;
}

// A page inside a frameless scroll area that only scrolls up and down.
QScrollArea* scrollAreaFor(QWidget* page, const char* name, QWidget* parent)
{
    auto* area = new QScrollArea(parent);
    area->setObjectName(QLatin1String(name));
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setWidget(page);
    return area;
}

struct CardSpec
{
    const char* action;
    QString description;
};

} // namespace

AiChatPanel::AiChatPanel(QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("aiChatPanel"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* splitter = new QSplitter(Qt::Horizontal, this);
    splitter->addWidget(buildSidebar());
    splitter->addWidget(buildMainColumn());
    splitter->setStretchFactor(0, 0);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({260, 840});
    layout->addWidget(splitter);

    m_api = new service::ai::AiApiService(this);
    connect(m_api, &service::ai::AiApiService::chatToolExecuted, this,
            &AiChatPanel::onToolExecuted);
    connect(m_api, &service::ai::AiApiService::chatFinished, this, &AiChatPanel::onAnswer);
    connect(m_api, &service::ai::AiApiService::chatFailed, this, &AiChatPanel::onFailed);

    loadSessions();
    refreshSessionList();
    if (!m_sessions.isEmpty())
        selectSession(m_sessions.first().id);
    else
        newSession();
}

QWidget* AiChatPanel::buildSidebar()
{
    auto* sidebar = new QWidget(this);
    sidebar->setObjectName(QStringLiteral("sidebarContainer"));
    auto* column = new QVBoxLayout(sidebar);
    column->setContentsMargins(12, 16, 12, 16);
    column->setSpacing(12);
    auto* logo = new QHBoxLayout;
    logo->setContentsMargins(4, 0, 4, 0);
    logo->setSpacing(6);
    logo->addWidget(makeLabel(QStringLiteral("✨"), "sidebarLogoIcon", sidebar));
    logo->addWidget(makeLabel(QStringLiteral("Zelmor AI"), "logoLabel", sidebar), 1);
    column->addLayout(logo);
    QPushButton* newChat = namedButton(tr("+ New Chat", "ai.btn.newChat"), "btnNewChat", sidebar);
    connect(newChat, &QPushButton::clicked, this, &AiChatPanel::newSession);
    column->addWidget(newChat);
    m_searchBox = new QLineEdit(sidebar);
    m_searchBox->setObjectName(QStringLiteral("searchBox"));
    m_searchBox->setPlaceholderText(tr("Search chat titles...", "ai.search.placeholder"));
    m_searchBox->setAccessibleName(m_searchBox->placeholderText());
    connect(m_searchBox, &QLineEdit::textChanged, this, &AiChatPanel::refreshSessionList);
    column->addWidget(m_searchBox);
    m_sessionList = new QListWidget(sidebar);
    m_sessionList->setObjectName(QStringLiteral("sessionList"));
    m_sessionList->setAccessibleName(tr("Chat sessions", "ai.sessions.name"));
    const auto selectItem = [this](QListWidgetItem* item) {
        selectSession(item->data(Qt::UserRole).toString());
    };
    connect(m_sessionList, &QListWidget::itemClicked, this, selectItem);
    connect(m_sessionList, &QListWidget::itemActivated, this, selectItem); // Enter on a row
    column->addWidget(m_sessionList, 1);
    return sidebar;
}

QWidget* AiChatPanel::buildMainColumn()
{
    auto* main = new QWidget(this);
    main->setObjectName(QStringLiteral("mainContainer"));
    auto* column = new QVBoxLayout(main);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(buildTopBar());
    m_modelWarning = makeLabel(
        tr("ℹ 当前是 OpenAI 模型 (Chat Completions 路径)，不会调用 Zelmor "
           "的截图/历史/标注工具。如需工具能力，可：\n  • 切到 Anthropic Claude 或 Qwen 模型；\n  "
           "• "
           "或在「设置 ⚙️ -> AI」开启「OpenAI 走 Responses API」开关。",
           "ai.warning.openai"),
        "modelWarning", main);
    m_modelWarning->setWordWrap(true);
    m_modelWarning->setContentsMargins(12, 6, 12, 6);
    column->addWidget(m_modelWarning);
    m_stack = new QStackedWidget(main);
    m_stack->addWidget(scrollAreaFor(buildWelcomePage(), "welcomeScrollArea", m_stack));
    m_scrollArea = scrollAreaFor(buildConversation(), "aiScrollArea", m_stack);
    m_stack->addWidget(m_scrollArea);
    followEnd();
    column->addWidget(m_stack, 1);
    column->addWidget(buildInputArea());
    refreshProvider();
    connect(&service::ai::AiProviderService::instance(), &service::ai::AiProviderService::changed,
            this, &AiChatPanel::refreshProvider);
    connect(&core::ConfigManager::instance(), &core::ConfigManager::hotkeysChanged, this,
            &AiChatPanel::refreshAttachment);
    return main;
}

QWidget* AiChatPanel::buildTopBar()
{
    auto* bar = new QWidget(this);
    bar->setObjectName(QStringLiteral("topbar"));
    bar->setFixedHeight(42);
    auto* row = new QHBoxLayout(bar);
    row->setContentsMargins(12, 4, 12, 4);
    row->setSpacing(8);
    row->addWidget(makeLabel(QStringLiteral("✨"), "topTitleIcon", bar));
    row->addWidget(
        makeLabel(tr("Ask AI about this screenshot", "ai.topbar.title"), "topTitleLabel", bar), 1);
    m_modelSelect = new QComboBox(bar);
    m_modelSelect->setObjectName(QStringLiteral("modelSelect"));
    m_modelSelect->setAccessibleName(tr("Model", "ai.model.name"));
    connect(m_modelSelect, &QComboBox::currentTextChanged, this,
            &AiChatPanel::refreshModelDisplays);
    row->addWidget(m_modelSelect);
    QPushButton* capture =
        namedButton(tr("📷 Add Screenshot", "ai.btn.capture"), "btnTopAction", bar);
    capture->setToolTip(tr("Capture screen region to current chat", "ai.tip.capture"));
    connect(capture, &QPushButton::clicked, this, &AiChatPanel::captureRegionRequested);
    row->addWidget(capture);
    QPushButton* search =
        namedButton(tr("Search Chat", "ai.btn.searchThisChat"), "btnTopAction", bar);
    connect(search, &QPushButton::clicked, this, [this] { m_searchBox->setFocus(); });
    row->addWidget(search);
    QPushButton* clear = namedButton(tr("🗑️ Clear", "ai.btn.clearChat"), "btnTopDanger", bar);
    clear->setToolTip(tr("Clear current chat history", "ai.tip.clear"));
    connect(clear, &QPushButton::clicked, this, &AiChatPanel::clearCurrentChat);
    row->addWidget(clear);
    QPushButton* settings = namedButton(QStringLiteral("⚙️"), "btnSettings", bar);
    setTipAndName(settings, tr("AI settings", "ai.tip.settings"));
    connect(settings, &QPushButton::clicked, this, &AiChatPanel::settingsRequested);
    row->addWidget(settings);
    return bar;
}

QWidget* AiChatPanel::buildWelcomePage()
{
    auto* page = new QWidget(this);
    page->setObjectName(QStringLiteral("welcomePage"));
    auto* column = new QVBoxLayout(page);
    column->setContentsMargins(24, 16, 24, 16);
    column->setSpacing(12);
    auto* head = new QVBoxLayout;
    head->setSpacing(6);
    auto* circle = new QWidget(page);
    circle->setObjectName(QStringLiteral("welcomeIconCircle"));
    circle->setFixedSize(64, 64);
    auto* circleLayout = new QVBoxLayout(circle);
    circleLayout->addWidget(makeLabel(QStringLiteral("✨"), "welcomeIcon", circle), 0,
                            Qt::AlignCenter);
    head->addWidget(circle, 0, Qt::AlignHCenter);
    head->addWidget(makeLabel(tr("I can help you operate this computer", "ai.welcome.title"),
                              "welcomeTitle", page),
                    0, Qt::AlignHCenter);
    QLabel* desc = makeLabel(tr("Annotate screenshot, recognize text, open apps, operate software "
                                "windows — just say the word",
                                "ai.welcome.desc"),
                             "welcomeDesc", page);
    desc->setWordWrap(true);
    desc->setAlignment(Qt::AlignCenter);
    head->addWidget(desc);
    column->addStretch(1);
    column->addLayout(head);

    const CardSpec cards[] = {
        {"annotate", tr("Capture & highlight key points", "ai.card.annotate.desc")},
        {"open_app", tr("Launch app or website", "ai.card.openApp.desc")},
        {"operate_ui", tr("Find contact & send message", "ai.card.operateUI.desc")},
        {"ocr", tr("Screen OCR", "ai.card.ocr.desc")},
        {"translate", tr("Screenshot translation", "ai.card.translate.desc")},
        {"explain", tr("Extract key information", "ai.card.summarize.desc")},
    };
    auto* grid = new QGridLayout;
    grid->setSpacing(10);
    for (int i = 0; i < 6; ++i) {
        const QString action = QLatin1String(cards[i].action);
        const QString title = cardTitle(action);
        auto* card = new WelcomeCard(title, cards[i].description, page);
        connect(card, &WelcomeCard::clicked, this,
                [this, action, title] { runQuickAction(action, title); });
        grid->addWidget(card, i / 2, i % 2);
    }
    column->addLayout(grid);
    column->setAlignment(grid, Qt::AlignHCenter);
    column->addStretch(1);
    return page;
}

QString AiChatPanel::cardTitle(const QString& action)
{
    // Literal calls, so that the translation tools find every title.
    if (action == QLatin1String("annotate")) return tr("Annotate Screenshot", "ai.card.annotate");
    if (action == QLatin1String("open_app")) return tr("Open Application", "ai.card.openApp");
    if (action == QLatin1String("operate_ui")) return tr("Operate Software", "ai.card.operateUI");
    if (action == QLatin1String("ocr")) return tr("Recognize Text", "ai.card.ocr");
    if (action == QLatin1String("translate")) return tr("Translate Content", "ai.card.translate");
    if (action == QLatin1String("explain")) return tr("Summarize Points", "ai.card.summarize");
    return tr("Screenshot processing", "ai.wf.label");
}

QWidget* AiChatPanel::buildConversation()
{
    auto* page = new QWidget(this);
    page->setObjectName(QStringLiteral("scrollWidget"));
    m_conversation = new QVBoxLayout(page);
    m_conversation->setContentsMargins(20, 20, 20, 20);
    m_conversation->setSpacing(16);
    m_conversation->addStretch(1);
    return page;
}

QWidget* AiChatPanel::buildInputArea()
{
    auto* area = new QWidget(this);
    area->setObjectName(QStringLiteral("inputContainer"));
    auto* column = new QVBoxLayout(area);
    column->setContentsMargins(16, 10, 16, 10);
    column->setSpacing(8);

    auto* attach = new QFrame(area);
    attach->setObjectName(QStringLiteral("attachFrame"));
    auto* attachRow = new QHBoxLayout(attach);
    attachRow->setContentsMargins(10, 6, 10, 6);
    attachRow->setSpacing(10);
    m_attachThumb = new ChatPictureLabel(attach);
    m_attachThumb->setObjectName(QStringLiteral("attachThumb"));
    m_attachThumb->setAlignment(Qt::AlignCenter);
    attachRow->addWidget(m_attachThumb);
    m_attachInfo = makeLabel(QString(), "attachInfo", attach);
    m_attachInfo->setWordWrap(true);
    attachRow->addWidget(m_attachInfo, 1);
    m_removeAttach = namedButton(QStringLiteral("✕"), "btnRemoveAttach", attach);
    m_removeAttach->setFixedSize(22, 22);
    setTipAndName(m_removeAttach, tr("移除截图", "ai.tip.removeAttach"));
    connect(m_removeAttach, &QPushButton::clicked, this, [this] { setAttachment(QPixmap()); });
    attachRow->addWidget(m_removeAttach);
    column->addWidget(attach);

    m_input = new ChatInputEdit(area);
    m_input->setObjectName(QStringLiteral("chatInput"));
    m_input->setMinimumHeight(48);
    m_input->setMaximumHeight(130);
    m_input->setPlaceholderText(
        tr("输入消息...(Enter 发送，Shift+Enter 换行)", "ai.input.placeholder"));
    m_input->setAccessibleName(tr("Message", "ai.input.name"));
    connect(m_input, &ChatInputEdit::sendRequested, this, &AiChatPanel::send);
    connect(m_input, &ChatInputEdit::stopRequested, this, &AiChatPanel::stop);
    connect(m_input, &ChatInputEdit::imagePasted, this, [this](const QImage& image) {
        setAttachment(QPixmap::fromImage(image));
        core::tool::Toast::showToast(
            tr("📷 Attachment Added", "ai.toast.attachPastedTitle"),
            tr("Screenshot image pasted from clipboard", "ai.toast.attachPastedBody"), 2200);
    });
    connect(m_input, &ChatInputEdit::pictureRefused, this, &AiChatPanel::tellPictureRefused);
    column->addWidget(m_input);

    auto* bottom = new QHBoxLayout;
    bottom->setContentsMargins(0, 4, 0, 0);
    bottom->setSpacing(10);
    m_providerInfo = makeLabel(QString(), "providerInfoLabel", area);
    bottom->addWidget(m_providerInfo);
    bottom->addStretch(1);
    m_status = makeLabel(tr("就绪", "ai.status.ready"), "statusLabel", area);
    bottom->addWidget(m_status);
    m_stopButton = namedButton(QStringLiteral("■"), "btnStop", area);
    setTipAndName(m_stopButton, tr("Stop (Esc)", "ai.btn.stopTip"));
    m_stopButton->hide();
    connect(m_stopButton, &QPushButton::clicked, this, &AiChatPanel::stop);
    bottom->addWidget(m_stopButton);
    m_sendButton = namedButton(QStringLiteral("➔"), "btnSend", area);
    setTipAndName(m_sendButton, tr("发送消息 (Enter)", "ai.btn.sendTip"));
    connect(m_sendButton, &QPushButton::clicked, this, &AiChatPanel::send);
    bottom->addWidget(m_sendButton);
    column->addLayout(bottom);
    refreshAttachment();
    return area;
}

// The box and the line below name the model and the endpoint that a request will go to.
void AiChatPanel::refreshProvider()
{
    const service::ai::AiProvider provider = service::ai::AiProviderService::instance().active();
    {
        const QSignalBlocker quiet(m_modelSelect);
        m_modelSelect->clear();
        if (!provider.model.isEmpty()) m_modelSelect->addItem(provider.model);
    }
    if (!service::ai::AiApiService::unusableReason(provider).isEmpty()) {
        m_providerInfo->setText(
            tr("No AI provider for chat: set one up in Settings → AI", "ai.provider.none"));
    } else {
        // Without its query, which may carry a key.
        const QUrl url(service::ai::endpointUrl(service::ai::effectiveProtocol(provider.protocol),
                                                provider.baseUrl));
        m_providerInfo->setText(
            tr("本次请求将发送到 %1", "ai.provider.info")
                .arg(url.toDisplayString(QUrl::RemoveQuery | QUrl::RemoveUserInfo)));
    }
    refreshModelDisplays();
}

void AiChatPanel::refreshModelDisplays()
{
    m_modelWarning->setVisible(
        m_modelSelect->currentText().contains(QLatin1String("gpt"), Qt::CaseInsensitive));
}

void AiChatPanel::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    m_input->setFocus(); // what the user types on opening the page is a message
}

void AiChatPanel::setAttachment(const QPixmap& picture)
{
    m_attachment = picture;
    refreshAttachment();
}

void AiChatPanel::refreshAttachment()
{
    m_attachThumb->setPicture(m_attachment);
    if (m_attachment.isNull()) {
        m_attachThumb->setFixedSize(40, 24);
        m_attachThumb->setPixmap(QPixmap());
        m_attachThumb->setText(tr("No Image", "ai.attach.none"));
        m_attachThumb->setStyleSheet(QStringLiteral(
            "background: rgba(128, 128, 128, 0.25); color: #8A8A90; border-radius: 4px; "
            "font-size: 9px;"));
        m_attachThumb->setToolTip(QString());
        const QString hotkey =
            QKeySequence::fromString(core::ConfigManager::instance().hotkeyRegion())
                .toString(QKeySequence::NativeText);
        m_attachInfo->setText(
            hotkey.isEmpty()
                ? tr("(No screenshot attached) Use 📷 Add Screenshot first, then ask AI",
                     "ai.attach.emptyHintNoKey")
                : tr("(No screenshot attached) Press %1 to capture screenshot first, then ask AI",
                     "ai.attach.emptyHint")
                      .arg(hotkey));
        m_removeAttach->hide();
        return;
    }
    m_attachThumb->setFixedSize(36, 36);
    m_attachThumb->setText(QString());
    m_attachThumb->setPixmap(
        m_attachment.scaled(36, 36, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation)
            .copy(0, 0, 36, 36));
    m_attachThumb->setStyleSheet(
        QStringLiteral("border: 1px solid rgba(128, 128, 128, 0.5); border-radius: 6px;"));
    m_attachThumb->setToolTip(tr("点击放大预览截图", "ai.tip.previewImage"));
    m_attachInfo->setText(tr("Attached screenshot (%1 × %2 px)", "ai.attach.info")
                              .arg(m_attachment.width())
                              .arg(m_attachment.height()));
    m_removeAttach->show();
}

} // namespace zelmor::widget
