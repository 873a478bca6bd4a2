#include "DesktopDriver.h"
#include "ScrollContent.h"
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

namespace {

constexpr int kPageHeight = 3000;
constexpr int kStep = 50; // rows the page moves for a notch of the wheel

struct Scroller
{
    QProcess process;
    QPoint origin; // client area, global
    explicit Scroller(const QSize& size)
    {
        process.start(QCoreApplication::applicationDirPath() + "/zelmor-test-scroller",
                      {QString::number(size.width()), QString::number(size.height()),
                       QString::number(kPageHeight), QString::number(kStep)});
        QByteArray said;
        while (!said.contains('\n') && process.waitForReadyRead(10000))
            said += process.readAllStandardOutput();
        const QList<QByteArray> words = said.trimmed().split(' ');
        if (words.size() == 3) origin = QPoint(words[1].toInt(), words[2].toInt());
    }
    ~Scroller()
    {
        process.kill();
        process.waitForFinished();
    }
};

int lastHeight(const QSignalSpy& progress)
{
    return progress.isEmpty() ? 0 : progress.last().first().toInt();
}

} // namespace

class TestScrollFlow : public QObject
{
    Q_OBJECT

    QTemporaryDir m_out;

private slots:
    void initTestCase() { core::ConfigManager::instance().setOutputDir(m_out.path()); }

    // Scrolled by hand, notch by notch, or by the program down to the page's end, the page
    // comes back whole, row for row; the program's scrolling gives the pointer back.
    void stitchedPage_data()
    {
        QTest::addColumn<bool>("autoScroll");
        QTest::newRow("by hand") << false;
        QTest::newRow("scroll for me") << true;
    }
    void stitchedPage()
    {
        QFETCH(bool, autoScroll);
        const QSize window(600, 400);
        Scroller page(window);
        QVERIFY(!page.origin.isNull());
        widget::MainWindow mainWindow;
        manager::ActionManager actions(&mainWindow);
        manager::HotkeyService hotkeys;
        app::HotkeyBindings bindings(hotkeys, actions);
        bindings.registerAll();
        QSignalSpy progress(actions.captureService(), &CaptureService::scrollProgressChanged);
        QSignalSpy completed(actions.captureService(), &CaptureService::scrollCaptureCompleted);

        QCOMPARE(QProcess::execute("xdotool", {"key", "ctrl+alt+s"}), 0);
        QTRY_VERIFY(shownTopLevel<widget::CaptureOverlay>());
        auto* overlay = shownTopLevel<widget::CaptureOverlay>();
        const QRect region(page.origin + QPoint(20, 20), QSize(560, 360));
        QVERIFY(drag(region.topLeft(), region.bottomRight()));
        const char* button = autoScroll ? "autoScroll" : "start";
        QTRY_VERIFY(overlay->findChild<QWidget*>(button) &&
                    overlay->findChild<QWidget*>(button)->isVisible());
        QSignalSpy started(overlay, autoScroll ? &widget::CaptureOverlay::autoScrollStartRequested
                                               : &widget::CaptureOverlay::scrollStartRequested);
        QVERIFY(clickButton(overlay, button));
        const auto pointer = platform::cursorPosition();
        QTRY_COMPARE(started.size(), 1);
        const QRect stitched = started.first().first().toRect();
        int rows = 0; // of the page, from the region's top
        if (autoScroll) {
            QVERIFY(completed.wait(60000));
            QCOMPARE(platform::cursorPosition(), pointer);
            rows = kPageHeight - window.height() + stitched.height();
        } else {
            // More still frames than the idle limit (6) before the first step: the user is
            // still on the way to the page.
            QTRY_VERIFY(progress.size() > 8);
            const int first = lastHeight(progress);
            QVERIFY(moveTo(stitched.center()));
            QVERIFY(platform::sendMouseWheel(-120));
            QTRY_COMPARE(lastHeight(progress), first + kStep);
            // A jump past the region is told, and scrolling back a little goes on from there.
            auto* hud = shownTopLevel<widget::ScrollHud>();
            QLabel* said = hud->findChildren<QLabel*>().first();
            QVERIFY(platform::sendMouseWheel(-120 * 8));
            QTRY_COMPARE(said->text(), QString("scrolled too fast — scroll back a little"));
            QVERIFY(platform::sendMouseWheel(120 * 4));
            QTRY_COMPARE(lastHeight(progress), first + 5 * kStep);
            QTRY_VERIFY(said->text().startsWith("Stitched"));
            QVERIFY(clickButton(hud, "Stop"));
            QVERIFY(completed.wait(20000));
            // Till the image was written, the strip said so and took no more clicks.
            QVERIFY(said->text().startsWith("Saving"));
            QVERIFY(!hud->findChildren<QPushButton*>().first()->isEnabled());
            rows = first + 5 * kStep;
        }

        const auto result = completed.first().first().value<core::CaptureResult>();
        const QImage saved(result.filePath);
        const QRect inPage = stitched.translated(-page.origin);
        const QImage expected = scrollContent(window.width(), kPageHeight)
                                    .copy(inPage.x(), inPage.y(), inPage.width(), rows);
        QCOMPARE(saved.convertToFormat(QImage::Format_RGB32), expected);
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
        QFETCH(QString, failure);
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
        QCOMPARE(failed.value(0).value(0).toString(), failure);
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
