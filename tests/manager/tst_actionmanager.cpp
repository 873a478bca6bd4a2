#include "TestMain.h"
#include "TestSupport.h"
#include "UrlCatcher.h"

#include "core/ConfigManager.h"
#include "core/Toast.h"
#include "manager/ActionManager.h"
#include "manager/PinManager.h"
#include "manager/TrayService.h"
#include "service/capture/WindowList.h"
#include "service/history/HistoryService.h"
#include "widget/LicenseDialog.h"
#include "widget/MainWindow.h"
#include "widget/TaskNotificationToast.h"
#include "widget/TrayMenu.h"
#include "widget/overlay/CaptureOverlay.h"

#include <QClipboard>
#include <QCloseEvent>
#include <QEventLoop>
#include <QProcess>
#include <QScreen>
#include <QStackedWidget>
#include <QSystemTrayIcon>
#include <QTextBrowser>
#include <QWindow>

using zelmor::core::tool::Toast;
using zelmor::manager::ActionManager;
using zelmor::manager::TrayService;
using zelmor::service::history::HistoryService;
using zelmor::widget::MainWindow;
using zelmor::widget::TaskNotificationToast;

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

bool xdotool(const QString& args)
{
    return QProcess::execute(QStringLiteral("xdotool"), args.split(QLatin1Char(' '))) == 0;
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

// Shown ones: the next overlay waits hidden, built ahead.
int overlayCount()
{
    int count = 0;
    for (QWidget* w : QApplication::topLevelWidgets())
        count += qobject_cast<zelmor::widget::CaptureOverlay*>(w) && w->isVisible();
    return count;
}

} // namespace

class TestActionManager : public QObject
{
    Q_OBJECT

    MainWindow m_window;
    std::unique_ptr<ActionManager> m_actions;
    std::unique_ptr<TrayService> m_tray;
    std::unique_ptr<QWidget> m_marker;
    QString m_outputDir;

    // The tray menu's rows as shown: texts with their keys.
    QStringList trayRows() const
    {
        QStringList out;
        for (const QAction* a : m_tray->menu()->actions()) {
            const QString key = a->shortcut().toString(QKeySequence::PortableText);
            out << (key.isEmpty() ? a->text() : a->text() + QStringLiteral("\t") + key);
        }
        return out;
    }

