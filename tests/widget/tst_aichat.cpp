#include "DesktopDriver.h"
#include "FakeAiServer.h"
#include "TestMain.h"
#include "TestSupport.h"

#include "core/ConfigManager.h"
#include "core/Toast.h"
#include "manager/ActionManager.h"
#include "manager/PinManager.h"
#include "manager/TaskManager.h"
#include "service/ai/AiProviderService.h"
#include "service/ai/ChatSessions.h"
#include "service/history/HistoryService.h"
#include "widget/MainWindow.h"
#include "widget/OcrResultDialog.h"
#include "widget/TaskNotificationToast.h"
#include "widget/chat/AiChatPanel.h"
#include "widget/chat/ChatWidgets.h"
#include "widget/overlay/CaptureOverlay.h"
#include "widget/overlay/OverlayPanels.h"

#include <QClipboard>
#include <QComboBox>
#include <QImageReader>
#include <QLabel>
#include <QMessageBox>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QTextEdit>
#include <QTimer>
#include <QToolButton>
#include <QUrl>

using namespace zelmor;
using manager::TaskItem;
using manager::TaskManager;
using service::ai::ChatSession;
using service::history::HistoryService;
using widget::AiChatPanel;
using widget::TaskNotificationToast;

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

// The chat page driven as a user drives it, and the AI entries of the actions with the task
// list and card that follow them, against a local stand-in for the AI provider.
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

    static TaskManager& tasks() { return TaskManager::instance(); }
    static TaskNotificationToast& card() { return TaskNotificationToast::instance(); }
    static TaskItem lastTask() { return tasks().tasks().last(); }
    static qsizetype aiRows()
    {
        qsizetype n = 0;
        for (const core::HistoryItem& i : HistoryService::instance().recent(500))
            n += i.category == core::HistoryCategory::Ai;
        return n;
    }

    // Recognition, translation or annotation of a plain picture.
    void start(int job)
    {
        QPixmap picture(120, 80);
        picture.fill(Qt::white);
        const QList<void (manager::ActionManager::*)(const QPixmap&)> entries{
            &manager::ActionManager::ocrWithPixmap, &manager::ActionManager::translateWithPixmap,
            &manager::ActionManager::aiAnnotateWithPixmap};
        (m_actions.get()->*entries[job])(picture);
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

    // A first run has only the new chat, names the endpoint, the model and the hotkey that
    // are really in use, and gives the message box the focus.
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
        QTRY_COMPARE(QApplication::focusWidget(), child("chatInput"));
    }

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
    }

    void answersThatRunToolsAndFailures()
    {
        QFETCH(QList<QByteArray>, replies);
        QFETCH(QStringList, systemLines);
        QFETCH(int, keptMessages);
        for (const QByteArray& reply : replies)
            m_server.enqueue(200, reply);
        const int before = bubbles(panel(), "bubbleSystem").size();
        const int kept = int(current(panel())->messages.size());
        type(QStringLiteral("go"));
        QVERIFY(pressEnter());
        QTRY_VERIFY_WITH_TIMEOUT(!panel()->thinking() && bubbles(panel(), "bubbleSystem").size() >=
                                                             before + systemLines.size(),
                                 8000);
        QCOMPARE(bubbles(panel(), "bubbleSystem").mid(before), systemLines);
        QCOMPARE(current(panel())->messages.size(), kept + 1 + keptMessages);
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

    // A long answer at the end of a tool round shows its start in the bubble, with the view at
    // its end also when keeping it takes longer than laying it out (a noisy screenshot in the
    // session is slow to encode); it is kept whole, and opens whole.
    void longAnswerAfterAToolRound()
    {
        QImage screenshot(1920, 1080, QImage::Format_RGB32);
        QRandomGenerator::global()->fillRange(reinterpret_cast<quint32*>(screenshot.bits()),
                                              screenshot.sizeInBytes() / 4);
        panel()->onCaptureForChat(QPixmap::fromImage(screenshot));
        const QString answer = QStringLiteral("a line of a long answer\n").repeated(4000).trimmed();
        m_server.enqueue(200, test::openAiToolReply({{"ping", QJsonObject()}}));
        m_server.enqueue(200, test::openAiReply(answer));
        type(QStringLiteral("long"));
        QVERIFY(pressEnter());
        QTRY_VERIFY_WITH_TIMEOUT(child("btnShowAll"), 8000);
        QVERIFY(bubbles(panel()).last().size() < answer.size() / 4);
        QCOMPARE(current(panel())->messages.last().text, answer);
        QWidget* page = child("scrollWidget");
        QTRY_VERIFY(child("btnShowAll")->isVisible() &&
                    page->height() == page->heightForWidth(page->width()));
        QScrollBar* bar = panel()->findChild<QScrollArea*>("aiScrollArea")->verticalScrollBar();
        QTRY_COMPARE(bar->value(), bar->maximum());
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
        // The whole round may end before a check from out here sees it thinking.
        QTimer poll;
        bool stopped = false;
        connect(&poll, &QTimer::timeout, this, [&] {
            if (m_server.requests().size() < 2) return;
            poll.stop();
            stopped = panel()->thinking() && test::clickButton(panel(), QStringLiteral("btnStop"));
        });
        poll.start(20);
        type(QStringLiteral("read it"));
        QVERIFY(pressEnter());
        QTRY_VERIFY(stopped && !panel()->thinking());
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

    // A picture file past the decoding limit is told: neither attached nor pasted as its path.
    void pictureFilePastTheLimitIsTold()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("big.png");
        QVERIFY(QImage(1200, 1200, QImage::Format_RGB32).save(path));
        const int limit = QImageReader::allocationLimit();
        QImageReader::setAllocationLimit(1);
        const auto restore = qScopeGuard([limit] { QImageReader::setAllocationLimit(limit); });
        auto* input = static_cast<QTextEdit*>(child("chatInput"));
        input->clear();
        auto* data = new QMimeData;
        data->setUrls({QUrl::fromLocalFile(path)});
        QGuiApplication::clipboard()->setMimeData(data);
        input->paste();
        const auto* toast = core::tool::Toast::current();
        QVERIFY(toast);
        QCOMPARE(toast->title(), QStringLiteral("Picture not attached"));
        QVERIFY(toast->body().contains("1200×1200 px is too large"));
        QCOMPARE(input->toPlainText(), QString());
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

    void cleanup()
    {
        for (const TaskItem& t : tasks().tasks())
            if (t.isActive()) tasks().updateTask(t.id, TaskItem::Finished, QString(), QString());
        tasks().clearFinished();
    }

    void ocrButtonOfTheRegionOverlay()
    {
        const qsizetype before = aiRows();
        m_server.enqueue(200, test::openAiReply(QStringLiteral("Total: 42")));
        m_actions->captureRegion();
        widget::CaptureOverlay* overlay = nullptr;
        QTRY_VERIFY((overlay = test::shownTopLevel<widget::CaptureOverlay>()));
        overlay->selectWholeImage();
        const int width = overlay->selection().width();
        overlay->panels()->actionButton(widget::overlay::OverlayPanels::Ocr)->click();
        QCOMPARE(aiRows(), before + 1); // the source is kept before any answer
        QCOMPARE(HistoryService::instance().recent(1).first().width, width);
        QTRY_COMPARE(lastTask().state, TaskItem::Finished);
        QCOMPARE(lastTask().result, QStringLiteral("Total: 42"));
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("Total: 42"));
        QTRY_VERIFY(test::shownTopLevel<widget::OcrResultDialog>());
        widget::OcrResultDialog* dialog = test::shownTopLevel<widget::OcrResultDialog>();
        QCOMPARE(dialog->text(), QStringLiteral("Total: 42"));
        Q_EMIT dialog->chatRequested(QStringLiteral("note text"));
        QTRY_VERIFY(m_window.isVisible());
        QVERIFY(bubbles(panel(), "bubbleUser").last().endsWith(QStringLiteral("<br>note text")));
        m_window.hide();

        // The dialog acts on the edited text; copying keeps it open, pinning closes it.
        dialog->findChild<QTextEdit*>(QStringLiteral("ocrTextEdit"))
            ->setPlainText(QStringLiteral("edited"));
        dialog->findChild<QPushButton*>(QStringLiteral("btnCopy"))->click();
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("edited"));
        QVERIFY(dialog->isVisible());
        const qsizetype pins = m_actions->pinManager()->pins().size();
        test::buttonWithText(dialog, QStringLiteral("📌 钉在屏幕"))->click();
        QCOMPARE(m_actions->pinManager()->pins().size(), pins + 1);
        QTRY_VERIFY(!test::shownTopLevel<widget::OcrResultDialog>());
    }

    // A failure marks the task, and the card shows why in full inside its row. Recognition
    // has kept its source before the answer; annotation keeps nothing.
    void failureTellsTheTask_data()
    {
        QTest::addColumn<int>("job"); // 0 recognition, 2 annotation
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<QString>("reason");
        QTest::addColumn<int>("kept");
        const QString key = QStringLiteral("Incorrect API key provided: sk-0123. You can find "
                                           "your API key at https://example.com/account/keys.");
        QTest::newRow("recognition, refused")
            << 0 << QByteArray(R"({"error":{"message":")" + key.toUtf8() + R"("}})") << key << 1;
        QTest::newRow("annotation, no array")
            << 2 << test::openAiReply(QStringLiteral("I see no controls"))
            << "No JSON array in AI response" << 0;
    }
    void failureTellsTheTask()
    {
        QFETCH(int, job);
        QFETCH(QByteArray, reply);
        QFETCH(QString, reason);
        QFETCH(int, kept);
        const qsizetype before = aiRows();
        m_server.enqueue(reply.contains("error") ? 401 : 200, reply);
        start(job);
        const QString toast = core::tool::Toast::current()->title();
        QTRY_COMPARE(lastTask().state, TaskItem::Failed);
        QCOMPARE(lastTask().result, reason);
        QCOMPARE(aiRows(), before + kept);
        QCOMPARE(core::tool::Toast::current()->title(), toast); // no toast of its own
        widget::TaskItemRow* row = card().row(lastTask().id);
        QTRY_VERIFY(row->isVisible());
        QLabel* why = nullptr;
        for (QLabel* label : row->findChildren<QLabel*>())
            if (label->text().contains(reason)) why = label;
        QVERIFY(why);
        QVERIFY(row->rect().contains(QRect(why->mapTo(row, QPoint()), why->size())));
        QVERIFY(why->height() >= why->heightForWidth(why->width()));
        QVERIFY(row->parentWidget()->rect().contains(row->geometry()));
    }

    // Without a provider that can do the job, one message leads to the AI settings, and
    // nothing is kept, started or sent.
    void noUsableProviderLeadsToSettings_data()
    {
        QTest::addColumn<int>("job"); // 0 recognition, 1 translation, 2 annotation
        QTest::addColumn<QString>("protocol");
        QTest::addColumn<QString>("reason"); // how it starts
        QTest::newRow("recognition, no base URL") << 0 << "openai"
                                                  << "AI Base URL is not";
        QTest::newRow("translation, no base URL") << 1 << "openai"
                                                  << "AI Base URL is not";
        QTest::newRow("annotation, local recogniser") << 2 << "tesseract"
                                                      << "Tesseract OCR";
    }
    void noUsableProviderLeadsToSettings()
    {
        QFETCH(int, job);
        QFETCH(QString, protocol);
        QFETCH(QString, reason);
        auto& providers = service::ai::AiProviderService::instance();
        const service::ai::AiProvider usable = providers.active();
        QVERIFY(providers.update({usable.id, {}, protocol, {}, {}, {}, true, 0}));
        const qsizetype rows = aiRows(), jobs = tasks().tasks().size();
        const qsizetype requests = m_server.requests().size();
        start(job);
        start(job);
        QVERIFY(providers.update(usable));
        QCOMPARE(tasks().tasks().size(), jobs);
        QCOMPARE(aiRows(), rows);
        QTest::qWait(100);
        QCOMPARE(m_server.requests().size(), requests);
        const QList<QMessageBox*> prompts = m_window.findChildren<QMessageBox*>();
        QCOMPARE(prompts.size(), 1);
        QVERIFY2(prompts[0]->text().startsWith(reason), qPrintable(prompts[0]->text()));
        test::buttonWithText(prompts[0], QStringLiteral("Open AI Settings"))->click();
        QTRY_VERIFY(m_window.isVisible());
        QCOMPARE(m_window.currentPage(), int(widget::MainWindow::SettingsPage));
        QTRY_VERIFY(m_window.findChildren<QMessageBox*>().isEmpty());
        m_window.hide();
    }

    // The abort that a cancel causes is no failure of its own: list and card say cancelled,
    // and a second cancel changes nothing.
    void cancelledOcrStaysCancelled()
    {
        m_server.enqueueHold();
        const qsizetype requests = m_server.requests().size();
        start(0);
        const quint64 id = lastTask().id;
        QTRY_VERIFY(m_server.requests().size() > requests);
        QVERIFY(card().row(id)->cancelShown());
        QSignalSpy updates(&TaskManager::instance(), &TaskManager::taskUpdated);
        card().row(id)->findChild<QPushButton*>()->click();
        tasks().cancelTask(id);
        QCOMPARE(updates.size(), 1);
        QCOMPARE(lastTask().state, TaskItem::Cancelled);
        QCOMPARE(card().row(id)->statusText(), QStringLiteral("已取消"));
        QVERIFY(!card().row(id)->cancelShown());
    }

    void annotationPinsAndStoresTheMarkedImage()
    {
        const qsizetype before = aiRows();
        const qsizetype pins = m_actions->pinManager()->pins().size();
        m_server.enqueue(200, test::openAiReply(
                                  QStringLiteral("[{\"box\":[10,5,40,30],\"label\":\"button\"}]")));
        start(2);
        QTRY_COMPARE(lastTask().state, TaskItem::Finished);
        QCOMPARE(m_actions->pinManager()->pins().size(), pins + 1);
        QCOMPARE(aiRows(), before + 1);
        const QImage stored(HistoryService::instance().recent(1).first().path);
        QCOMPARE(stored.pixelColor(10, 20), QColor(0, 184, 107)); // the outline
        QCOMPARE(stored.pixelColor(12, 2), QColor(0, 184, 107));  // a top box's label plate, at y 0
    }

    // A closed card comes back when a job ends; under the pointer it stays open.
    void cardVisibilityFollowsJobsAndPointer()
    {
        const quint64 first = tasks().addTask(QStringLiteral("One"), QString(), QPixmap(), {});
        const quint64 second = tasks().addTask(QStringLiteral("Two"), QString(), QPixmap(), {});
        card().hide();
        QCOMPARE(tasks().tasks().last().state, TaskItem::Running); // hiding cancels nothing
        tasks().updateTask(first, TaskItem::Finished, QStringLiteral("done"), QString());
        QVERIFY(QTest::qWaitForWindowExposed(&card()));

        QVERIFY(test::moveTo(card().geometry().center()));
        QTRY_VERIFY(card().underMouse());
        tasks().updateTask(second, TaskItem::Finished, QString(), QString());
        QVERIFY(!card().hideTimerActive());
        QVERIFY(test::moveTo(QPoint(10, 10)));
        QTRY_VERIFY(card().hideTimerActive());
    }
};

ZELMOR_TEST_MAIN(TestAiChat, QApplication)
#include "tst_aichat.moc"
