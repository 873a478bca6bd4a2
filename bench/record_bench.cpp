// Recording over a real program: an xterm filling the screen, typed into word by word and
// scrolled by bursts of lines. Prints the frame rate reached and the peak memory of a long
// recording of 1920x1080 at 15 fps (60 s unless told), and the frame rate reached when 30 fps
// are asked at 1280x720, and the export of a recording of 800x600 (900 frames unless told):
// from the compressed store on every core, and on one thread over the decoded images, as
// the recorder kept them before; and how soon a cancel in a pause ends.
//   scripts/x-session.sh build/bench/zelmor-bench-record [seconds of the long recording]
//                                                       [frames to export]

#include "BenchSupport.h"

#include "service/record/GifEncoder.h"
#include "service/record/RecordingService.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <cstdio>

using namespace zelmor::service::record;

namespace {

// Words typed one by one, a new line now and then, and every fifth line a burst that scrolls.
const char* const kTypist = "i=0; while :; do i=$((i+1));"
                            " for w in $(seq 1 24); do printf 'word%d-%d ' $w $i; sleep 0.03; done;"
                            " echo; [ $((i % 5)) -eq 0 ] && ls -l /usr/bin | head -40; done";

struct Recording
{
    std::shared_ptr<const FrameStore> store;
    qsizetype frames = 0;
    bool memoryLimit = false;
};

Recording record(RecordingService& service, const QRect& region, int seconds, int fps)
{
    Recording result;
    QEventLoop loop;
    const auto limit = QObject::connect(&service, &RecordingService::memoryLimitReached, &loop,
                                        [&] { result.memoryLimit = true; });
    const auto done = QObject::connect(&service, &RecordingService::framesRecorded, &loop,
                                       [&](const std::shared_ptr<const FrameStore>& recorded) {
                                           result.store = recorded;
                                           result.frames = recorded->count();
                                           loop.quit();
                                       });
    service.recordGif(region, seconds, fps);
    loop.exec();
    QObject::disconnect(limit);
    QObject::disconnect(done);
    return result;
}

double cancelInPauseMs(RecordingService& service)
{
    QEventLoop loop;
    QElapsedTimer clock;
    const auto done =
        QObject::connect(&service, &RecordingService::gifCancelled, &loop, &QEventLoop::quit);
    service.recordGif(QRect(0, 0, 1920, 1080), 0, 15);
    service.togglePause();
    QTimer::singleShot(500, &loop, [&] {
        clock.start();
        service.cancel();
    });
    loop.exec();
    QObject::disconnect(done);
    return clock.nsecsElapsed() / 1e6;
}

// The mean and the longest time of reading every frame one step after the other.
std::pair<double, double> stepping(const std::shared_ptr<const FrameStore>& store, int step)
{
    FrameReader reader(store);
    double total = 0, worst = 0;
    const int count = store->count();
    for (int i = 0; i < count; ++i) {
        QElapsedTimer clock;
        clock.start();
        reader.frame(step > 0 ? i : count - 1 - i);
        const double ms = clock.nsecsElapsed() / 1e6;
        total += ms;
        worst = std::max(worst, ms);
    }
    return {total / std::max(count, 1), worst};
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const int longSeconds = argc > 1 ? std::max(1, atoi(argv[1])) : 60;
    QProcess xterm;
    xterm.start(QStringLiteral("xterm"),
                {QStringLiteral("-fullscreen"), QStringLiteral("-fa"),
                 QStringLiteral("DejaVu Sans Mono"), QStringLiteral("-fs"), QStringLiteral("11"),
                 QStringLiteral("-e"), QStringLiteral("bash"), QStringLiteral("-c"),
                 QString::fromLatin1(kTypist)});
    if (!xterm.waitForStarted(5000)) {
        std::printf("xterm could not be started: no bench\n");
        return 0;
    }
    QThread::msleep(2000);
    RecordingService service;

    const Recording full = record(service, QRect(0, 0, 1920, 1080), longSeconds, 15);
    std::printf("1920x1080, %d s at 15 fps asked: %lld frames, reached %.2f fps, peak resident "
                "memory %lld MiB, frames %.1f MiB compressed%s\n",
                longSeconds, qlonglong(full.frames), double(full.frames) / longSeconds,
                zelmor::bench::peakResidentKiB() / 1024, full.store->storedBytes() / 1048576.0,
                full.memoryLimit ? " (stopped by the memory budget)" : "");

    const auto [forwardMs, forwardWorst] = stepping(full.store, 1);
    const auto [backwardMs, backwardWorst] = stepping(full.store, -1);
    std::printf("decoding 1920x1080 frames in the editor's reader: playing %.1f ms a frame (at "
                "most %.1f), stepping back %.1f ms (at most %.1f)\n",
                forwardMs, forwardWorst, backwardMs, backwardWorst);

    const int seconds = 10;
    const Recording fast = record(service, QRect(0, 0, 1280, 720), seconds, 30);
    std::printf("1280x720, %d s at 30 fps asked: %lld frames, reached %.2f fps\n", seconds,
                qlonglong(fast.frames), double(fast.frames) / seconds);

    const int exported = argc > 2 ? std::max(1, atoi(argv[2])) : 900;
    const QSize size(800, 600);
    Recording small = record(service, QRect(QPoint(200, 100), size), exported / 15 + 1, 15);
    FrameSequence sequence{small.store, {}};
    for (int row = 0; row < std::min<int>(exported, small.store->count()); ++row)
        sequence.rows << row;
    QTemporaryDir dir;
    QString error;
    QElapsedTimer clock;
    clock.start();
    writeGifParallel(error, dir.filePath("store.gif"), sequence, 66, size.width(), size.height());
    const double fromStore = clock.elapsed() / 1000.0;
    QList<QImage> images;
    FrameReader reader(small.store);
    for (int row : std::as_const(sequence.rows))
        images << reader.frame(row);
    small = {};
    clock.restart();
    writeGifMedianCut(error, dir.filePath("images.gif"), images, 66, size.width(), size.height());
    std::printf("export of %lld frames of 800x600: %.1f s from the store on %d threads, %.1f s "
                "on one thread over the images\n",
                qlonglong(sequence.rows.size()), fromStore, QThread::idealThreadCount(),
                clock.elapsed() / 1000.0);
    std::printf("cancel during a pause: gone after %.1f ms\n", cancelInPauseMs(service));
    xterm.kill();
    xterm.waitForFinished(3000);
    return 0;
}
