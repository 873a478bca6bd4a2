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
#include <QLabel>
#include <QProcess>
#include <QSignalSpy>

using zelmor::manager::HotkeyService;

namespace {

// Presses the keys one after another, in this order.
bool xdotoolKey(const QString& keys)
{
    return QProcess::execute(QStringLiteral("xdotool"), QStringList{QStringLiteral("key")} +
                                                            keys.split(QLatin1Char(' '))) == 0;
}

} // namespace

class TestHotkeys : public QObject
{
    Q_OBJECT

    std::unique_ptr<QProcess> m_focused; // another application's window has the focus

private Q_SLOTS:
    void initTestCase()
    {
        m_focused = zelmor::test::startForeignWindow(QStringLiteral("Focused elsewhere"),
                                                     QRect(100, 100, 300, 200));
        QTRY_COMPARE_WITH_TIMEOUT(zelmor::service::capture::foregroundWindow().title,
                                  QStringLiteral("Focused elsewhere"), 10000);
    }

    // Ctrl+F6 and a refused Ctrl+. are the next test's matter.
    void translation_data()
    {
        QTest::addColumn<QString>("sequence");
        QTest::addColumn<unsigned>("modifiers");
        QTest::addColumn<unsigned>("key");
        QTest::newRow("F24") << "F24" << 0u << 0x87u;
        QTest::newRow("Shift+Meta+5") << "Shift+Meta+5" << 12u << unsigned('5');
        QTest::newRow("first chord only") << "Ctrl+K, Ctrl+C" << 2u << unsigned('K');
        QTest::newRow("Backtab") << "Shift+Backtab" << 4u << 9u;
        QTest::newRow("keypad") << "Num+5" << 0u << 0u;
        QTest::newRow("unparseable") << "Ctrl+Nothing+Here" << 0u << 0u;
    }
    void translation()
    {
        QFETCH(QString, sequence);
        QFETCH(unsigned, modifiers);
        QFETCH(unsigned, key);
        const HotkeyService::Binding b = HotkeyService::translate(sequence);
        QCOMPARE(b.virtualKey, key);
        if (key) QCOMPARE(b.modifiers, modifiers);
    }

    void pressesArriveWhileAnotherWindowHasFocus()
    {
        HotkeyService hotkeys;
        QSignalSpy pressed(&hotkeys, &HotkeyService::hotkeyTriggered);
        QVERIFY(hotkeys.registerHotkey(7, QStringLiteral("F6")));
        QVERIFY(hotkeys.registerHotkey(8, QStringLiteral("Ctrl+F6")));
        QVERIFY(!hotkeys.registerHotkey(7, QStringLiteral("F7")));      // the same id twice
        QVERIFY(!hotkeys.registerHotkey(9, QStringLiteral("Ctrl+F6"))); // held already
        QVERIFY(!hotkeys.registerHotkey(10, QStringLiteral("Ctrl+.")));

        QVERIFY(xdotoolKey(QStringLiteral("F6")));
        QTRY_COMPARE(pressed.count(), 1);
        QCOMPARE(pressed.last().first().toInt(), 7);
        QVERIFY(xdotoolKey(QStringLiteral("F7 ctrl+F6"))); // F7 unbound: 7 kept its first binding
        QTRY_COMPARE(pressed.count(), 2);
        QCOMPARE(pressed.last().first().toInt(), 8);

        // NumLock and CapsLock do not stop a hotkey.
        QVERIFY(xdotoolKey(QStringLiteral("Num_Lock Caps_Lock ctrl+F6 F6 Num_Lock Caps_Lock")));
        QTRY_COMPARE(pressed.count(), 4);

        // Presses arrive in order: once the marker's has come, an F6 would have come before it.
        hotkeys.unregisterAll();
        QVERIFY(hotkeys.registerHotkey(11, QStringLiteral("F9")));
        QVERIFY(xdotoolKey(QStringLiteral("F6 F9")));
        QTRY_COMPARE(pressed.last().first().toInt(), 11);
        QCOMPARE(pressed.count(), 5);
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
        other.start(qEnvironmentVariable("ZELMOR_BIN_DIR") + QStringLiteral("/zelmor"), {});
        QTRY_VERIFY(zelmor::test::readFile(home.filePath("Zelmor/Zelmor/zelmor.log"))
                        .contains("hotkeys registered"));
        auto& config = zelmor::core::ConfigManager::instance();
        config.setHotkey("history", QStringLiteral("Ctrl+.")); // a key no system binds
        config.setHotkey("window", QStringLiteral("Ctrl+Shift+F11"));
        zelmor::widget::MainWindow window;
        zelmor::manager::ActionManager actions(&window);
        zelmor::manager::TrayService tray(&actions);
        zelmor::widget::SettingsDialog panel;
        HotkeyService hotkeys;
        zelmor::app::HotkeyBindings bindings(hotkeys, actions);
        bindings.registerAll();
        const auto row = [&tray](const QString& text) {
            const QList<QAction*> all = tray.menu()->actions();
            const auto found = std::find_if(all.cbegin(), all.cend(), [&text](QAction* a) {
                return a->text().startsWith(text);
            });
            return found == all.cend() ? nullptr : *found;
        };
        const auto warned = [&panel](const QString& field) {
            for (auto* edit : panel.findChildren<QKeySequenceEdit*>())
                if (edit->accessibleName() == field)
                    return !edit->parentWidget()->findChild<QLabel*>("fieldWarning")->isHidden();
            return false;
        };
        QCOMPARE(row("Region capture")->text(), "Region capture (F6 unavailable)");
        QVERIFY(row("Region capture")->shortcut().isEmpty() &&
                row("History")->shortcut().isEmpty());
        QCOMPARE(row("Window capture")->shortcut(), QKeySequence(QStringLiteral("Ctrl+Shift+F11")));
        QVERIFY(warned("Region capture") && warned("History panel") && !warned("Window capture"));
        QVERIFY(!row("Restart as admin")); // nothing to ask for on Linux
        other.terminate();
        QVERIFY(other.waitForFinished(5000));
        QTRY_VERIFY((bindings.registerAll(), bindings.isBound(1)));
        QCOMPARE(row("Region capture")->shortcut(), QKeySequence(QStringLiteral("F6")));
        QVERIFY(!warned("Region capture"));
    }
};

ZELMOR_TEST_MAIN(TestHotkeys, QApplication)
#include "tst_hotkeys.moc"
