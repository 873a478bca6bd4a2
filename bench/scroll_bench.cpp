// Scroll stitching of a 1000x800 region over text-like content scrolled by about 740 px a step:
// the median time of one addFrame, and the tallest image stitched before the memory bound
// (40 % of the available memory, or the MiB given) stops the run.
//   scripts/x-session.sh build/bench/zelmor-bench-scroll [bound in MiB]

#include "platform/Memory.h"
#include "service/capture/ScrollStitcher.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QPainter>

#include <algorithm>
#include <cstdio>
#include <vector>

using zelmor::service::capture::ScrollStitcher;

namespace {

const QSize kRegion(1000, 800);
constexpr int kLinePitch = 20;

// A code listing with a line-number gutter, some blank lines and ragged right edges: every
// line differs, and a frame at any scroll position is the same picture cut at another place.
QImage textFrame(qint64 top)
{
    static const char* const words[] = {"return", "width",  "const", "frame", "auto",
                                        "=",      "+",      "if",    "(",     ");",
                                        "canvas", "offset", "rows",  "{",     "}"};
    QImage image(kRegion, QImage::Format_ARGB32_Premultiplied);
    image.fill(QColor(252, 252, 250));
    QPainter p(&image);
    p.fillRect(0, 0, 56, kRegion.height(), QColor(236, 236, 240));
    for (qint64 line = top / kLinePitch; line * kLinePitch < top + kRegion.height(); ++line) {
        const int baseline = int(line * kLinePitch - top) + 15;
        p.setPen(QColor(140, 140, 150));
        p.drawText(8, baseline, QString::number(line + 1));
        if (line % 9 == 4) continue;
        QString text(int(line * 7 % 5) * 4, QLatin1Char(' '));
        for (qint64 word = 0; word < 3 + line * 13 % 11; ++word)
            text += QLatin1String(words[(line * 31 + word * 17) % 15]) + QLatin1Char(' ');
        p.setPen(line % 5 == 0 ? QColor(30, 90, 170) : QColor(30, 30, 30));
        p.drawText(64, baseline, text);
    }
    return image;
}

// Steps of 735, 740 and 745 px: the strip always reappears within the rows searched.
qint64 stepAfter(qint64 frames)
{
    return 740 + (frames % 3 - 1) * 5;
}

void medianAddFrame(int frames)
{
    ScrollStitcher stitcher(32, 8, 6);
    std::vector<double> ms;
    int used = 0;
    qint64 top = 0;
    for (int i = 0; i < frames; ++i) {
        const QImage frame = textFrame(top);
        QElapsedTimer clock;
        clock.start();
        used += stitcher.addFrame(frame) == ScrollStitcher::Used;
        ms.push_back(clock.nsecsElapsed() / 1e6);
        top += stepAfter(i);
    }
    std::sort(ms.begin(), ms.end());
    std::printf("addFrame, %d frames of 1000x800: median %.3f ms, slowest %.3f ms; %d used, "
                "stitched %d px\n",
                frames, ms[ms.size() / 2], ms.back(), used, stitcher.canvasHeight());
}

void tallestBeforeTheBound(qint64 boundBytes)
{
    ScrollStitcher stitcher(32, 8, 6, nullptr, boundBytes);
    QElapsedTimer clock;
    clock.start();
    qint64 top = 0;
    int frames = 0;
    while (stitcher.addFrame(textFrame(top)) != ScrollStitcher::Stop)
        top += stepAfter(frames++);
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
    medianAddFrame(100);
    tallestBeforeTheBound(bound);
    return 0;
}
