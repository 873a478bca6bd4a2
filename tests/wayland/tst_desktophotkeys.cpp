#include "TestMain.h"

#include "core/ConfigManager.h"
#include "manager/ActionManager.h"
#include "manager/HotkeyService.h"
#include "manager/TrayService.h"
#include "platform/Hotkeys.h"
#include "widget/MainWindow.h"
#include "widget/TrayMenu.h"
#include "widget/settings/DesktopHotkeys.h"
#include "widget/settings/SettingsDialog.h"
#include "widget/settings/ShortcutSheetDialog.h"

#include <QLabel>
#include <QPlainTextEdit>
#include <QProcess>
#include <QRegularExpression>

using namespace zelmor;

// On sway, where only the desktop binds global keys (run by tests/wayland/check-hotkeys.sh).
class TestDesktopHotkeys : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void claimsNoKey()
    {
        QVERIFY(!manager::HotkeyService().registerHotkey(1, QStringLiteral("F6")));
        widget::MainWindow window;
        manager::ActionManager actions(&window);
        manager::TrayService tray(&actions); // which keys the desktop binds is not known here
        for (QAction* row : tray.menu()->actions())
            QVERIFY2(row->shortcut().isEmpty(), qPrintable(row->text()));
        widget::SettingsDialog panel;
        auto* lines = panel.findChild<QPlainTextEdit*>(QStringLiteral("desktopBindings"));
        QVERIFY(lines);
        QVERIFY(lines->toPlainText().startsWith(QStringLiteral("bindsym --no-repeat F6 exec ")));
        widget::ShortcutSheetDialog sheet; // nor says a key works at once
        for (QWidget* shown : std::initializer_list<QWidget*>{&panel, &sheet})
            for (QLabel* label : shown->findChildren<QLabel*>())
                QVERIFY2(!label->text().contains(QRegularExpression("immediately|^Current global")),
                         qPrintable(label->text()));
    }

    void swayTakesTheLines_data()
    {
        QTest::addColumn<QString>("sequence");
        QTest::addColumn<QString>("line"); // %1: the command
        QTest::newRow("every modifier") << "Ctrl+Alt+Shift+Meta+PgUp"
                                        << "bindsym --no-repeat Mod4+Ctrl+Mod1+Shift+Prior exec %1";
        QTest::newRow("letter, first chord") << "Meta+A, Ctrl+Space"
                                             << "bindsym --no-repeat Mod4+a exec %1";
        QTest::newRow("no name in sway") << "Ctrl+."
                                         << "# Region capture: %1";
    }
    void swayTakesTheLines()
    {
        QFETCH(QString, sequence);
        QFETCH(QString, line);
        core::ConfigManager::instance().setHotkey("region", sequence);
        line = line.arg(QCoreApplication::applicationFilePath() + " --capture-region");
        QCOMPARE(widget::settings::desktopBindingsText({{"region", "Region capture"}}),
                 line + '\n');
        if (line.startsWith("bindsym"))
            QCOMPARE(QProcess::execute(QStringLiteral("swaymsg"), {QStringLiteral("-q"), line}), 0);
    }

    void swayRunsQuotedCommands()
    {
        QTemporaryDir dir(QDir::tempPath() + QStringLiteral("/a 'quoted' folder-XXXXXX"));
        const QString ran = dir.filePath(QStringLiteral("ran"));
        const QString command = "touch '" + QString(ran).replace("'", R"('\'')") + "'";
        const std::string line = platform::desktopBindingLine(0, 0x76, command.toStdString());
        QCOMPARE(QProcess::execute("swaymsg", {"-q", QString::fromStdString(line)}), 0);
        QCOMPARE(QProcess::execute("wtype", {"-k", "F7"}), 0);
        QTRY_VERIFY(QFile::exists(ran));
    }
};

ZELMOR_TEST_MAIN(TestDesktopHotkeys, QApplication)
#include "tst_desktophotkeys.moc"
