// The recording service, and the input log it draws its chips and click marks from.

#include "TestMain.h"

#include "platform/Input.h"
#include "service/record/InputHook.h"
#include "service/record/RecordingService.h"
#include "widget/RecordHud.h"
#include "widget/ScrollHud.h"

#include <QApplication>
#include <QLabel>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTranslator>

namespace platform = zelmor::platform;
using Presses = QList<QPair<qint64, int>>; // time in ms, virtual key

namespace zelmor::service::record {

namespace {

constexpr qint64 kT = 1'000'000; // a frame's time

QList<KeyEvent> keysAt(const QList<qint64>& ages)
{
    QList<KeyEvent> keys;
    for (qint64 age : ages)
        keys.append({kT - age, QString::number(age)});
    return keys;
}

} // namespace

class TestRecordingService : public QObject
{
    Q_OBJECT

    static QStringList labels(const InputHook& hook)
    {
        QStringList result;
        for (const KeyEvent& key : hook.recentKeys())
            result << key.label;
        return result;
    }

private slots:
    void keyRows_data()
    {
        QTest::addColumn<Presses>("presses");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("repeat within 150 ms")
            << Presses{{1000, 'A'}, {1030, 'A'}, {1060, 'A'}, {1090, 'A'}, {1149, 'A'}}
            << QStringList{"A"};
        QTest::newRow("repeat reaching 150 ms")
            << Presses{{1000, 'A'}, {1030, 'A'}, {1150, 'A'}} << QStringList{"A", "A"};
        QTest::newRow("only the last row is compared")
            << Presses{{1000, 'A'}, {1010, 'B'}, {1020, 'A'}} << QStringList{"A", "B", "A"};
    }
    void keyRows()
    {
        QFETCH(Presses, presses);
        InputHook hook;
        for (const auto& [timeMs, virtualKey] : presses)
            hook.onKeyDown(timeMs, virtualKey);
        QTEST(labels(hook), "expected");
        QCOMPARE(InputHook::keyLabel(37), "←"); // letters and keys past the table: observed below
    }

    // Keys held with Alt, and Alt itself, are system keys to a Windows hook and never logged.
    void observesTheDisplay()
    {
        const QPoint at(345, 267);
        if (!platform::setCursorPosition({at.x(), at.y()}))
            QSKIP("no display with input injection");
        InputHook hook;
        hook.install();
        hook.install(); // keeps observing
        using platform::MouseButton;
        QVERIFY(
            platform::sendMouseButtons({{MouseButton::Left, true}, {MouseButton::Left, false}}));
        QVERIFY(platform::sendKeys({{0xA2, true},
                                    {0xA2, false},
                                    {0x12, true},
                                    {'X', true},
                                    {'X', false},
                                    {0x12, false},
                                    {'B', true},
                                    {'B', false}}));
        QTRY_COMPARE(labels(hook), (QStringList{"Key162", "B"}));
        QCOMPARE(hook.recentClicks().size(), 1);
        QCOMPARE(hook.recentClicks().first().pos, at);
        hook.uninstall();
        hook.uninstall();
    }
    void outputSize_data()
    {
        QTest::addColumn<QSize>("region");
        QTest::addColumn<QSize>("frame");
        QTest::newRow("wide") << QSize(3000, 1000) << QSize(1920, 640);
        QTest::newRow("odd sides") << QSize(3, 801) << QSize(2, 800);
        QTest::newRow("tall") << QSize(500, 4000) << QSize(240, 1920);
    }
    void outputSize()
    {
        QFETCH(QSize, region);
        QTEST(RecordingService::outputSize(region), "frame");
    }

    void keyChips_data()
    {
        QTest::addColumn<QList<qint64>>("ages"); // oldest first; negative: after the frame
        QTest::addColumn<QStringList>("shown");
        QTest::newRow("six in a second: the newest five")
            << QList<qint64>{900, 800, 600, 400, 200, 0}
            << QStringList{"800", "600", "400", "200", "0"};
        QTest::newRow("only the last 1.5 s") << QList<qint64>{1600, 1499} << QStringList{"1499"};
        QTest::newRow("none after the frame") << QList<qint64>{100, -50} << QStringList{"100"};
    }
    void keyChips()
    {
        QFETCH(QList<qint64>, ages);
        QTEST(RecordingService::keyChipsAt(kT, keysAt(ages)), "shown");
    }

