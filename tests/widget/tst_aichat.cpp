#include "DesktopDriver.h"
#include "FakeAiServer.h"
#include "TestMain.h"
#include "TestSupport.h"

#include "core/ConfigManager.h"
#include "core/Toast.h"
#include "manager/ActionManager.h"
#include "service/ai/AiProviderService.h"
#include "service/ai/ChatSessions.h"
#include "service/history/HistoryService.h"
#include "widget/MainWindow.h"
#include "widget/chat/AiChatPanel.h"
#include "widget/chat/ChatWidgets.h"
#include "widget/overlay/CaptureOverlay.h"

#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QStackedWidget>
#include <QTimer>

using namespace zelmor;
using service::ai::ChatSession;
using widget::AiChatPanel;

namespace {

constexpr unsigned kCtrl = 0x11, kShift = 0x10, kReturn = 0x0D, kV = 0x56;

bool pressEnter(bool shift = false)
{
    if (shift)
        return platform::sendKeys(
            {{kShift, true}, {kReturn, true}, {kReturn, false}, {kShift, false}});
    return platform::sendKeys({{kReturn, true}, {kReturn, false}});
}

// The texts of the conversation's widgets of that object name, in order: a label's own, or
// those of the labels in a bubble's frame ("bubbleAi", "bubbleUser").
QStringList bubbles(AiChatPanel* panel, const char* name = "bubbleAi")
{
    QStringList texts;
    auto* page = panel->findChild<QWidget*>(QStringLiteral("scrollWidget"));
    for (QWidget* w : page->findChildren<QWidget*>(QLatin1String(name))) {
        const QList<QLabel*> labels = qobject_cast<QLabel*>(w)
                                          ? QList<QLabel*>{static_cast<QLabel*>(w)}
                                          : w->findChildren<QLabel*>();
        for (QLabel* label : labels)
            texts << label->text();
    }
    return texts;
}

const ChatSession* current(AiChatPanel* panel)
{
    for (const ChatSession& s : panel->sessions())
        if (s.id == panel->currentSessionId()) return &s;
    return nullptr;
}

} // namespace

// The chat page driven as a user drives it, against a local stand-in for the AI provider.
class TestAiChat : public QObject
{
    Q_OBJECT

    test::FakeAiServer m_server;
    widget::MainWindow m_window;
    std::unique_ptr<manager::ActionManager> m_actions;
    QSize m_historyPicture{64, 48};

    AiChatPanel* panel() { return m_window.aiChatPanel(); }
    QWidget* child(const char* name) { return panel()->findChild<QWidget*>(QLatin1String(name)); }
    QString label(const char* name) { return static_cast<QLabel*>(child(name))->text(); }

    // Typed through Qt: the display's keyboard map changes back before this process reads
    // the keys of typeText. Enter, paste and clicks come through the display.
    void type(const QString& text)
    {
        test::click(child("chatInput")->mapToGlobal(QPoint(20, 20)));
        QTRY_VERIFY(child("chatInput")->hasFocus());
        QTest::keyClicks(child("chatInput"), text);
    }

private Q_SLOTS:
    void initTestCase()
    {
        core::ConfigManager::instance().setOutputDir(
            test::sandboxRoot().filePath(QStringLiteral("shots")));
        QVERIFY(m_server.becomeActiveProvider());
        QPixmap newest(m_historyPicture);
        newest.fill(Qt::darkCyan);
        const QString path = test::sandboxRoot().filePath(QStringLiteral("newest.png"));
        QVERIFY(newest.save(path));
        service::history::HistoryService::instance().insert(newest, path,
                                                            core::HistoryCategory::Screenshot);
        m_actions = std::make_unique<manager::ActionManager>(&m_window);
    }

    // A first run has only the new chat, and names the endpoint, the model and the hotkey
    // that are really in use.
    void firstRunNamesWhatIsInUse()
    {
        m_actions->aiChat();
        QVERIFY(QTest::qWaitForWindowExposed(&m_window));
        QCOMPARE(panel()->sessions().size(), 1);
        QVERIFY(current(panel())->messages.isEmpty());
        QCOMPARE(panel()->findChild<QStackedWidget*>()->currentIndex(), 0);
        QVERIFY(label("providerInfoLabel").endsWith(m_server.baseUrl() + "/v1/chat/completions"));
        QCOMPARE(static_cast<QComboBox*>(child("modelSelect"))->currentText(), QStringLiteral("m"));
        QVERIFY(label("attachInfo").contains(core::ConfigManager::instance().hotkeyRegion()));
    }

    // Typing on the freshly opened page writes a message.
    void messageBoxHasTheFocus() { QTRY_COMPARE(QApplication::focusWidget(), child("chatInput")); }

