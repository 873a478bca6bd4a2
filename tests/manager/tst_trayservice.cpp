#include "TestMain.h"

#include "core/ConfigManager.h"
#include "manager/ActionManager.h"
#include "manager/TrayService.h"
#include "widget/LicenseDialog.h"
#include "widget/MainWindow.h"
#include "widget/TrayMenu.h"
#include "widget/overlay/CaptureOverlay.h"

#include <QProcess>
#include <QSystemTrayIcon>
#include <QTextBrowser>

using zelmor::manager::TrayService;

namespace {

// The visible rows: texts with their shown keys, "-" for a separator, "[text]" for a submenu.
QStringList rows(const QMenu* menu)
{
    QStringList out;
    for (const QAction* a : menu->actions()) {
        if (a->isSeparator()) {
            out << QStringLiteral("-");
        } else if (a->menu()) {
            out << QStringLiteral("[%1]").arg(a->text());
        } else if (!a->text().isEmpty()) {
            const QString key = a->shortcut().toString(QKeySequence::PortableText);
            out << (key.isEmpty() ? a->text() : a->text() + QStringLiteral("\t") + key);
        }
    }
    return out;
}

} // namespace

class TestTrayService : public QObject
{
    Q_OBJECT

    zelmor::widget::MainWindow m_window;
    std::unique_ptr<zelmor::manager::ActionManager> m_actions;
    std::unique_ptr<TrayService> m_tray;

private Q_SLOTS:
    void initTestCase()
    {
        m_actions = std::make_unique<zelmor::manager::ActionManager>(&m_window);
        m_tray = std::make_unique<TrayService>(m_actions.get());
        m_tray->show();
        QVERIFY(QSystemTrayIcon::isSystemTrayAvailable());
        // The icon is embedded by the tray host, at its place in the host's strip.
        QTRY_VERIFY(m_tray->trayIcon()->geometry().x() > 0 &&
                    !m_tray->trayIcon()->geometry().isEmpty());
    }

    void menuRowsInOrderWithTheirKeys()
    {
        const QStringList expected = {
            QStringLiteral("-"),
            QStringLiteral("🔤 Extract Text (OCR)"),
            QStringLiteral("✏️ AI Auto Annotate UI"),
            QStringLiteral("-"),
            QStringLiteral("Region capture\tF6"),
            QStringLiteral("Fullscreen capture\tCtrl+F6"),
            QStringLiteral("Window capture\tCtrl+Alt+W"),
            QStringLiteral("[Delayed capture]"),
            QStringLiteral("Annotate screen"),
            QStringLiteral("From clipboard\tF7"),
            QStringLiteral("-"),
            QStringLiteral("History\tCtrl+Alt+H"),
            QStringLiteral("Open output directory"),
            QStringLiteral("[Pin sessions]"),
            QStringLiteral("-"),
            QStringLiteral("[Theme]"),
            QStringLiteral("License..."),
            QStringLiteral("Restart as admin"),
            QStringLiteral("-"),
            QStringLiteral("Quit"),
        };
        QCOMPARE(rows(m_tray->menu()), expected);
        QVERIFY(m_tray->menu()->actions().first()->inherits("zelmor::widget::TrayHeaderAction"));
    }

    void hotkeyChangesRebuildTheMenu()
    {
        const QPointer<QMenu> before = m_tray->menu();
        zelmor::core::ConfigManager::instance().setHotkey("fullscreen", QStringLiteral("Ctrl+F6"));
        zelmor::core::ConfigManager::instance().setHotkey("fullscreen", QString());
        zelmor::core::ConfigManager::instance().setHotkey("region", QStringLiteral("Ctrl+Shift+R"));
        QVERIFY(before.isNull());
        const QStringList now = rows(m_tray->menu());
        QVERIFY(now.contains(QStringLiteral("Region capture\tCtrl+Shift+R")));
        QVERIFY(
            now.contains(QStringLiteral("Fullscreen capture"))); // an empty sequence shows no key
        QCOMPARE(m_tray->trayIcon()->contextMenu(), m_tray->menu());
    }

    void leftClickOpensTheRegionOverlay()
    {
        const QPoint centre = m_tray->trayIcon()->geometry().center();
        QCOMPARE(QProcess::execute(QStringLiteral("xdotool"),
                                   {QStringLiteral("mousemove"), QString::number(centre.x()),
                                    QString::number(centre.y()), QStringLiteral("click"),
                                    QStringLiteral("1")}),
                 0);
        QTRY_VERIFY(m_actions->regionCaptureActive());
        for (QWidget* w : QApplication::topLevelWidgets())
            if (qobject_cast<zelmor::widget::CaptureOverlay*>(w)) w->close();
        QTRY_VERIFY(!m_actions->regionCaptureActive());
    }

    void licenseRowShowsTheComponents()
    {
        for (QAction* a : m_tray->menu()->actions())
            if (a->text() == QLatin1String("License...")) a->trigger();
        zelmor::widget::LicenseDialog* dialog = nullptr;
        QTRY_VERIFY((dialog = QApplication::activeWindow()
                                  ? qobject_cast<zelmor::widget::LicenseDialog*>(
                                        QApplication::activeWindow())
                                  : nullptr));
        const QString text = dialog->findChild<QTextBrowser*>()->toPlainText();
        for (const char* component : {"Qt 6", "SQLite", "libatspi", "libxcb", "Noto Sans CJK",
                                      "Noto Color Emoji", "/usr/share/doc/libqt6core6/copyright"})
            QVERIFY2(text.contains(QLatin1String(component)), component);
        dialog->close();
    }
};

ZELMOR_TEST_MAIN(TestTrayService, QApplication)
#include "tst_trayservice.moc"