    // The ring's pen runs at the radius: 14 when the click is new, fading out by 300 ms.
    void clickMark_data()
    {
        QTest::addColumn<qint64>("age");
        QTest::addColumn<bool>("ringAt14");
        QTest::addColumn<bool>("dot");
        QTest::newRow("new") << qint64(0) << true << true;
        QTest::newRow("300 ms") << qint64(300) << false << false;
        QTest::newRow("after the frame") << qint64(-1) << false << false;
    }
    void clickMark()
    {
        QFETCH(qint64, age);
        QImage frame(100, 100, QImage::Format_RGB32);
        frame.fill(Qt::black);
        const QRect region(1000, 500, 100, 100);
        RecordingService::decorateFrame(frame, kT, {{kT - age, QPoint(1050, 550)}}, {}, region);
        QTEST(frame.pixelColor(64, 50) == QColor(76, 194, 255), "ringAt14");
        QTEST(frame.pixelColor(50, 50) == QColor(255, 82, 82), "dot");
    }

    // Whatever they show, in either language, the strips show it whole: nothing is squeezed
    // under its neighbour.
    void stripsShowEverything_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<bool>("scroll");
        for (const char* language : {"en_US", "zh_CN"}) {
            QTest::addRow("recording, %s", language) << QString(language) << false;
            QTest::addRow("scroll, %s", language) << QString(language) << true;
        }
    }
    void stripsShowEverything()
    {
        QFETCH(QString, language);
        QFETCH(bool, scroll);
        QTranslator translator;
        QVERIFY(translator.load("zelmor_" + language, qEnvironmentVariable("ZELMOR_BIN_DIR")));
        QCoreApplication::installTranslator(&translator);
        const auto english = qScopeGuard([&] { QCoreApplication::removeTranslator(&translator); });
        std::unique_ptr<QWidget> strip;
        if (scroll) {
            auto* hud = new zelmor::widget::ScrollHud;
            hud->setStitchedHeight(1234567);
            strip.reset(hud);
        } else {
            auto* hud = new zelmor::widget::RecordHud;
            hud->setElapsed(4505); // minutes do not roll over into hours
            hud->setPaused(true);
            hud->setKeyChips({"Ctrl", "Shift", "Enter", "Space", "PgDn", "Caps"});
            strip.reset(hud);
        }
        strip->show();
        QVERIFY(QTest::qWaitForWindowExposed(strip.get()));
        if (!scroll)
            QCOMPARE(strip->findChildren<QLabel*>().at(1)->text(), QStringLiteral("75:05"));
        QWidget* previous = nullptr;
        for (QWidget* part : strip->findChildren<QWidget*>()) {
            const QString what =
                part->metaObject()->className() + QString(" ") + part->property("text").toString();
            QVERIFY2(part->width() >= part->sizeHint().width(), qPrintable(what));
            QVERIFY2(!previous || previous->geometry().right() < part->x(), qPrintable(what));
            previous = part;
        }
    }

    // A pause does not count against the duration: 5 s at 10 fps make about 50 frames, where
    // a pause of 3 s counted in would leave about 20. The frames come before the completion.
    void durationLeavesOutPauses()
    {
        RecordingService service;
        QStringList order;
        qsizetype frames = 0;
        connect(&service, &RecordingService::framesRecorded, this,
                [&](const std::shared_ptr<const FrameStore>& recorded) {
                    order << "frames", frames = recorded->count();
                });
        connect(&service, &RecordingService::gifCompleted, this, [&] { order << "completed"; });
        service.recordGif(QRect(10, 10, 40, 30), 5, 10);
        service.togglePause();
        QTest::qWait(3000); // the pause itself, not a wait for something to happen
        service.togglePause();
        QTRY_COMPARE_WITH_TIMEOUT(order, QStringList({"frames", "completed"}), 30000);
        QVERIFY2(frames > 35, qPrintable(QString::number(frames)));
    }

    void memoryBudgetStopsCleanly()
    {
        RecordingService service;
        // The first compressed frame already passes the budget, and is the last.
        service.setMemoryBudget(1);
        QSignalSpy limited(&service, &RecordingService::memoryLimitReached);
        QSignalSpy recorded(&service, &RecordingService::framesRecorded);
        service.recordGif(QRect(10, 10, 40, 30), 0, 20); // manual: only the budget ends it
        QVERIFY(recorded.wait(20000));
        QCOMPARE(limited.size(), 1);
        QCOMPARE(recorded.first().first().value<std::shared_ptr<const FrameStore>>()->count(), 1);
    }

    void cancelDuringPause()
    {
        RecordingService service;
        QSignalSpy cancelled(&service, &RecordingService::gifCancelled);
        QSignalSpy recorded(&service, &RecordingService::framesRecorded);
        service.recordGif(QRect(10, 10, 40, 30), 0, 20);
        service.togglePause();
        service.cancel();
        QVERIFY(cancelled.wait(20000));
        QCOMPARE(recorded.size(), 0);
    }
};

} // namespace zelmor::service::record

ZELMOR_TEST_MAIN(zelmor::service::record::TestRecordingService, QApplication)
#include "tst_recordingservice.moc"
