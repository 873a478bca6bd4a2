#include "DesktopDriver.h"
#include "TestMain.h"
#include "TestSupport.h"
#include "UiFixture.h"

#include "app/HotkeyBindings.h"
#include "core/ConfigManager.h"
#include "manager/ActionManager.h"
#include "manager/HotkeyService.h"
#include "manager/TrayService.h"
#include "platform/Input.h"
#include "service/capture/WindowList.h"
#include "service/history/HistoryService.h"
#include "service/record/RecordingService.h"
#include "widget/GifEditorDialog.h"
#include "widget/MainWindow.h"
#include "widget/RecordHud.h"
#include "widget/TrayMenu.h"
#include "widget/overlay/CaptureOverlay.h"
#include "widget/settings/SettingsDialog.h"

#include <QAbstractButton>
#include <QClipboard>
#include <QComboBox>
#include <QImageReader>
#include <QKeySequenceEdit>
#include <QLabel>
#include <QMimeData>
#include <QSignalSpy>
#include <QTimer>

using namespace zelmor;
using manager::HotkeyService;
using namespace zelmor::test;

class TestHotkeys : public QObject
{
    Q_OBJECT

    std::unique_ptr<UiFixture> m_focused; // another application's window has the focus

private Q_SLOTS:
    void initTestCase()
    {
        m_focused = std::make_unique<UiFixture>("Focused elsewhere", QRect(100, 100, 300, 240));
        QVERIFY(m_focused->focusedHandle());
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

        QVERIFY(xdotool(QStringLiteral("key F6")));
        QTRY_COMPARE(pressed.count(), 1);
        QCOMPARE(pressed.last().first().toInt(), 7);
        QVERIFY(xdotool(QStringLiteral("key F7 ctrl+k ctrl+F6"))); // 7 kept its first binding
        QTRY_COMPARE(pressed.count(), 3);
        QCOMPARE(pressed[1].first().toInt(), 12);
        QCOMPARE(pressed.last().first().toInt(), 8);

        // NumLock and CapsLock do not stop a hotkey.
        QVERIFY(xdotool(QStringLiteral("key Num_Lock Caps_Lock ctrl+F6 F6 Num_Lock Caps_Lock")));
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

    // From the hotkey through the region, the strip and the editor to the exported file.
    void hotkeyToExportedGif()
    {
        UiFixture program("Recorded program", QRect(200, 200, 500, 300));
        QVERIFY(program.focusedHandle());
        const QRect field = service::capture::foregroundWindow().rect.adjusted(40, 60, -40, -40);
        widget::MainWindow mainWindow;
        manager::ActionManager actions(&mainWindow);
        manager::HotkeyService hotkeys;
        app::HotkeyBindings bindings(hotkeys, actions);
        bindings.registerAll();
        service::record::RecordingService* recording = actions.recordingService();
        std::shared_ptr<const service::record::FrameStore> frames;
        int intervalMs = 0;
        connect(recording, &service::record::RecordingService::framesRecorded, this,
                [&](const std::shared_ptr<const service::record::FrameStore>& f, int ms) {
                    frames = f, intervalMs = ms;
                });

        QVERIFY(xdotool("key ctrl+alt+g"));
        QTRY_VERIFY(shownTopLevel<widget::CaptureOverlay>());
        auto* overlay = shownTopLevel<widget::CaptureOverlay>();
        QSignalSpy started(overlay, &widget::CaptureOverlay::recordStartRequested);
        QVERIFY(drag(field.topLeft(), field.bottomRight()));
        QTRY_VERIFY(overlay->findChild<QWidget*>("start") &&
                    overlay->findChild<QWidget*>("start")->isVisible());
        auto* fps = overlay->findChildren<QComboBox*>().last(); // a frame every 50 ms
        fps->setCurrentIndex(fps->count() - 1);
        QVERIFY(clickButton(overlay, "start"));
        QTRY_COMPARE(started.size(), 1);
        const QRect region = started.first().first().toRect();

        QTRY_VERIFY(shownTopLevel<widget::RecordHud>());
        auto* hud = shownTopLevel<widget::RecordHud>();
        QVERIFY(click(region.center()));      // the recorded program takes the keys
        std::vector<platform::KeyEvent> keys; // eight keys: the strip shows the newest six
        for (unsigned key = 'A'; key <= 'H'; ++key)
            keys.insert(keys.end(), {{key, true}, {key, false}});
        QVERIFY(platform::sendKeys(keys));
        QLabel* chips = hud->findChildren<QLabel*>().last();
        QTRY_COMPARE(chips->text(), QString("[C] [D] [E] [F] [G] [H]"));
        QVERIFY(clickButton(hud, "Pause")); // the recorded program keeps the focus
        QTRY_VERIFY(hud->findChildren<QAbstractButton*>().first()->text() == "Resume");
        QCOMPARE(service::capture::foregroundWindow().title, QString("Recorded program"));
        QVERIFY(clickButton(hud, "Resume"));

        // The editor runs modally from here on: it is exported from inside its own loop.
        QTimer exporter;
        connect(&exporter, &QTimer::timeout, this, [&] {
            if (auto* editor =
                    qobject_cast<widget::GifEditorDialog*>(QApplication::activeModalWidget())) {
                exporter.stop();
                QMetaObject::invokeMethod(editor, "onExport");
            }
        });
        exporter.start(50);
        QVERIFY(clickButton(hud, "Stop"));
        QTRY_VERIFY_WITH_TIMEOUT(frames && !QApplication::activeModalWidget(), 60000);

        const QList<core::HistoryItem> rows =
            service::history::HistoryService::instance().recent(1);
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows.first().category, core::HistoryCategory::Recording);
        const QString gif = rows.first().path;
        QCOMPARE(QApplication::clipboard()->mimeData()->urls(),
                 QList<QUrl>{QUrl::fromLocalFile(gif)});

        // The file's format is the encoder suite's: here, that the export is the recording.
        QImageReader written(gif);
        QCOMPARE(written.imageCount(), frames->count());
        QCOMPARE(written.size(), frames->frameSize());
        written.read();
        QCOMPARE(written.nextImageDelay() / 10, intervalMs / 10);

        // The next recording starts without the keys of this one.
        QSignalSpy ticked(recording, &service::record::RecordingService::elapsedChanged);
        recording->recordGif(region, 0, 10);
        QVERIFY(ticked.wait());
        QCOMPARE(chips->text(), QString());
        recording->cancel();
    }
};

ZELMOR_TEST_MAIN(TestHotkeys, QApplication)
#include "tst_hotkeys.moc"
