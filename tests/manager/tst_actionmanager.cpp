#include "TestMain.h"
#include "TestSupport.h"

#include "core/ConfigManager.h"
#include "core/Toast.h"
#include "manager/ActionManager.h"
#include "manager/PinManager.h"
#include "service/capture/WindowList.h"
#include "service/history/HistoryService.h"
#include "widget/MainWindow.h"
#include "widget/overlay/CaptureOverlay.h"

#include <QClipboard>
#include <QElapsedTimer>
#include <QProcess>
#include <QScreen>
#include <QWindow>

using zelmor::core::tool::Toast;
using zelmor::manager::ActionManager;
using zelmor::service::history::HistoryService;

namespace {

const QColor kMarker(0x3d, 0x5a, 0xfe);

// What another process reads from the clipboard as PNG; the event loop keeps running so
// that this process can answer the request.
QImage clipboardSeenByAnotherProcess()
{
    QProcess xclip;
    xclip.start(QStringLiteral("xclip"),
                {QStringLiteral("-selection"), QStringLiteral("clipboard"), QStringLiteral("-t"),
                 QStringLiteral("image/png"), QStringLiteral("-o")});
    if (!xclip.waitForStarted()) return {};
    if (!QTest::qWaitFor([&] { return xclip.state() == QProcess::NotRunning; }, 10000)) return {};
    return QImage::fromData(xclip.readAllStandardOutput(), "PNG");
}

bool xdotool(const QStringList& args)
{
    return QProcess::execute(QStringLiteral("xdotool"), args) == 0;
}

zelmor::widget::CaptureOverlay* shownOverlay()
{
    for (QWidget* w : QApplication::topLevelWidgets())
        if (auto* overlay = qobject_cast<zelmor::widget::CaptureOverlay*>(w))
            if (overlay->isVisible() && overlay->windowHandle() &&
                overlay->windowHandle()->isExposed())
                return overlay;
    return nullptr;
}

// The marker's middle as the screen shows it: framed, painted and not covered.
bool markerOnScreen(const QWidget& marker)
{
    const QPoint at = marker.mapToGlobal(marker.rect().center());
    return QGuiApplication::primaryScreen()
               ->grabWindow(0, at.x(), at.y(), 1, 1)
               .toImage()
               .pixelColor(0, 0) == kMarker;
}

int overlayCount()
{
    int count = 0;
    for (QWidget* w : QApplication::topLevelWidgets())
        count += qobject_cast<zelmor::widget::CaptureOverlay*>(w) != nullptr;
    return count;
}

} // namespace

class TestActionManager : public QObject
{
    Q_OBJECT

    zelmor::widget::MainWindow m_window;
    std::unique_ptr<ActionManager> m_actions;
    std::unique_ptr<QWidget> m_marker;
    QString m_outputDir;

    int historyCount() { return HistoryService::instance().recent(1000).size(); }
    static QString toastBody()
    {
        return Toast::current() ? QString(Toast::current()->body()).remove(QChar(0x200B))
                                : QString();
    }
    static QString toastTitle() { return Toast::current() ? Toast::current()->title() : QString(); }

private Q_SLOTS:
    void initTestCase()
    {
        m_outputDir = zelmor::test::sandboxRoot().filePath(QStringLiteral("shots"));
        zelmor::core::ConfigManager::instance().setOutputDir(m_outputDir);
        m_actions = std::make_unique<ActionManager>(&m_window);
        m_marker = zelmor::test::makeSolidWindow(QStringLiteral("Zelmor action marker"), kMarker,
                                                 QRect(400, 300, 320, 200));
        QVERIFY(QTest::qWaitForWindowExposed(m_marker.get()));
        m_marker->activateWindow();
        QTRY_COMPARE(zelmor::service::capture::foregroundWindow().title, m_marker->windowTitle());
        QTRY_VERIFY(markerOnScreen(*m_marker));
    }