    void pastedPictureIsSentAndTheAnswerRendered()
    {
        QImage red(50, 30, QImage::Format_RGB32);
        red.fill(Qt::red);
        QGuiApplication::clipboard()->setImage(red);
        type(QString());
        QVERIFY(platform::sendKeys({{kCtrl, true}, {kV, true}, {kV, false}, {kCtrl, false}}));
        QTRY_COMPARE(panel()->attachment().size(), QSize(50, 30));
        QCOMPARE(core::tool::Toast::current()->title(), QStringLiteral("📷 Attachment Added"));

        m_server.enqueueHold();
        type(QStringLiteral("What is this <b>shown</b> picture?"));
        QVERIFY(pressEnter(true));
        auto* input = static_cast<QTextEdit*>(child("chatInput"));
        QTRY_COMPARE(input->toPlainText(), QStringLiteral("What is this <b>shown</b> picture?\n"));
        QTest::keyClicks(input, QStringLiteral("second line"));
        QVERIFY(pressEnter());
        QTRY_VERIFY(panel()->thinking());
        QVERIFY(child("loadingBubble") && child("bubbleImage") && !child("btnSend")->isEnabled());
        QVERIFY(panel()->attachment().isNull());
        QTRY_COMPARE(m_server.requests().size(), 1);
        const QString request = QString::fromUtf8(m_server.requests().last().body);
        QVERIFY(request.contains("What is this <b>shown</b> picture?\\nsecond line"));
        QVERIFY(request.contains("data:image/png;base64,"));

        m_server.answerHeld(200, test::openAiReply(QStringLiteral("**bold**")));
        QTRY_VERIFY(!panel()->thinking());
        QVERIFY(!child("loadingBubble"));
        QCOMPARE(bubbles(panel()).last(), QStringLiteral("<b>bold</b>"));
        QVERIFY(bubbles(panel(), "bubbleUser").last().contains(QStringLiteral("&lt;b&gt;shown")));
        QList<ChatSession> saved;
        QVERIFY(service::ai::loadChatSessions(service::ai::chatSessionsPath(), &saved));
        QCOMPARE(saved.first().title, QStringLiteral("What is this <b>..."));
        QCOMPARE(saved.first().messages.first().image.size(), QSize(50, 30));
        QCOMPARE(saved.first().messages.last().text, QStringLiteral("**bold**"));
    }

    void answersThatRunToolsAndFailures_data()
    {
        QTest::addColumn<QList<QByteArray>>("replies");
        QTest::addColumn<QStringList>("systemLines");
        QTest::addColumn<int>("keptMessages"); // after the user's own
        QTest::addRow("tool call written as text")
            << QList<QByteArray>{test::openAiReply(
                   QStringLiteral("<tool_call><function=launch_app>target>true</tool_call>"))}
            << QStringList{QStringLiteral("✅ MCP 工具已成功执行: launch_app → true")} << 0;
        QTest::addRow("unknown tool written as text")
            << QList<QByteArray>{test::openAiReply(
                   QStringLiteral("<tool_call><function=no_such_tool></tool_call>"))}
            << QStringList{QStringLiteral("MCP 工具执行失败 (no_such_tool): unknown tool: "
                                          "no_such_tool")}
            << 0;
        QTest::addRow("real tool calls")
            << QList<QByteArray>{test::openAiToolReply({{"ping", QJsonObject()},
                                                        {"ping", QJsonObject{{"text", "hi"}}}}),
                                 test::openAiReply(QStringLiteral("done"))}
            << QStringList{QStringLiteral("⚡ 已自动执行桌面操控: ping"),
                           QStringLiteral("⚡ 已自动执行桌面操控: ping → hi")}
            << 3;
        QTest::addRow("failure") << QList<QByteArray>{QByteArray(
                                        R"({"error":{"message":"bad key"}})")}
                                 << QStringList{QStringLiteral("Request failed: bad key")} << 0;
    }

    void answersThatRunToolsAndFailures()
    {
        QFETCH(QList<QByteArray>, replies);
        QFETCH(QStringList, systemLines);
        QFETCH(int, keptMessages);
        for (const QByteArray& reply : replies)
            m_server.enqueue(reply.contains("bad key") ? 401 : 200, reply);
        const int before = bubbles(panel(), "bubbleSystem").size();
        const int kept = int(current(panel())->messages.size());
        type(QStringLiteral("go"));
        QVERIFY(pressEnter());
        QTRY_VERIFY_WITH_TIMEOUT(!panel()->thinking() && bubbles(panel(), "bubbleSystem").size() >=
                                                             before + systemLines.size(),
                                 8000);
        QCOMPARE(bubbles(panel(), "bubbleSystem").mid(before), systemLines);
        QCOMPARE(current(panel())->messages.size(), kept + 1 + keptMessages);
        QCOMPARE(current(panel())->messages.at(kept).role, QStringLiteral("user"));
    }

