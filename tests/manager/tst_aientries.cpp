#include "DesktopDriver.h"
#include "FakeAiServer.h"
#include "TestMain.h"

#include "core/ConfigManager.h"
#include "core/Toast.h"
#include "manager/ActionManager.h"
#include "manager/PinManager.h"
#include "manager/TaskManager.h"
#include "service/ai/AiProviderService.h"
#include "service/history/HistoryService.h"
#include "widget/MainWindow.h"
#include "widget/OcrResultDialog.h"
#include "widget/TaskNotificationToast.h"
#include "widget/chat/AiChatPanel.h"
#include "widget/overlay/CaptureOverlay.h"
#include "widget/overlay/OverlayPanels.h"

#include <QClipboard>
#include <QLabel>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QSignalSpy>
#include <QTextEdit>
#include <QToolButton>

using namespace zelmor;
using manager::TaskItem;
using manager::TaskManager;
using service::history::HistoryService;

// The AI entries of the actions, and the task list and card that follow them.
class TestAiEntries : public QObject
{
    Q_OBJECT

    test::FakeAiServer m_server;
    widget::MainWindow m_window;
    std::unique_ptr<manager::ActionManager> m_actions;

    static TaskManager& tasks() { return TaskManager::instance(); }
    static widget::TaskNotificationToast& card()
    {
        return widget::TaskNotificationToast::instance();
    }
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
        m_actions = std::make_unique<manager::ActionManager>(&m_window);
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
        QTest::mousePress(overlay, Qt::LeftButton, Qt::NoModifier, QPoint(100, 100));
        QMouseEvent move(QEvent::MouseMove, QPointF(300, 200),
                         overlay->mapToGlobal(QPointF(300, 200)), Qt::NoButton, Qt::LeftButton,
                         Qt::NoModifier);
        QApplication::sendEvent(overlay, &move);
        QTest::mouseRelease(overlay, Qt::LeftButton, Qt::NoModifier, QPoint(300, 200));
        overlay->panels()->actionButton(widget::overlay::OverlayPanels::Ocr)->click();
        QCOMPARE(aiRows(), before + 1); // the source is kept before any answer
        QCOMPARE(HistoryService::instance().recent(1).first().width, 201);
        QTRY_COMPARE(lastTask().state, TaskItem::Finished);
        QCOMPARE(lastTask().result, QStringLiteral("Total: 42"));
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("Total: 42"));
        QTRY_VERIFY(test::shownTopLevel<widget::OcrResultDialog>());
        widget::OcrResultDialog* dialog = test::shownTopLevel<widget::OcrResultDialog>();
        QCOMPARE(dialog->text(), QStringLiteral("Total: 42"));
        Q_EMIT dialog->chatRequested(QStringLiteral("note text"));
        QTRY_VERIFY(m_window.isVisible());
        const QList<QFrame*> asked =
            m_window.aiChatPanel()->findChildren<QFrame*>(QStringLiteral("bubbleUser"));
        QVERIFY(
            asked.last()->findChild<QLabel*>()->text().endsWith(QStringLiteral("<br>note text")));
        m_window.hide();

        // The dialog acts on the edited text; copying keeps it open, pinning closes it.
        dialog->findChild<QTextEdit*>(QStringLiteral("ocrTextEdit"))
            ->setPlainText(QStringLiteral("edited"));
        dialog->findChild<QPushButton*>(QStringLiteral("btnCopy"))->click();
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("edited"));
        QVERIFY(dialog->isVisible());
        const qsizetype pins = m_actions->pinManager()->pins().size();
        for (QPushButton* b : dialog->findChildren<QPushButton*>())
            if (b->text() == QStringLiteral("📌 钉在屏幕")) b->click();
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
        for (QAbstractButton* button : prompts[0]->buttons())
            if (button->text() == QStringLiteral("Open AI Settings")) button->click();
        QTRY_VERIFY(m_window.isVisible());
        QCOMPARE(m_window.currentPage(), int(widget::MainWindow::SettingsPage));
        QTRY_VERIFY(m_window.findChildren<QMessageBox*>().isEmpty());
        m_window.hide();
    }

    // The abort that a cancel causes is no failure of its own: list and card say cancelled.
    void cancelledOcrStaysCancelled()
    {
        m_server.enqueueHold();
        const qsizetype requests = m_server.requests().size();
        QSignalSpy updates(&TaskManager::instance(), &TaskManager::taskUpdated);
        start(0);
        const quint64 id = lastTask().id;
        QTRY_VERIFY(m_server.requests().size() > requests);
        card().row(id)->findChild<QPushButton*>()->click();
        QCOMPARE(lastTask().state, TaskItem::Cancelled);
        QCOMPARE(updates.last().first().value<TaskItem>().state, TaskItem::Cancelled);
        QCOMPARE(card().row(id)->statusText(), QStringLiteral("已取消"));
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

    // The task list and its card, without the AI behind them.
    void cancelRunsItsCallbackOnce()
    {
        int cancels = 0;
        const quint64 id = tasks().addTask(QStringLiteral("OCR"), QStringLiteral("working"),
                                           QPixmap(), [&] { ++cancels; });
        QVERIFY(card().row(id)->cancelShown());
        tasks().cancelTask(id);
        tasks().cancelTask(id);
        QCOMPARE(cancels, 1);
        QVERIFY(!card().row(id)->cancelShown());

        const quint64 done =
            tasks().addTask(QStringLiteral("Done"), QString(), QPixmap(), [&] { ++cancels; });
        tasks().updateTask(done, TaskItem::Finished, QString(), QStringLiteral("text"));
        tasks().cancelTask(done); // a finished job cannot be cancelled
        QCOMPARE(cancels, 1);
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

        const QPoint inside = card().geometry().center();
        QProcess::execute(
            QStringLiteral("xdotool"),
            QStringLiteral("mousemove %1 %2").arg(inside.x()).arg(inside.y()).split(' '));
        QTRY_VERIFY(card().underMouse());
        tasks().updateTask(second, TaskItem::Finished, QString(), QString());
        QVERIFY(!card().hideTimerActive());
        QProcess::execute(QStringLiteral("xdotool"), QStringLiteral("mousemove 10 10").split(' '));
        QTRY_VERIFY(card().hideTimerActive());
    }
};

ZELMOR_TEST_MAIN(TestAiEntries, QApplication)
#include "tst_aientries.moc"