    int historyCount() { return HistoryService::instance().recent(1000).size(); }
    static QString toastBody()
    {
        return Toast::current() ? QString(Toast::current()->body()).remove(QChar(0x200B))
                                : QString();
    }
    static int shownIndex(const MainWindow& w)
    {
        return static_cast<QStackedWidget*>(w.centralWidget())->currentIndex();
    }
    static QString toastTitle() { return Toast::current() ? Toast::current()->title() : QString(); }

private Q_SLOTS:
    void initTestCase()
    {
        m_outputDir = zelmor::test::sandboxRoot().filePath(QStringLiteral("shots"));
        zelmor::core::ConfigManager::instance().setOutputDir(m_outputDir);
        m_actions = std::make_unique<ActionManager>(&m_window);
        m_tray = std::make_unique<TrayService>(m_actions.get());
        m_tray->show();
        // The icon is embedded by the tray host, at its place in the host's strip.
        QTRY_VERIFY(m_tray->trayIcon()->geometry().x() > 0 &&
                    !m_tray->trayIcon()->geometry().isEmpty());
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
        QCOMPARE(HistoryService::instance().recent(1).first().path, path);
        QCOMPARE(toastBody(), QStringLiteral("Captured 1920x1080"));
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

    void delayedCaptureTellsTheGivenSecondsAndCopiesOnly()
    {
        const int rowsBefore = historyCount();
        m_actions->captureDelayed(-2);
        QCOMPARE(toastBody(), QStringLiteral("Capturing in -2 seconds..."));
        QTRY_COMPARE_WITH_TIMEOUT(toastBody(), QStringLiteral("Delayed capture done (1920x1080)"),
                                  5000);
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
        QCOMPARE(toastBody(), QStringLiteral("Could not detect foreground window."));
        m_marker->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_marker.get()));
        QTRY_VERIFY(markerOnScreen(*m_marker)); // before the next grab
    }

    // The overlay takes the keyboard at once, and a second request while it is open is dropped.
    void trayClickOpensTheRegionOverlay()
    {
        m_marker->activateWindow();
        const QPoint centre = m_tray->trayIcon()->geometry().center();
        QVERIFY(xdotool(QStringLiteral("mousemove %1 %2 click 1").arg(centre.x()).arg(centre.y())));
        QTRY_VERIFY(shownOverlay());
        QVERIFY(m_actions->regionCaptureActive());
        m_actions->captureRegion();
        QCOMPARE(overlayCount(), 1);
        QVERIFY(xdotool(QStringLiteral("key Escape")));
        QTRY_COMPARE(overlayCount(), 0);
        QTRY_VERIFY(!m_actions->regionCaptureActive());
    }

    // A capture picked in the tray menu shows neither the menu nor Zelmor's task card: where
    // they were, it holds what the screen shows once both are gone.
    void trayCaptureLeavesOutTheMenuAndTheCard()
    {
        TaskNotificationToast& card = TaskNotificationToast::instance();
        card.showSynced();
        QVERIFY(QTest::qWaitForWindowExposed(&card));
        const QPoint icon = m_tray->trayIcon()->geometry().center();
        QVERIFY(xdotool(QStringLiteral("mousemove %1 %2 click 3").arg(icon.x()).arg(icon.y())));
        QMenu* menu = m_tray->menu();
        QTRY_VERIFY(menu->isVisible() && menu->windowHandle()->isExposed());
        const QList<QAction*> rows = menu->actions();
        QAction* row = *std::find_if(rows.begin(), rows.end(), [](const QAction* a) {
            return a->text() == QLatin1String("Fullscreen capture");
        });
        const QPoint at = menu->mapToGlobal(menu->actionGeometry(row).center());
        const QList<QRect> hidden{menu->geometry(), card.frameGeometry()};
        QVERIFY(xdotool(QStringLiteral("mousemove %1 %2 click 1").arg(at.x()).arg(at.y())));

        QTRY_COMPARE_WITH_TIMEOUT(toastBody(), QStringLiteral("Captured 1920x1080"), 5000);
        const QImage copied = clipboardSeenByAnotherProcess();
        delete Toast::current();
        const QImage after = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
        for (const QRect& area : hidden)
            QVERIFY(copied.copy(area).convertToFormat(after.format()) == after.copy(area));
    }

    void openingTheOutputFolderCreatesIt()
    {
        const QString dir = zelmor::test::sandboxRoot().filePath(QStringLiteral("new/output"));
        zelmor::test::UrlCatcher fileManager;
        zelmor::core::ConfigManager::instance().setOutputDir(dir);
        m_actions->openOutputDir();
        zelmor::core::ConfigManager::instance().setOutputDir(m_outputDir);
        QVERIFY(QFileInfo(dir).isDir());
        QCOMPARE(fileManager.last, QUrl::fromLocalFile(dir));
    }

    void pinsFromTheClipboard()
    {
        QGuiApplication::clipboard()->setText(QStringLiteral("no picture"));
        m_actions->pinFromClipboard();
        QCOMPARE(toastTitle(), QStringLiteral("No image"));
        QVERIFY(m_actions->pinManager()->pins().isEmpty());

        QImage image(64, 48, QImage::Format_RGB32);
        image.fill(Qt::green);
        QGuiApplication::clipboard()->setImage(image);
        m_actions->pinFromClipboard();
        m_actions->pinFromPixmap(QPixmap());
        QCOMPARE(m_actions->pinManager()->pins().size(), 1);
        m_actions->clearAllPins();
        QVERIFY(m_actions->pinManager()->pins().isEmpty());
    }

    void trayMenuShowsTheKeysAndFollowsTheirChanges()
    {
        QVERIFY(trayRows().contains(QStringLiteral("Region capture\tF6")));
        const QPointer<QMenu> before = m_tray->menu();
        zelmor::core::ConfigManager::instance().setHotkey("fullscreen", QStringLiteral("Ctrl+F6"));
        zelmor::core::ConfigManager::instance().setHotkey("fullscreen", QString());
        zelmor::core::ConfigManager::instance().setHotkey("region", QStringLiteral("Ctrl+Shift+R"));
        QVERIFY(before.isNull());
        QVERIFY(trayRows().contains(QStringLiteral("Region capture\tCtrl+Shift+R")));
        QVERIFY(trayRows().contains(QStringLiteral("Fullscreen capture"))); // no key: none shown
        QCOMPARE(m_tray->trayIcon()->contextMenu(), m_tray->menu());
    }

    void licenseRowShowsTheComponents()
    {
        for (QAction* a : m_tray->menu()->actions())
            if (a->text() == QLatin1String("License...")) a->trigger();
        using zelmor::widget::LicenseDialog;
        QTRY_VERIFY(qobject_cast<LicenseDialog*>(QApplication::activeWindow()));
        auto* dialog = qobject_cast<LicenseDialog*>(QApplication::activeWindow());
        const QString text = dialog->findChild<QTextBrowser*>()->toPlainText();
        for (const char* component : {"Qt 6", "SQLite", "libatspi", "libxcb", "Noto Sans CJK",
                                      "Noto Color Emoji", "/usr/share/doc/libqt6core6/copyright"})
            QVERIFY2(text.contains(QLatin1String(component)), component);
        dialog->close();
    }

    // The main window the actions open: pages built on demand, closing only hides.
    void showSlotsRouteToTheirPageAndClosingOnlyHides_data()
    {
        QTest::addColumn<int>("page");
        QTest::newRow("settings") << int(MainWindow::SettingsPage);
        QTest::newRow("history") << int(MainWindow::HistoryPage);
        QTest::newRow("chat") << int(MainWindow::AiChatPage);
    }
    void showSlotsRouteToTheirPageAndClosingOnlyHides()
    {
        QFETCH(int, page);
        MainWindow w;
        const auto showPage = [&] {
            if (page == MainWindow::SettingsPage) w.showSettings();
            if (page == MainWindow::HistoryPage) w.showHistory();
            if (page == MainWindow::AiChatPage) w.showAiChat();
        };
        showPage();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        QCOMPARE(w.currentPage(), page);
        QCOMPARE(shownIndex(w), page);
        // Asked for again while minimized, as by a hotkey: back on the screen.
        w.showMinimized();
        QTRY_VERIFY(!w.windowHandle()->isExposed());
        showPage();
        QTRY_VERIFY(w.windowHandle()->isExposed());
        QVERIFY(!w.isMinimized());
        QWidget* shown = w.pageWidget(page);
        QVERIFY(!w.close());
        QVERIFY(!w.isVisible());
        QCOMPARE(w.pageWidget(page), shown);
    }

    void languageChangeRebuildsWithoutShowing()
    {
        MainWindow w;
        w.retranslateUi(); // nothing built yet: nothing to rebuild
        QCoreApplication::processEvents();
        QVERIFY(!w.panelsBuilt());
        w.showSettings();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        w.hide();
        QPointer<QWidget> oldSettings = w.pageWidget(MainWindow::SettingsPage);
        w.retranslateUi();
        QVERIFY(oldSettings); // deleted only once the event loop runs
        QTRY_VERIFY(oldSettings.isNull());
        QVERIFY(w.pageWidget(MainWindow::SettingsPage));
        QCOMPARE(shownIndex(w), int(MainWindow::SettingsPage));
        QVERIFY(!w.isVisible());
    }

    // Last: a quit leaves the event loops of this process unable to run. A window that
    // refuses to close, as the main window does where Qt counts that, must not keep it alive.
    void quitEndsTheProgramWhateverTheWindowsSay()
    {
        struct Refusing : QWidget
        {
            void closeEvent(QCloseEvent* event) override { event->ignore(); }
        } window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QEventLoop loop;
        QTimer::singleShot(0, m_actions.get(), &ActionManager::quit);
        QTimer::singleShot(10000, &loop, [&loop] { loop.exit(1); });
        QCOMPARE(loop.exec(), 0);
    }
};

ZELMOR_TEST_MAIN(TestActionManager, QApplication)
#include "tst_actionmanager.moc"
