#include "DesktopDriver.h"
#include "TestMain.h"
#include "TestSupport.h"

#include "app/HotkeyBindings.h"
#include "manager/ActionManager.h"
#include "manager/HotkeyService.h"
#include "platform/Input.h"
#include "service/capture/WindowList.h"
#include "service/history/HistoryService.h"
#include "service/record/RecordingService.h"
#include "widget/GifEditorDialog.h"
#include "widget/MainWindow.h"
#include "widget/RecordHud.h"
#include "widget/overlay/CaptureOverlay.h"

#include <QAbstractButton>
#include <QClipboard>
#include <QComboBox>
#include <QImageReader>
#include <QLabel>
#include <QMimeData>
#include <QProcess>
#include <QSignalSpy>
#include <QTimer>

using namespace zelmor;
using namespace zelmor::test;

class TestRecordFlow : public QObject
{
    Q_OBJECT

private slots:
    void hotkeyToExportedGif()
    {
        const auto program =
            test::startForeignWindow("Recorded program", QRect(200, 200, 500, 300));
        QTRY_COMPARE_WITH_TIMEOUT(service::capture::foregroundWindow().title,
                                  QString("Recorded program"), 10000);
        const QRect field = service::capture::foregroundWindow().rect.adjusted(40, 60, -40, -40);
        widget::MainWindow mainWindow;
        manager::ActionManager actions(&mainWindow);
        manager::HotkeyService hotkeys;
        app::HotkeyBindings bindings(hotkeys, actions);
        bindings.registerAll();
        service::record::RecordingService* recording = actions.recordingService();
        QList<QImage> frames;
        int intervalMs = 0;
        connect(recording, &service::record::RecordingService::framesRecorded, this,
                [&](const QList<QImage>& f, int ms) { frames = f, intervalMs = ms; });

        QCOMPARE(QProcess::execute("xdotool", {"key", "ctrl+alt+g"}), 0);
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
        QTRY_VERIFY_WITH_TIMEOUT(!frames.isEmpty() && !QApplication::activeModalWidget(), 60000);

        const QList<core::HistoryItem> rows =
            service::history::HistoryService::instance().recent(1);
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows.first().category, core::HistoryCategory::Recording);
        const QString gif = rows.first().path;
        QCOMPARE(QApplication::clipboard()->mimeData()->urls(),
                 QList<QUrl>{QUrl::fromLocalFile(gif)});

        // The file's format is the encoder suite's: here, that the export is the recording.
        QImageReader written(gif);
        QCOMPARE(written.imageCount(), frames.size());
        QCOMPARE(written.size(), frames.first().size());
        written.read();
        QCOMPARE(written.nextImageDelay() / 10, intervalMs / 10);

        // The next recording starts without the keys of this one.
        QSignalSpy ticked(recording, &service::record::RecordingService::elapsedChanged);
        recording->recordGif(region, 0, 10);
        QVERIFY(ticked.wait());
        QCOMPARE(chips->text(), QString());
        recording->cancel();
        program->kill();
        program->waitForFinished();
    }
};

ZELMOR_TEST_MAIN(TestRecordFlow, QApplication)
#include "tst_recordflow.moc"
