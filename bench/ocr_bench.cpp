// Local text recognition: the engine's first load, then the median time for a 1920x1080
// screenshot full of text and for a 400x100 crop of it, with the peak memory.
//   build/bench/zelmor-bench-ocr [rounds] [languages, "eng+chi_sim" by default]

#include "BenchSupport.h"
#include "service/ocr/LocalOcrEngine.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QPainter>

#include <algorithm>
#include <cstdio>

using zelmor::bench::medianMs;
using zelmor::bench::peakResidentKiB;
using zelmor::service::ocr::LocalOcrEngine;

namespace {

// Rows of 14 px interface text in three columns, as a settings window or a log shows it.
QImage textScreen()
{
    QImage image(1920, 1080, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(14);
    painter.setFont(font);
    painter.setPen(QColor(0x20, 0x20, 0x20));
    int n = 0;
    for (int column = 0; column < 3; ++column)
        for (int y = 30; y < 1060; y += 24, ++n)
            painter.drawText(
                20 + column * 640, y,
                QStringLiteral("Item %1: save capture to folder, size 1.%2 MB").arg(n).arg(n % 10));
    return image;
}

} // namespace

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    const int rounds = argc > 1 ? std::max(1, atoi(argv[1])) : 3;
    QElapsedTimer load;
    load.start();
    LocalOcrEngine engine{argc > 2 ? QString::fromLocal8Bit(argv[2]) : QString()};
    if (!engine.loadError().isEmpty()) {
        std::printf("%s\n", qPrintable(engine.loadError()));
        return 1;
    }
    std::printf("engine load (%s): %.0f ms\n", qPrintable(engine.description()),
                load.nsecsElapsed() / 1e6);
    const QImage screen = textScreen();
    int chars = 0;
    const QImage cropped = screen.copy(0, 0, 400, 100);
    const double crop =
        medianMs(rounds, [&] { chars = int(engine.recognize(cropped).text.size()); });
    std::printf("400x100 crop: %.0f ms median of %d (%d characters)\n", crop, rounds, chars);
    const double full =
        medianMs(rounds, [&] { chars = int(engine.recognize(screen).text.size()); });
    std::printf("1920x1080 full of text: %.0f ms median of %d (%d characters)\n", full, rounds,
                chars);
    std::printf("peak resident memory: %lld MiB\n", qlonglong(peakResidentKiB() / 1024));
    return 0;
}
