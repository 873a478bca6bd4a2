// Recording at 1920x1080 while a window animates under it: the frame rate actually reached at
// 15 and 30 fps, the peak memory of a long recording at 15 fps (60 s unless told), the export
// time of 300 recorded frames through the own encoder, and how soon a cancel in a pause ends.
//   scripts/x-session.sh build/bench/zelmor-bench-record [seconds of the long recording]

#include "BenchSupport.h"

#include "service/record/GifEncoder.h"
#include "service/record/RecordingService.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QPainter>
#include <QTemporaryDir>
#include <QTimer>
#include <QWidget>

#include <cstdio>

using namespace zelmor::service::record;

namespace {

const QRect kRegion(0, 0, 1920, 1080);

// Text being typed and a shape moving: what a screen recording usually holds.
class Animation : public QWidget
{
public:
    Animation()
    {
        setGeometry(kRegion);
        connect(&m_timer, &QTimer::timeout, this, [this] {
            ++m_tick;
            update();
        });
        m_timer.start(33);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter p(this);
        p.setRenderHint(QPainter::Antialiasing);
        p.fillRect(rect(), QColor(250, 250, 250));
        p.fillRect(0, 0, width(), 40, QColor(40, 90, 160));
        p.setPen(Qt::black);
        const QString line = QStringLiteral("The recorder keeps every frame of this line. ");
        for (int row = 0; row < 20; ++row)
            p.drawText(60, 90 + row * 28, line.repeated(3).left((m_tick + row * 7) % 130));
        p.setBrush(QColor(230, 120, 40));
        p.drawEllipse(QPoint(100 + (m_tick * 9) % 1700, 800), 60, 60);
    }

private:
    QTimer m_timer;
    int m_tick = 0;
};

QList<QImage> record(RecordingService& service, int seconds, int fps)
{
    QList<QImage> frames;
    QEventLoop loop;
    const auto done = QObject::connect(&service, &RecordingService::framesRecorded, &loop,
                                       [&](const QList<QImage>& recorded) {
                                           frames = recorded;
                                           loop.quit();
                                       });
    service.recordGif(kRegion, seconds, fps);
    loop.exec();
    QObject::disconnect(done);
    return frames;
}

double cancelInPauseMs(RecordingService& service)
{
    QEventLoop loop;
    QElapsedTimer clock;
    QObject::connect(&service, &RecordingService::gifCancelled, &loop, &QEventLoop::quit);
    service.recordGif(kRegion, 0, 15);
    service.togglePause();
    QTimer::singleShot(500, &loop, [&] {
        clock.start();
        service.cancel();
    });
    loop.exec();
    return clock.nsecsElapsed() / 1e6;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const int longSeconds = argc > 1 ? std::max(1, atoi(argv[1])) : 60;
    Animation animation;
    animation.show();
    RecordingService service;

    std::printf("region 1920x1080, own grab and scale on a pool thread; a frame takes at least "
                "50 ms, so 24 and 30 fps record at 20\n");
    for (int fps : {15, 30}) {
        const int seconds = 5;
        const QList<QImage> frames = record(service, seconds, fps);
        std::printf("asked %2d fps: reached %.1f fps (%lld frames in %d s)\n", fps,
                    double(frames.size()) / seconds, qlonglong(frames.size()), seconds);
    }

    const qint64 before = zelmor::bench::peakResidentKiB();
    QList<QImage> frames = record(service, longSeconds, 15);
    std::printf("%d s at 15 fps: %lld frames, peak resident memory %lld MiB (%lld MiB before)\n",
                longSeconds, qlonglong(frames.size()), zelmor::bench::peakResidentKiB() / 1024,
                before / 1024);

    frames = frames.mid(0, 300);
    QTemporaryDir dir;
    QString error;
    QElapsedTimer clock;
    clock.start();
    const bool written =
        writeGifMedianCut(error, dir.filePath(QStringLiteral("bench.gif")), frames, 66, 1920, 1080);
    std::printf("export of %lld frames through the own encoder: %.1f s, %lld KiB%s\n",
                qlonglong(frames.size()), clock.elapsed() / 1000.0,
                qlonglong(QFile(dir.filePath(QStringLiteral("bench.gif"))).size() / 1024),
                written ? "" : qPrintable(QStringLiteral(" (failed: %1)").arg(error)));
    frames.clear();
    std::printf("cancel during a pause: gone after %.1f ms\n", cancelInPauseMs(service));
    return 0;
}