    void answerGoesToTheSessionItWasAskedIn()
    {
        m_server.clear();
        m_server.enqueueHold();
        type(QStringLiteral("asked here"));
        QVERIFY(pressEnter());
        QTRY_COMPARE(m_server.requests().size(), 1);
        const QString asked = panel()->currentSessionId();
        QVERIFY(test::clickButton(panel(), QStringLiteral("btnNewChat")));
        QTRY_VERIFY(panel()->currentSessionId() != asked);
        m_server.answerHeld(200, test::openAiReply(QStringLiteral("for the first")));
        QTRY_VERIFY(!panel()->thinking());
        QVERIFY(current(panel())->messages.isEmpty());
        QVERIFY(bubbles(panel()).isEmpty());
        for (const ChatSession& s : panel()->sessions())
            if (s.id == asked) QCOMPARE(s.messages.last().text, QStringLiteral("for the first"));
    }

    // A long answer shows its start in the bubble, is kept whole, and opens whole.
    void longAnswerOpensWholeInAViewer()
    {
        const QString answer = QStringLiteral("a line of a long answer\n").repeated(4000).trimmed();
        m_server.enqueue(200, test::openAiReply(answer));
        type(QStringLiteral("long"));
        QVERIFY(pressEnter());
        QTRY_VERIFY(child("btnShowAll"));
        QVERIFY(bubbles(panel()).last().size() < answer.size() / 4);
        QCOMPARE(current(panel())->messages.last().text, answer);
        static_cast<QPushButton*>(child("btnShowAll"))->click();
        widget::ChatTextViewer* viewer = nullptr;
        QTRY_VERIFY((viewer = test::shownTopLevel<widget::ChatTextViewer>()));
        QTRY_VERIFY(viewer->filled());
        QCOMPARE(viewer->findChild<QPlainTextEdit*>()->toPlainText(), answer);
        viewer->close();
    }

    // The stop button ends the chat while recognition, asked for by the model, waits.
    void stopDuringAToolStep()
    {
        m_server.clear();
        m_server.enqueue(200, test::openAiToolReply({{"ocr", QJsonObject()}}));
        m_server.enqueueHold();
        // Recognition waits in an event loop of its own: the click has to come from inside it.
        QTimer poll;
        connect(&poll, &QTimer::timeout, this, [&] {
            if (m_server.requests().size() < 2) return;
            poll.stop();
            test::clickButton(panel(), QStringLiteral("btnStop"));
        });
        poll.start(20);
        type(QStringLiteral("read it"));
        QVERIFY(pressEnter());
        QTRY_VERIFY(panel()->thinking());
        QTRY_VERIFY(!panel()->thinking());
        QCOMPARE(m_server.requests().size(), 2);
        QCOMPARE(bubbles(panel(), "bubbleSystem").last(),
                 QStringLiteral("Request failed: Cancelled"));
        QTest::qWait(300);
        QCOMPARE(m_server.requests().size(), 2);
    }

    void quickActionTakesTheNewestHistoryItem()
    {
        QVERIFY(test::clickButton(panel(), QStringLiteral("btnNewChat")));
        QTRY_COMPARE(panel()->findChild<QStackedWidget*>()->currentIndex(), 0);
        widget::WelcomeCard* ocr = nullptr;
        for (auto* card : panel()->findChildren<widget::WelcomeCard*>())
            if (card->accessibleName() == QStringLiteral("Recognize Text")) ocr = card;
        QVERIFY(test::click(ocr->mapToGlobal(ocr->rect().center())));
        QTRY_COMPARE(panel()->attachment().size(), m_historyPicture);
        QCOMPARE(static_cast<QTextEdit*>(child("chatInput"))->toPlainText(),
                 QStringLiteral("Recognize text on current screen (OCR)"));
    }

    void sendScreenshotToAiAttachesTheRegion()
    {
        m_actions->captureForAiChat();
        QTRY_VERIFY(!m_window.isVisible());
        widget::CaptureOverlay* overlay = nullptr;
        QTRY_VERIFY((overlay = test::shownTopLevel<widget::CaptureOverlay>()));
        QVERIFY(QTest::qWaitForWindowActive(overlay));
        QVERIFY(test::drag(overlay->mapToGlobal(QPoint(100, 100)),
                           overlay->mapToGlobal(QPoint(300, 200))));
        QTRY_COMPARE(overlay->selection().size(), QSize(201, 101));
        QVERIFY(pressEnter());
        QTRY_VERIFY(m_window.isVisible());
        QCOMPARE(m_window.currentPage(), int(widget::MainWindow::AiChatPage));
        QTRY_COMPARE(panel()->attachment().size(), QSize(201, 101));
    }
};

ZELMOR_TEST_MAIN(TestAiChat, QApplication)
#include "tst_aichat.moc"