    void fullscreenCopiesSavesRecordsAndTells()
    {
        const int rowsBefore = historyCount();
        m_actions->captureFullscreen();

        const QImage copied = clipboardSeenByAnotherProcess();
        QCOMPARE(copied.size(), QSize(1920, 1080));
        QCOMPARE(copied.pixelColor(m_marker->mapToGlobal(QPoint(160, 100))), kMarker);

        const QStringList files = QDir(m_outputDir).entryList(QDir::Files);
        QCOMPARE(files.size(), 1);
        const QString path = QDir(m_outputDir).filePath(files.first());
        QCOMPARE(QImage(path).size(), QSize(1920, 1080));

        QCOMPARE(historyCount(), rowsBefore + 1);
        const zelmor::core::HistoryItem row = HistoryService::instance().recent(1).first();
        QCOMPARE(row.category, zelmor::core::HistoryCategory::Screenshot);
        QCOMPARE(row.path, path);
        QCOMPARE(QSize(row.width, row.height), QSize(1920, 1080));

        QCOMPARE(toastTitle(), QStringLiteral("Captured"));
        QCOMPARE(toastBody(), QStringLiteral("Captured 1920x1080"));
        const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
        QCOMPARE(Toast::current()->geometry().bottomRight(), area.bottomRight() - QPoint(17, 17));
    }

    void windowCaptureCopiesTheForegroundRectangleOnly()
    {
        const int rowsBefore = historyCount();
        const QStringList filesBefore = QDir(m_outputDir).entryList(QDir::Files);
        m_marker->activateWindow();
        QTRY_COMPARE(zelmor::service::capture::foregroundWindow().title, m_marker->windowTitle());
        m_actions->captureWindow();

        const QImage copied = clipboardSeenByAnotherProcess();
        const QRect frame = m_marker->frameGeometry();
        QCOMPARE(copied.size(), frame.size());
        const QPoint clientCentre = m_marker->mapToGlobal(QPoint(160, 100)) - frame.topLeft();
        QCOMPARE(copied.pixelColor(clientCentre), kMarker);
        QCOMPARE(toastBody(), QStringLiteral("Window captured: Zelmor action marker"));
        QCOMPARE(historyCount(), rowsBefore);
        QCOMPARE(QDir(m_outputDir).entryList(QDir::Files), filesBefore);
    }

    void delayedCaptureTellsTheGivenSecondsAndWaitsAtLeastOne_data()
    {
        QTest::addColumn<int>("secs");
        QTest::newRow("0") << 0;
        QTest::newRow("-2") << -2;
    }
    void delayedCaptureTellsTheGivenSecondsAndWaitsAtLeastOne()
    {
        QFETCH(int, secs);
        const int rowsBefore = historyCount();
        QElapsedTimer clock;
        clock.start();
        m_actions->captureDelayed(secs);
        QCOMPARE(toastTitle(), QStringLiteral("Delayed capture"));
        QCOMPARE(toastBody(), QStringLiteral("Capturing in %1 seconds...").arg(secs));
        QTRY_COMPARE_WITH_TIMEOUT(toastBody(), QStringLiteral("Delayed capture done (1920x1080)"),
                                  5000);
        QVERIFY(clock.elapsed() >= 1000);
        QCOMPARE(clipboardSeenByAnotherProcess().size(), QSize(1920, 1080));
        QCOMPARE(historyCount(), rowsBefore);
    }

