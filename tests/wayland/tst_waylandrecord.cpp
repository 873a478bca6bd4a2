#include "TestMain.h"

#include "core/CaptureResult.h"
#include "core/DisplaySession.h"
#include "manager/PinManager.h"
#include "service/capture/CaptureService.h"
#include "service/gesture/MouseGestureService.h"
#include "service/record/FrameStore.h"
#include "service/record/RecordingService.h"
#include "widget/RecordHud.h"

#include <QPlainTextEdit>
#include <QProcess>
#include <QSignalSpy>

using namespace zelmor;

namespace {
// grim's picture of a desktop rectangle.
QImage grim(const QRect& r)
{
    QProcess grim;
    grim.start("grim",
               {"-t", "ppm", "-g",
                QString("%1,%2 %3x%4").arg(r.x()).arg(r.y()).arg(r.width()).arg(r.height()), "-"});
    grim.waitForFinished();
    return QImage::fromData(grim.readAllStandardOutput()).convertToFormat(QImage::Format_RGB32);
}

// The same picture but for a GIF palette's rounding and the pointer drawn over it.
bool alike(const QImage& a, const QImage& b)
{
    if (a.size() != b.size()) return false;
    int differing = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            differing += qAbs(qGray(a.pixel(x, y)) - qGray(b.pixel(x, y))) > 24;
    return differing < a.width() * a.height() / 100;
}
} // namespace

// Zelmor's pins, recording and scroll capture on sway (run by tests/wayland/check-record.sh).
class TestWaylandRecord : public QObject
{
    Q_OBJECT
    QPlainTextEdit m_page; // a long page of a Wayland program, under everything

private Q_SLOTS:
    void initTestCase()
    {
        core::tellDisplayServer();
        QStringList lines;
        for (int i = 1; i <= 150; ++i)
            lines << QString("Line %1 of a long page: %2").arg(i).arg(QString(i % 37, QChar('#')));
        m_page.setPlainText(lines.join('\n'));
        m_page.setFont(QFont("DejaVu Sans Mono", 14));
        m_page.show();
        QVERIFY(QTest::qWaitForWindowExposed(&m_page));
        QTest::qWait(500);
    }

    // Tiled beside the page, the frame would shrink it, and the recording would show that.
    void regionFrameLeavesThePage()
    {
        const QSize page = m_page.size();
        widget::RecordRegionFrame frame({300, 300, 400, 200});
        frame.show();
        QTest::qWait(1000);
        QCOMPARE(m_page.size(), page);
    }

    void pinShowsOnTop()
    {
        manager::PinManager pins;
        QPixmap magenta(240, 160);
        magenta.fill(Qt::magenta);
        pins.addPin(magenta);
        QTRY_VERIFY_WITH_TIMEOUT(grim(QRect(0, 0, 1920, 1080)).pixelColor(960, 540) == Qt::magenta,
                                 10000);
    }

    void gifFramesAreTheScreen()
    {
        const QRect region(200, 150, 400, 300);
        service::record::RecordingService recording;
        QSignalSpy recorded(&recording, &service::record::RecordingService::framesRecorded);
        recording.recordGif(region, 3, 10);
        QVERIFY(recorded.wait(20000));
        QVERIFY(!recording.sawInput()); // nothing shows a Wayland program the input
        auto frames =
            recorded.at(0).at(0).value<std::shared_ptr<const service::record::FrameStore>>();
        QVERIFY(frames->count() > 1);
        const QImage screen = grim(region);
        service::record::FrameReader reader(frames);
        for (int i = 0; i < frames->count(); ++i)
            QVERIFY2(alike(reader.frame(i).convertToFormat(QImage::Format_RGB32), screen),
                     qPrintable(QString("frame %1").arg(i)));
    }

    void gesturesSeeNothing()
    {
        service::gesture::MouseGestureService gestures;
        gestures.setEnabled(true);
        QVERIFY(!gestures.observing());
    }

    void scrollCaptureStitchesThePage()
    {
        const QRect region(40, 40, 600, 400);
        const QImage first = grim(region);
        service::capture::CaptureService capture;
        QSignalSpy done(&capture, &service::capture::CaptureService::scrollCaptureCompleted);
        capture.captureScrolling(region, true);
        QVERIFY(done.wait(60000));
        const QImage stitched =
            done.at(0).at(0).value<core::CaptureResult>().pixmap.toImage().convertToFormat(
                QImage::Format_RGB32);
        QVERIFY(stitched.height() > 2 * region.height());
        QVERIFY(alike(stitched.copy(0, 0, region.width(), region.height()), first));
        const int rest = stitched.height() - region.height();
        QVERIFY(alike(stitched.copy(0, rest, region.width(), region.height()), grim(region)));
    }
};

ZELMOR_TEST_MAIN(TestWaylandRecord, QApplication)
#include "tst_waylandrecord.moc"
