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

namespace {

constexpr int kPageHeight = 3000;
constexpr int kStep = 300; // a region of 360 rows finds a step of 264 to 327 rows

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

qsizetype historyRows()
{
    return service::history::HistoryService::instance().recent(1000).size();
}

} // namespace

class TestScrollFlow : public QObject
{
    Q_OBJECT

    QTemporaryDir m_out;

private slots:
    void initTestCase() { core::ConfigManager::instance().setOutputDir(m_out.path()); }

    // Scrolled by the wheel, step by step, the page comes back whole, row for row.
    void hotkeyToStitchedPage()
    {
        Scroller page(QSize(600, 400));
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
        QTRY_VERIFY(overlay->findChild<QWidget*>("start") &&
                    overlay->findChild<QWidget*>("start")->isVisible());
        QSignalSpy started(overlay, &widget::CaptureOverlay::scrollStartRequested);
        QVERIFY(clickButton(overlay, "start"));
        QTRY_COMPARE(started.size(), 1);
        const QRect stitched = started.first().first().toRect();
        QTRY_VERIFY(lastHeight(progress) > 0);
        const int first = lastHeight(progress);
        for (int step = 1; step <= 4; ++step) {
            QVERIFY(moveTo(stitched.center()));
            QVERIFY(platform::sendMouseWheel(-120));
            QTRY_COMPARE_WITH_TIMEOUT(lastHeight(progress), first + step * kStep, 10000);
        }
        auto* hud = shownTopLevel<widget::ScrollHud>();
        QVERIFY(clickButton(hud, "Stop"));
        QVERIFY(completed.wait(20000));
        // Till the image was written, the strip said so and took no more clicks.
        QVERIFY(hud->findChildren<QLabel*>().first()->text().startsWith("Saving"));
        QVERIFY(!hud->findChildren<QPushButton*>().first()->isEnabled());

        const auto result = completed.first().first().value<core::CaptureResult>();
        const QImage saved(result.filePath);
        const QImage expected =
            scrollContent(600, kPageHeight)
                .copy(stitched.translated(-page.origin).x(), stitched.translated(-page.origin).y(),
                      stitched.width(), first + 4 * kStep);
        QCOMPARE(saved.convertToFormat(QImage::Format_RGB32), expected);
        QCOMPARE(service::history::HistoryService::instance().recent(1).value(0).path,
                 result.filePath);
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
        const qsizetype rows = historyRows();
        const QStringList files = QDir(m_out.path()).entryList(QDir::Files);

        capture.captureScrolling(QRect(10, 10, 200, 150));
        capture.captureScrolling(QRect(10, 10, 300, 150)); // ignored
        QTRY_VERIFY(!progress.isEmpty());
        cancel ? capture.cancelScrollCapture() : capture.stopScrollCapture();
        QTRY_COMPARE(cancelled.size() + failed.size(), 1);
        QCOMPARE(cancelled.size(), int(cancel));
        QCOMPARE(failed.value(0).value(0).toString(), failure);
        QCOMPARE(historyRows(), rows);
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
