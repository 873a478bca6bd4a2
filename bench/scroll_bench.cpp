// Scroll stitching of a 1920x1080 region: the median and slowest addFrame on frames grabbed
// from a real program filling the screen (xterm showing the GPL in less, turned by the wheel
// and by Page Down), and on the GPL set as a numbered listing for steps of one row, three
// lines, half a region and 90 % of it; then the tallest image stitched before the memory
// bound (40 % of the available memory, or the MiB given) stops the run.
//   scripts/x-session.sh build/bench/zelmor-bench-scroll [bound in MiB]

#include "BenchSupport.h"
#include "RealProgram.h"
#include "platform/Input.h"
#include "platform/Memory.h"
#include "service/capture/ScreenGrabber.h"
#include "service/capture/ScrollStitcher.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QFile>
#include <QPainter>

#include <algorithm>
#include <cstdio>
#include <vector>

using zelmor::service::capture::ScrollStitcher;

namespace {

const QSize kRegion(1920, 1080);
constexpr int kLinePitch = 19;

const QStringList& licence()
{
    static const QStringList lines = [] {
        QFile file("/usr/share/common-licenses/GPL-3");
        file.open(QIODevice::ReadOnly);
        return QString::fromUtf8(file.readAll()).split('\n');
    }();
    return lines;
}

// The region when the listing's row `top` is at its top: numbered lines, so that no two are
// alike however far it goes.
QImage textFrame(qint64 top)
{
    QImage image(kRegion, QImage::Format_ARGB32_Premultiplied);
    image.fill(QColor(252, 252, 250));
    QPainter p(&image);
    p.setFont(QFont("DejaVu Sans Mono", 11));
    for (qint64 line = top / kLinePitch; line * kLinePitch < top + kRegion.height(); ++line) {
        const int baseline = int(line * kLinePitch - top) + 14;
        p.setPen(QColor(140, 140, 150));
        p.drawText(8, baseline, QString::number(line + 1));
        p.setPen(QColor(30, 30, 30));
        p.drawText(80, baseline, licence().value(int(line % licence().size())));
    }
    return image;
}

void addFrameTimes(const char* what, const std::vector<QImage>& frames)
{
    ScrollStitcher stitcher(6);
    std::vector<double> ms;
    int appended = 0;
    for (const QImage& frame : frames) {
        QElapsedTimer clock;
        clock.start();
        stitcher.addFrame(frame);
        ms.push_back(clock.nsecsElapsed() / 1e6);
        appended += stitcher.lastStep() == ScrollStitcher::Step::Appended;
    }
    std::sort(ms.begin(), ms.end());
    std::printf("addFrame %dx%d, %s, %zu frames: median %.2f ms, slowest %.2f ms; %d appended, "
                "stitched %d px\n",
                frames.front().width(), frames.front().height(), what, frames.size(),
                ms[ms.size() / 2], ms.back(), appended, stitcher.canvasHeight());
}

void renderedFrames(int step)
{
    std::vector<QImage> frames;
    for (int i = 0; i < 40; ++i)
        frames.push_back(textFrame(qint64(i) * step));
    addFrameTimes(qPrintable(QString("listing, step %1 px").arg(step)), frames);
}

// Each step's frame once the terminal has repainted.
void grabbedFrames(const QRect& region, int steps, const std::function<void()>& step)
{
    using namespace zelmor;
    std::vector<QImage> frames;
    for (int i = 0; i < steps; ++i) {
        frames.push_back(service::capture::grabRegion(region).toImage().convertToFormat(
            QImage::Format_ARGB32_Premultiplied));
        step();
        bench::spinUntil([deadline = QDeadlineTimer(150)] { return deadline.hasExpired(); });
    }
    addFrameTimes(steps > 20 ? "xterm + less, wheel" : "xterm + less, Page Down", frames);
}

void realFrames()
{
    using namespace zelmor;
    const QString title = QStringLiteral("zelmor stitch bench");
    test::RealProgram pager(QStringLiteral("xterm"),
                            QStringList{"-fullscreen"} +
                                test::pagerArguments(title, "/usr/share/common-licenses/GPL-3"),
                            title);
    const QRect region = pager.client.intersected(QRect(QPoint(), kRegion));
    if (region.height() < 100) {
        std::printf("xterm showed no window: no real frames\n");
        return;
    }
    bench::spinUntil([deadline = QDeadlineTimer(500)] { return deadline.hasExpired(); });
    platform::setCursorPosition({region.center().x(), region.center().y()});
    grabbedFrames(region, 40, [] { platform::sendMouseWheel(-120); });
    grabbedFrames(region, 12, [] { test::RealProgram::output("xdotool", {"key", "Next"}); });
}

void tallestBeforeTheBound(qint64 boundBytes)
{
    ScrollStitcher stitcher(6, nullptr, boundBytes);
    QElapsedTimer clock;
    clock.start();
    int frames = 0;
    while (stitcher.addFrame(textFrame(qint64(frames) * 950)) != ScrollStitcher::Stop)
        ++frames;
    const qint64 bytes = qint64(stitcher.canvasHeight()) * kRegion.width() * 4;
    std::printf("bound %lld MiB: stopped after %d frames in %.1f s at %d px, canvas %lld MiB "
                "(%s)\n",
                boundBytes >> 20, frames + 1, clock.elapsed() / 1000.0, stitcher.canvasHeight(),
                bytes >> 20, stitcher.memoryLimitReached() ? "memory bound" : "still frames");
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const qint64 available = qint64(zelmor::platform::availableMemoryBytes());
    const qint64 bound = argc > 1 ? std::max(1LL, atoll(argv[1])) << 20 : available / 5 * 2;
    std::printf("available memory %lld MiB\n", available >> 20);
    realFrames();
    for (int step : {1, 3 * kLinePitch, kRegion.height() / 2, kRegion.height() * 9 / 10})
        renderedFrames(step);
    tallestBeforeTheBound(bound);
    return 0;
}
