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
using zelmor::test::xdotool;
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

// Shown ones: the next overlay waits hidden, built ahead.
QList<zelmor::widget::CaptureOverlay*> shownOverlays()
{
    QList<zelmor::widget::CaptureOverlay*> out;
    for (QWidget* w : QApplication::topLevelWidgets())
        if (auto* overlay = qobject_cast<zelmor::widget::CaptureOverlay*>(w))
            if (overlay->isVisible()) out << overlay;
    return out;
}

// The marker's middle as the screen shows it: framed, painted and not covered.
bool markerOnScreen(const QWidget& marker)
{
    return zelmor::test::screenPixel(marker.mapToGlobal(marker.rect().center())) == kMarker.rgb();
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

    // Picked in the tray menu while the task card shows. Where the menus, the card and the
    // countdown were, the picture holds what the screen shows once all are gone.
    void trayCapturesLeaveOutTheMenuAndTheNotices_data()
    {
        QTest::addColumn<QStringList>("rows");
        QTest::addColumn<QString>("countdown");
        QTest::addColumn<QString>("told");
        QTest::addColumn<bool>("saved"); // else copied only
        QTest::newRow("fullscreen") << QStringList{"Fullscreen capture"} << QString()
                                    << QStringLiteral("Captured 1920x1080") << true;
        QTest::newRow("delayed") << QStringList{"Delayed capture", "3 s"}
                                 << QStringLiteral("Capturing in 3 seconds...")
                                 << QStringLiteral("Delayed capture done (1920x1080)") << false;
    }
    void trayCapturesLeaveOutTheMenuAndTheNotices()
    {
        QFETCH(QStringList, rows);
        QFETCH(QString, countdown);
        QFETCH(QString, told);
        QFETCH(bool, saved);
        const int rowsBefore = historyCount();
        const qsizetype filesBefore = QDir(m_outputDir).entryList(QDir::Files).size();
        TaskNotificationToast& card = TaskNotificationToast::instance();
        card.showSynced();
        QVERIFY(QTest::qWaitForWindowExposed(&card));
        QList<QRect> hidden{card.frameGeometry()};
        const QPoint icon = m_tray->trayIcon()->geometry().center();
        QVERIFY(xdotool(QStringLiteral("mousemove %1 %2 click 3").arg(icon.x()).arg(icon.y())));
        QMenu* menu = m_tray->menu();
        for (const QString& text : rows) {
            QTRY_VERIFY(menu->isVisible() && menu->windowHandle()->isExposed());
            const QList<QAction*> actions = menu->actions();
            QAction* row = *std::find_if(actions.begin(), actions.end(),
                                         [&](auto* a) { return a->text() == text; });
            hidden << menu->geometry();
            const QPoint at = menu->mapToGlobal(menu->actionGeometry(row).center());
            QVERIFY(xdotool(QStringLiteral("mousemove %1 %2 click 1").arg(at.x()).arg(at.y())));
            if (row->menu()) menu = row->menu();
        }
        if (!countdown.isEmpty()) {
            QTRY_COMPARE(toastBody(), countdown);
            hidden << Toast::current()->frameGeometry();
        }
        QTRY_COMPARE_WITH_TIMEOUT(toastBody(), told, 5000);

        const QImage copied = clipboardSeenByAnotherProcess();
        QCOMPARE(copied.pixelColor(m_marker->mapToGlobal(QPoint(160, 100))), kMarker);
        delete Toast::current();
        card.hide();
        const QImage after = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
        for (const QRect& area : hidden)
            QVERIFY(copied.copy(area).convertToFormat(after.format()) == after.copy(area));
        QCOMPARE(QDir(m_outputDir).entryList(QDir::Files).size(), filesBefore + saved);
        QCOMPARE(historyCount(), rowsBefore + saved);
        if (saved)
            QCOMPARE(QImage(HistoryService::instance().recent(1).first().path).size(),
                     QSize(1920, 1080));
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
        QTRY_VERIFY(shownOverlays().size() == 1 &&
                    shownOverlays().first()->windowHandle()->isExposed());
        QVERIFY(m_actions->regionCaptureActive());
        m_actions->captureRegion();
        QCOMPARE(shownOverlays().size(), 1);
        // Copied, saved and recorded.
        const int rowsBefore = historyCount();
        const int filesBefore = int(QDir(m_outputDir).entryList(QDir::Files).size());
        auto* overlay = shownOverlays().first();
        const QPoint from = overlay->mapFromGlobal(m_marker->mapToGlobal(QPoint(20, 20)));
        QTest::mousePress(overlay, Qt::LeftButton, {}, from);
        QTest::mouseMove(overlay, from + QPoint(30, 20));
        QTest::mouseMove(overlay, from + QPoint(100, 60));
        QTest::mouseRelease(overlay, Qt::LeftButton, {}, from + QPoint(100, 60));
        QVERIFY(xdotool(QStringLiteral("key Return"))); // the overlay has the keyboard
        QTRY_COMPARE(shownOverlays().size(), 0);
        QTRY_VERIFY(!m_actions->regionCaptureActive());
        QCOMPARE(clipboardSeenByAnotherProcess().size(), QSize(101, 61));
        QCOMPARE(historyCount(), rowsBefore + 1);
        const QImage saved(HistoryService::instance().recent(1).first().path);
        QCOMPARE(saved.pixelColor(50, 30), kMarker);
        QCOMPARE(QDir(m_outputDir).entryList(QDir::Files).size(), filesBefore + 1);
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
        QCOMPARE(Toast::current()->title(), QStringLiteral("No image"));
        QVERIFY(m_actions->pinManager()->pins().isEmpty());

        QImage image(64, 48, QImage::Format_RGB32);
        image.fill(Qt::green);
        QGuiApplication::clipboard()->setImage(image);
        m_actions->pinFromClipboard();
        QCOMPARE(m_actions->pinManager()->pins().size(), 1);
    }

    // A changed key is shown in its row at once; a row without a key shows none.
    void trayMenuFollowsTheKeys()
    {
        zelmor::core::ConfigManager::instance().setHotkey("fullscreen", QStringLiteral("Ctrl+F6"));
        zelmor::core::ConfigManager::instance().setHotkey("fullscreen", QString());
        zelmor::core::ConfigManager::instance().setHotkey("region", QStringLiteral("Ctrl+Shift+R"));
        QStringList rows;
        for (const QAction* a : m_tray->menu()->actions())
            rows << a->text() + '\t' + a->shortcut().toString(QKeySequence::PortableText);
        QVERIFY(rows.contains(QStringLiteral("Region capture\tCtrl+Shift+R")));
        QVERIFY(rows.contains(QStringLiteral("Fullscreen capture\t")));
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

    // The main window the actions open: each slot its page, built on demand; closing only hides.
    void showSlotsRouteToTheirPageAndClosingOnlyHides()
    {
        MainWindow w;
        const QList<std::pair<void (MainWindow::*)(), int>> pages{
            {&MainWindow::showSettings, MainWindow::SettingsPage},
            {&MainWindow::showHistory, MainWindow::HistoryPage},
            {&MainWindow::showAiChat, MainWindow::AiChatPage}};
        for (const auto& [show, page] : pages) {
            (w.*show)();
            QCOMPARE(shownIndex(w), page);
        }
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        // Asked for again while minimized, as by a hotkey: back on the screen.
        w.showMinimized();
        QTRY_VERIFY(!w.windowHandle()->isExposed());
        w.showAiChat();
        QTRY_VERIFY(w.windowHandle()->isExposed());
        QVERIFY(!w.isMinimized());
        const QPointer<QWidget> shown = w.pageWidget(MainWindow::AiChatPage);
        QVERIFY(!w.close());
        QVERIFY(!w.isVisible());
        QCOMPARE(w.pageWidget(MainWindow::AiChatPage), shown);
        // A language change rebuilds the pages, later, and leaves a hidden window hidden.
        w.retranslateUi();
        QTRY_VERIFY(shown.isNull() && w.pageWidget(MainWindow::AiChatPage));
        QCOMPARE(shownIndex(w), int(MainWindow::AiChatPage));
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
