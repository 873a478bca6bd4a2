#include "TestMain.h"
#include "TestSupport.h"

#include "app/HotkeyBindings.h"
#include "core/ConfigManager.h"
#include "manager/ActionManager.h"
#include "manager/HotkeyService.h"
#include "manager/TrayService.h"
#include "service/capture/WindowList.h"
#include "widget/MainWindow.h"
#include "widget/TrayMenu.h"
#include "widget/settings/SettingsDialog.h"

#include <QKeySequenceEdit>
#include <QSignalSpy>

using namespace zelmor;
using manager::HotkeyService;
using test::xdotoolKey;

class TestHotkeys : public QObject
{
    Q_OBJECT

    std::unique_ptr<QProcess> m_focused; // another application's window has the focus

private Q_SLOTS:
    void initTestCase()
    {
        m_focused = test::startForeignWindow(QStringLiteral("Focused elsewhere"),
                                             QRect(100, 100, 300, 200));
        QTRY_COMPARE_WITH_TIMEOUT(service::capture::foregroundWindow().title,
                                  QStringLiteral("Focused elsewhere"), 10000);
    }

    void pressesArriveWhileAnotherWindowHasFocus()
    {
        HotkeyService hotkeys;
        QSignalSpy pressed(&hotkeys, &HotkeyService::hotkeyTriggered);
        QVERIFY(hotkeys.registerHotkey(7, QStringLiteral("F6")));
        QVERIFY(hotkeys.registerHotkey(8, QStringLiteral("Ctrl+F6")));
        QVERIFY(!hotkeys.registerHotkey(7, QStringLiteral("F7")));             // the same id twice
        QVERIFY(!hotkeys.registerHotkey(9, QStringLiteral("Ctrl+F6")));        // held already
        QVERIFY(hotkeys.registerHotkey(12, QStringLiteral("Ctrl+K, Ctrl+C"))); // its first chord
        for (const char* unbindable : {"Ctrl+.", "Num+5", "Ctrl+Nothing+Here"})
            QVERIFY2(!hotkeys.registerHotkey(10, QString::fromLatin1(unbindable)), unbindable);

        QVERIFY(xdotoolKey(QStringLiteral("F6")));
        QTRY_COMPARE(pressed.count(), 1);
        QCOMPARE(pressed.last().first().toInt(), 7);
        QVERIFY(xdotoolKey(QStringLiteral("F7 ctrl+k ctrl+F6"))); // 7 kept its first binding
        QTRY_COMPARE(pressed.count(), 3);
        QCOMPARE(pressed[1].first().toInt(), 12);
        QCOMPARE(pressed.last().first().toInt(), 8);

        // NumLock and CapsLock do not stop a hotkey.
        QVERIFY(xdotoolKey(QStringLiteral("Num_Lock Caps_Lock ctrl+F6 F6 Num_Lock Caps_Lock")));
        QTRY_COMPARE(pressed.count(), 5);
    }

    // Said in the tray and beside the field; another program's exit frees the key for the next try.
    void aRefusedHotkeyIsShownAsInactive()
    {
        QTemporaryDir home; // a running zelmor holds its default keys, F6 among them
        QProcess other;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const char* var : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"})
            env.insert(QLatin1String(var), home.path());
        other.setProcessEnvironment(env);
        other.start(qEnvironmentVariable("ZELMOR_BIN_DIR") + "/zelmor", {});
        QTRY_VERIFY(test::readFile(home.filePath("Zelmor/Zelmor/zelmor.log"))
                        .contains("hotkeys registered"));
        core::ConfigManager::instance().setHotkey("history", "Ctrl+."); // no system binds it
        core::ConfigManager::instance().setHotkey("window", "Ctrl+Shift+F11");
        widget::MainWindow window;
        manager::ActionManager actions(&window);
        manager::TrayService tray(&actions);
        widget::SettingsDialog panel;
        HotkeyService hotkeys;
        app::HotkeyBindings bindings(hotkeys, actions);
        bindings.registerAll();
        const auto shown = [&tray, &panel](const QString& row, const QString& field) {
            QString key = QStringLiteral("no row");
            for (QAction* a : tray.menu()->actions())
                if (a->text().startsWith(row))
                    key = a->shortcut().toString() + a->text().mid(row.size());
            for (auto* edit : panel.findChildren<QKeySequenceEdit*>())
                if (edit->accessibleName() == field && !edit->accessibleDescription().isEmpty())
                    key += " refused";
            return key;
        };
        QCOMPARE(shown("Region capture", "Region capture"), " (F6 unavailable) refused");
        QCOMPARE(shown("History", "History panel"), " (Ctrl+. unavailable) refused");
        QCOMPARE(shown("Window capture", "Window capture"), "Ctrl+Shift+F11");
        QCOMPARE(shown("Restart as admin", QString()), "no row"); // nothing to ask for on Linux
        other.terminate();
        QVERIFY(other.waitForFinished(5000));
        QTRY_VERIFY((bindings.registerAll(), bindings.isBound(1)));
        QCOMPARE(shown("Region capture", "Region capture"), "F6");
    }
};

ZELMOR_TEST_MAIN(TestHotkeys, QApplication)
#include "tst_hotkeys.moc"
