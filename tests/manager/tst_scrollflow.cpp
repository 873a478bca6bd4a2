#include "DesktopDriver.h"
#include "RealProgram.h"
#include "TestMain.h"
#include "TestSupport.h"

#include "app/HotkeyBindings.h"
#include "core/ConfigManager.h"
#include "core/Toast.h"
#include "manager/ActionManager.h"
#include "manager/HotkeyService.h"
#include "service/capture/CaptureService.h"
#include "service/history/HistoryService.h"
#include "widget/MainWindow.h"
#include "widget/ScrollHud.h"
#include "widget/overlay/CaptureOverlay.h"

#include <QDir>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTemporaryDir>

using namespace zelmor;
using namespace zelmor::test;
using service::capture::CaptureService;
using service::history::HistoryService;

const QString kTitle = QStringLiteral("zelmor scroll flow");

class TestScrollFlow : public QObject
{
    Q_OBJECT

    QTemporaryDir m_out;

private slots:
    void initTestCase() { core::ConfigManager::instance().setOutputDir(m_out.path()); }

    // From the hotkey to the saved image, on xterm showing less, scrolled by hand or by the
    // program down to the page's end; the program's scrolling gives the pointer back. That
    // the image holds every line once is the real program suite's to check.
    void stitchedPage_data()
    {
        QTest::addColumn<bool>("autoScroll");
        QTest::newRow("by hand") << false;
        QTest::newRow("scroll for me") << true;
    }
    void stitchedPage()
    {
        QFETCH(bool, autoScroll);
        const QString file = m_out.filePath("lines.txt");
        QVERIFY(writeFile(file, numberedLines(120)));
        // Page Down as less does it by default: a whole page, no line in common.
        QStringList arguments = pagerArguments(kTitle, file);
        arguments.removeOne("-z-3");
        RealProgram pager("xterm", arguments, kTitle);
        QVERIFY(!pager.client.isEmpty());
        widget::MainWindow mainWindow;
        manager::ActionManager actions(&mainWindow);
        manager::HotkeyService hotkeys;
        app::HotkeyBindings bindings(hotkeys, actions);
        bindings.registerAll();
        QSignalSpy progress(actions.captureService(), &CaptureService::scrollProgressChanged);
        QSignalSpy completed(actions.captureService(), &CaptureService::scrollCaptureCompleted);

        QVERIFY(xdotool("key ctrl+alt+s"));
        QTRY_VERIFY(shownTopLevel<widget::CaptureOverlay>());
        auto* overlay = shownTopLevel<widget::CaptureOverlay>();
        const QRect region = pager.client.adjusted(20, 20, -20, -40);
        QVERIFY(drag(region.topLeft(), region.bottomRight()));
        const char* button = autoScroll ? "autoScroll" : "start";
        QTRY_VERIFY(overlay->findChild<QWidget*>(button) &&
                    overlay->findChild<QWidget*>(button)->isVisible());
        QVERIFY(clickButton(overlay, button));
        const auto pointer = platform::cursorPosition();
        int height = 0;
        if (autoScroll) {
            QVERIFY(completed.wait(60000));
            QCOMPARE(platform::cursorPosition(), pointer);
            height = lastHeight(progress);
        } else {
            // More still frames than the idle limit (6) before the first step: the user is
            // still on the way to the page.
            QTRY_VERIFY(progress.size() > 8);
            const int first = lastHeight(progress);
            QVERIFY(moveTo(region.center()));
            QVERIFY(platform::sendMouseWheel(-120));
            QTRY_VERIFY(lastHeight(progress) > first);
            // A jump past the region is told, and scrolling back a little goes on from there.
            auto* hud = shownTopLevel<widget::ScrollHud>();
            QLabel* said = hud->findChildren<QLabel*>().first();
            const int before = lastHeight(progress);
            QVERIFY(xdotool("key Next"));
            QTRY_COMPARE(said->text(), QString("scrolled too fast — scroll back a little"));
            QVERIFY(platform::sendMouseWheel(120));
            QTRY_VERIFY(said->text().startsWith("Stitched"));
            QVERIFY(lastHeight(progress) > before);
            height = lastHeight(progress);
            QVERIFY(clickButton(hud, "Stop"));
            QVERIFY(completed.wait(20000));
            // Till the image was written, the strip said so and took no more clicks.
            QVERIFY(said->text().startsWith("Saving"));
            QVERIFY(!hud->findChildren<QPushButton*>().first()->isEnabled());
        }

        const auto result = completed.first().first().value<core::CaptureResult>();
        const QImage saved(result.filePath);
        QCOMPARE(saved.size(), QSize(region.width(), height));
        QVERIFY(height > region.height());
        QCOMPARE(HistoryService::instance().recent(1).value(0).path, result.filePath);
        QCOMPARE(core::tool::Toast::current()->body(),
                 QString("Stitched image saved (%1x%2)").arg(saved.width()).arg(saved.height()));
        QTRY_VERIFY(!shownTopLevel<widget::ScrollHud>());
    }