    void noForegroundWindowIsTold()
    {
        m_marker->hide();
        QTRY_VERIFY2_WITH_TIMEOUT(zelmor::service::capture::foregroundWindow().rect.isNull(),
                                  qPrintable(zelmor::service::capture::foregroundWindow().title),
                                  3000);
        m_actions->captureWindow();
        QCOMPARE(toastTitle(), QStringLiteral("No window"));
        QCOMPARE(toastBody(), QStringLiteral("Could not detect foreground window."));
        m_marker->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_marker.get()));
        QTRY_VERIFY(markerOnScreen(*m_marker)); // before the next grab
    }

    void keysReachTheRegionOverlayAtOnce()
    {
        m_marker->activateWindow();
        m_actions->captureRegion();
        QTRY_VERIFY(shownOverlay());
        QVERIFY(m_actions->regionCaptureActive());
        QVERIFY(xdotool({QStringLiteral("key"), QStringLiteral("Escape")}));
        QTRY_COMPARE(overlayCount(), 0);
        QTRY_VERIFY(!m_actions->regionCaptureActive());
    }

    void regionDragAndReturnCopyTheScreenPixels()
    {
        QTRY_VERIFY(markerOnScreen(*m_marker)); // the previous overlay has left the screen
        const QImage screen = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
        const int rowsBefore = historyCount();
        const int filesBefore = QDir(m_outputDir).entryList(QDir::Files).size();
        QVERIFY(
            xdotool({QStringLiteral("mousemove"), QStringLiteral("600"), QStringLiteral("400")}));
        m_actions->captureRegion();
        QTRY_VERIFY(shownOverlay());
        m_actions->captureRegion(); // a second request while the overlay is open is dropped
        QCOMPARE(overlayCount(), 1);

        QVERIFY(xdotool({QStringLiteral("mousemove"), QStringLiteral("300"), QStringLiteral("250"),
                         QStringLiteral("mousedown"), QStringLiteral("1"),
                         QStringLiteral("mousemove"), QStringLiteral("450"), QStringLiteral("330"),
                         QStringLiteral("mousemove"), QStringLiteral("600"), QStringLiteral("420"),
                         QStringLiteral("mouseup"), QStringLiteral("1")}));
        QTRY_VERIFY(shownOverlay() && shownOverlay()->hasSelection());
        QCOMPARE(shownOverlay()->selection(), QRect(QPoint(300, 250), QPoint(600, 420)));
        shownOverlay()->activateWindow();
        QTRY_VERIFY(QApplication::focusWidget() == shownOverlay() ||
                    QApplication::activeWindow() == shownOverlay());
        QVERIFY(xdotool({QStringLiteral("key"), QStringLiteral("Return")}));
        QTRY_COMPARE(overlayCount(), 0);

        const QImage expected = screen.copy(QRect(QPoint(300, 250), QPoint(600, 420)))
                                    .convertToFormat(QImage::Format_RGB32);
        const QImage copied = clipboardSeenByAnotherProcess().convertToFormat(QImage::Format_RGB32);
        QCOMPARE(copied, expected);
        QCOMPARE(QDir(m_outputDir).entryList(QDir::Files).size(), filesBefore + 1);
        QCOMPARE(historyCount(), rowsBefore + 1);
        QCOMPARE(HistoryService::instance().recent(1).first().width, 301);
        QCOMPARE(toastTitle(), QStringLiteral("Copied"));
        QCOMPARE(toastBody(), QStringLiteral("Region copied to clipboard (301x171)"));
        QVERIFY(!m_actions->regionCaptureActive());
    }

    void historyShowsTheMainWindow()
    {
        m_actions->showHistory();
        QVERIFY(QTest::qWaitForWindowExposed(&m_window));
        QCOMPARE(m_window.currentPage(), int(zelmor::widget::MainWindow::HistoryPage));
        m_window.hide();
    }

    void openingTheOutputFolderCreatesIt()
    {
        const QString dir = zelmor::test::sandboxRoot().filePath(QStringLiteral("new/output"));
        zelmor::core::ConfigManager::instance().setOutputDir(dir);
        m_actions->openOutputDir();
        zelmor::core::ConfigManager::instance().setOutputDir(m_outputDir);
        QVERIFY(QFileInfo(dir).isDir());
    }

    void pinsFromTheClipboard()
    {
        QGuiApplication::clipboard()->setText(QStringLiteral("no picture"));
        m_actions->pinFromClipboard();
        QCOMPARE(toastTitle(), QStringLiteral("No image"));
        QCOMPARE(toastBody(), QStringLiteral("Clipboard doesn't contain an image."));
        QVERIFY(m_actions->pinManager()->pins().isEmpty());

        QImage image(64, 48, QImage::Format_RGB32);
        image.fill(Qt::green);
        QGuiApplication::clipboard()->setImage(image);
        m_actions->pinFromClipboard();
        QCOMPARE(m_actions->pinManager()->pins().size(), 1);
        m_actions->pinFromPixmap(QPixmap());
        QCOMPARE(m_actions->pinManager()->pins().size(), 1);
        m_actions->clearAllPins();
        QVERIFY(m_actions->pinManager()->pins().isEmpty());
    }

    void elevationIsRefusedWithAMessage()
    {
        m_actions->restartAsAdmin();
        QCOMPARE(toastTitle(), QStringLiteral("Elevation canceled"));
        QVERIFY(!toastBody().isEmpty());
    }
};

ZELMOR_TEST_MAIN(TestActionManager, QApplication)
#include "tst_actionmanager.moc"
