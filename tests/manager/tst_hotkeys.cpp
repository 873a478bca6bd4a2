#include "TestMain.h"
#include "TestSupport.h"

#include "app/HotkeyBindings.h"
#include "core/ConfigManager.h"
#include "core/Toast.h"
#include "manager/ActionManager.h"
#include "manager/HotkeyService.h"
#include "service/capture/WindowList.h"
#include "widget/MainWindow.h"
#include "widget/overlay/CaptureOverlay.h"

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

int overlayCount()
{
    int count = 0;
    for (QWidget* w : QApplication::topLevelWidgets())
        count += qobject_cast<zelmor::widget::CaptureOverlay*>(w) && w->isVisible();
    return count;
}

// The overlay's own keys are another suite's matter: here it only has to be gone, along with the
// action manager's note that a region capture is open.
void closeOverlays()
{
    QList<QPointer<QWidget>> open;
    for (QWidget* w : QApplication::topLevelWidgets())
        if (qobject_cast<zelmor::widget::CaptureOverlay*>(w)) open << w;
    for (QWidget* w : open)
        w->close();
    QTRY_VERIFY(std::all_of(open.cbegin(), open.cend(), [](const auto& w) { return w.isNull(); }));
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

    void aCombinationHeldByAnotherClientIsRefused()
    {
        // A running zelmor holds its default keys, F6 among them.
        QTemporaryDir home;
        QProcess other;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("HOME"), home.path());
        for (const char* var : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"})
            env.insert(QLatin1String(var), home.path());
        other.setProcessEnvironment(env);
        other.start(qEnvironmentVariable("ZELMOR_BIN_DIR") + QStringLiteral("/zelmor"), {});
        QVERIFY(other.waitForStarted());
        const QString log = home.filePath(QStringLiteral("Zelmor/Zelmor/zelmor.log"));
        QTRY_VERIFY(zelmor::test::readFile(log).contains("hotkeys registered"));
        HotkeyService hotkeys;
        QVERIFY(!hotkeys.registerHotkey(1, QStringLiteral("F6")));
        other.terminate();
        QVERIFY(other.waitForFinished(5000));
        // The server lets go of the grab once the other client is gone; a taken key stays taken.
        bool bound = false;
        QTRY_VERIFY(bound || (bound = hotkeys.registerHotkey(1, QStringLiteral("F6"))));
    }

    void settingsRebindTheActions()
    {
        zelmor::widget::MainWindow window;
        zelmor::manager::ActionManager actions(&window);
        HotkeyService hotkeys;
        zelmor::app::HotkeyBindings bindings(hotkeys, actions);
        bindings.registerAll();
        QVERIFY(bindings.isBound(1));

        QVERIFY(xdotoolKey(QStringLiteral("F6")));
        QTRY_COMPARE(overlayCount(), 1);
        closeOverlays();

        zelmor::core::ConfigManager::instance().setHotkey("region", QStringLiteral("F8"));
        QVERIFY(bindings.isBound(1));
        QSignalSpy pressed(&hotkeys, &HotkeyService::hotkeyTriggered);
        QVERIFY(xdotoolKey(QStringLiteral("F6 F8")));
        QTRY_COMPARE(overlayCount(), 1);
        QCOMPARE(pressed.count(), 1); // F8 alone, which came after F6
        closeOverlays();

        zelmor::core::ConfigManager::instance().setHotkey("region", QString()); // cleared
        QVERIFY(!bindings.isBound(1));
        QVERIFY(bindings.isBound(2));
    }
};

ZELMOR_TEST_MAIN(TestHotkeys, QApplication)
#include "tst_hotkeys.moc"
