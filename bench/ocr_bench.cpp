// Local text recognition: the character error rate on each screenshot of the corpus, beside
// the `tesseract` command's on the same file; then the engine's first load, the median time
// for a 1920x1080 screenshot full of 14 px text and for a 400x100 crop of it, and the peak
// memory.
//   build/bench/zelmor-bench-ocr [rounds] [languages, "eng+chi_sim" by default]
// ZELMOR_BENCH_ONLY=NAME reads that image alone and prints what was read.

#include "BenchSupport.h"
#include "OcrCorpus.h"
#include "service/ocr/LocalOcrEngine.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QPainter>
#include <QProcess>

#include <algorithm>
#include <cstdio>

using zelmor::bench::medianMs;
using zelmor::bench::peakResidentKiB;
using zelmor::service::ocr::LocalOcrEngine;
namespace corpus = zelmor::testing;

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

// What the command line reads with its default page segmentation; empty when it is missing.
QString commandLineText(const QString& path, const QString& languages)
{
    QProcess process;
    process.start(QStringLiteral("tesseract"), {path, QStringLiteral("-"), QStringLiteral("-l"),
                                                LocalOcrEngine::languageList(languages)});
    if (!process.waitForFinished(60000)) return QString();
    return QString::fromUtf8(process.readAllStandardOutput());
}

void printCorpusTable(LocalOcrEngine& engine, const QString& languages)
{
    std::printf("%-22s %9s %9s %8s\n", "image", "zelmor", "command", "ms");
    double worst = 0;
    const QString only = qEnvironmentVariable("ZELMOR_BENCH_ONLY");
    for (const QString& name : corpus::ocrCorpusNames()) {
        if (!only.isEmpty() && name != only) continue;
        const QString path = corpus::ocrCorpusDir() + QLatin1Char('/') + name + ".png";
        const QString truth = corpus::ocrCorpusText(name);
        QString read;
        QElapsedTimer timer;
        timer.start();
        read = engine.recognize(QImage(path)).text;
        const double ms = timer.nsecsElapsed() / 1e6;
        const double ours = corpus::characterErrorRate(truth, read);
        const double theirs = corpus::characterErrorRate(truth, commandLineText(path, languages));
        worst = std::max(worst, ours);
        std::printf("%-22s %8.1f%% %8.1f%% %8.0f\n", qPrintable(name), ours * 100, theirs * 100,
                    ms);
        if (!only.isEmpty()) std::printf("%s\n", qPrintable(read));
    }
    std::printf("worst zelmor error rate: %.1f%%\n", worst * 100);
}

} // namespace

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    const int rounds = argc > 1 ? std::max(1, atoi(argv[1])) : 3;
    const QString languages = argc > 2 ? QString::fromLocal8Bit(argv[2]) : QString();
    QElapsedTimer load;
    load.start();
    LocalOcrEngine engine{languages};
    if (!engine.loadError().isEmpty()) {
        std::printf("%s\n", qPrintable(engine.loadError()));
        return 1;
    }
    std::printf("engine load (%s): %.0f ms\n", qPrintable(engine.description()),
                load.nsecsElapsed() / 1e6);
    printCorpusTable(engine, languages);
    if (qEnvironmentVariableIsSet("ZELMOR_BENCH_ONLY")) return 0;
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