    // The memory limit is told in the toast of the saved image, which would replace a toast
    // of its own at once.
    void memoryLimitIsToldWithTheResult()
    {
        widget::MainWindow mainWindow;
        manager::ActionManager actions(&mainWindow);
        CaptureService* capture = actions.captureService();
        emit capture->scrollMemoryLimitReached(64 * 1024 * 1024);
        core::CaptureResult result;
        result.width = 600;
        result.height = 90000;
        emit capture->scrollCaptureCompleted(result);
        const QString body = core::tool::Toast::current()->body();
        QVERIFY2(body.contains("(600x90000)") && body.contains("64 MB"), qPrintable(body));
    }

    // A second start is ignored; a cancel leaves nothing behind, and a failed save lets the
    // next run start.
    void endings_data()
    {
        QTest::addColumn<QString>("outputDir"); // empty: the test's folder
        QTest::addColumn<bool>("cancel");
        QTest::addColumn<QString>("failure");
        QTest::newRow("cancelled") << QString() << true << QString();
        QTest::newRow("unwritable folder")
            << QString("/proc/version/shots") << false << QString("scroll: save failed");
    }
    void endings()
    {
        QFETCH(QString, outputDir);
        QFETCH(bool, cancel);
        core::ConfigManager::instance().setOutputDir(outputDir.isEmpty() ? m_out.path()
                                                                         : outputDir);
        const auto restore =
            qScopeGuard([this] { core::ConfigManager::instance().setOutputDir(m_out.path()); });
        CaptureService capture;
        QSignalSpy progress(&capture, &CaptureService::scrollProgressChanged);
        QSignalSpy cancelled(&capture, &CaptureService::scrollCaptureCancelled);
        QSignalSpy failed(&capture, &CaptureService::scrollCaptureFailed);
        const qsizetype rows = HistoryService::instance().recent(1000).size();
        const QStringList files = QDir(m_out.path()).entryList(QDir::Files);

        capture.captureScrolling(QRect(10, 10, 200, 150));
        capture.captureScrolling(QRect(10, 10, 300, 150)); // ignored
        QTRY_VERIFY(!progress.isEmpty());
        cancel ? capture.cancelScrollCapture() : capture.stopScrollCapture();
        QTRY_COMPARE(cancelled.size() + failed.size(), 1);
        QCOMPARE(cancelled.size(), int(cancel));
        QTEST(failed.value(0).value(0).toString(), "failure");
        QCOMPARE(HistoryService::instance().recent(1000).size(), rows);
        QCOMPARE(QDir(m_out.path()).entryList(QDir::Files), files);

        progress.clear();
        capture.captureScrolling(QRect(10, 10, 200, 150)); // the next run starts
        QTRY_VERIFY(!progress.isEmpty());
        capture.cancelScrollCapture();
        QTRY_COMPARE(cancelled.size(), int(cancel) + 1);
    }
};

ZELMOR_TEST_MAIN(TestScrollFlow, QApplication)
#include "tst_scrollflow.moc"
