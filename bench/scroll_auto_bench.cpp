// Scroll capture that scrolls by itself, on a real program: xterm showing `less` on a file of
// numbered lines, captured from its first line until the page stops at its end. Prints the
// stitched height, the wall time of the sampling and of the whole capture with the saving, and
// the page pixels stitched per second of sampling.
//   scripts/x-session.sh build/bench/zelmor-bench-scroll-auto [lines, 3000 by default]

#include "BenchSupport.h"
#include "RealProgram.h"
#include "core/ConfigManager.h"
#include "service/capture/CaptureService.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QFile>

#include <atomic>
#include <cstdio>

using namespace zelmor;
using service::capture::CaptureService;

int main(int argc, char** argv)
{
    QTemporaryDir sandbox;
    bench::useSandbox(sandbox);
    QApplication app(argc, argv);
    const int lines = argc > 1 ? std::max(100, atoi(argv[1])) : 3000;
    QFile file(sandbox.filePath(QStringLiteral("lines.txt")));
    if (!file.open(QIODevice::WriteOnly) || file.write(test::numberedLines(lines)) <= 0) return 1;
    file.close();
    core::ConfigManager::instance().setOutputDir(sandbox.filePath(QStringLiteral("out")));

    const QString title = QStringLiteral("zelmor scroll bench");
    test::RealProgram pager(QStringLiteral("xterm"), test::pagerArguments(title, file.fileName()),
                            title);
    if (pager.client.isEmpty()) {
        std::printf("xterm showed no window\n");
        return 1;
    }
    // The text without the pager's status line.
    const QRect region = pager.client.adjusted(2, 2, -2, -24);
    bench::spinUntil([deadline = QDeadlineTimer(500)] { return deadline.hasExpired(); });

    CaptureService capture;
    QElapsedTimer clock;
    std::atomic<qint64> sampledMs{-1};
    int height = 0;
    bool done = false;
    QObject::connect(
        &capture, &CaptureService::scrollSaving, &capture, [&] { sampledMs = clock.elapsed(); },
        Qt::DirectConnection);
    QObject::connect(&capture, &CaptureService::scrollCaptureCompleted,
                     [&](const core::CaptureResult& result) {
                         height = result.height;
                         done = true;
                     });
    QObject::connect(&capture, &CaptureService::scrollCaptureFailed, [&] { done = true; });
    QObject::connect(&capture, &CaptureService::scrollCaptureCancelled, [&] { done = true; });
    clock.start();
    capture.captureScrolling(region, true);
    const QDeadlineTimer limit(600000);
    bench::spinUntil([&] { return done || limit.hasExpired(); });
    const qint64 totalMs = clock.elapsed();
    if (!done || height <= 0 || sampledMs <= 0) {
        std::printf("the capture did not end with an image\n");
        return 1;
    }
    std::printf("xterm + less, %d lines, region %dx%d\n", lines, region.width(), region.height());
    std::printf("stitched height: %d px\n", height);
    std::printf("sampling: %lld ms, with saving: %lld ms\n", qlonglong(sampledMs.load()),
                qlonglong(totalMs));
    std::printf("throughput: %.0f page px/s\n", height * 1000.0 / sampledMs);
    return 0;
}
