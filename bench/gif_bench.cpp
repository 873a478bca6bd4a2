// The own GIF encoder against ffmpeg's on the same screen-like frames: time, bytes and mean
// PSNR of what a GIF reader gets back; the own encoder both on one thread over the images and
// on every core from the compressed store that a recording fills. Past 300 frames ffmpeg and
// the PSNR are left out.
//   scripts/x-session.sh build/bench/zelmor-bench-gif [frames] [folder to keep the files in]

#include "service/record/GifEncoder.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImageReader>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>

#include <cmath>
#include <cstdio>

using namespace zelmor::service::record;

namespace {

constexpr int kWidth = 800, kHeight = 600, kIntervalMs = 100;
constexpr int kCompared = 300;

QByteArray fileBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QList<int> allRows(int count)
{
    QList<int> rows;
    for (int row = 0; row < count; ++row)
        rows << row;
    return rows;
}

// A recording of someone typing into an editor: title bar gradient, flat side bar, lines of
// antialiased text that grow frame by frame, and a cursor moving across.
QList<QImage> makeFrames(int count)
{
    const QString text = QStringLiteral(
        "The quick brown fox jumps over the lazy dog while the recorder keeps every frame.");
    QList<QImage> frames;
    for (int f = 0; f < count; ++f) {
        QImage image(kWidth, kHeight, QImage::Format_RGB32);
        QPainter p(&image);
        p.setRenderHint(QPainter::Antialiasing);
        p.fillRect(image.rect(), QColor(250, 250, 250));
        QLinearGradient title(0, 0, kWidth, 0);
        title.setColorAt(0, QColor(30, 80, 160));
        title.setColorAt(1, QColor(120, 40, 140));
        p.fillRect(0, 0, kWidth, 36, title);
        p.fillRect(0, 36, 180, kHeight - 36, QColor(236, 238, 242));
        p.fillRect(24, 80 + 28 * (f % 12), 132, 22, QColor(230, 126, 34));
        p.setPen(Qt::white);
        p.setFont(QFont(QStringLiteral("DejaVu Sans"), 12, QFont::Bold));
        p.drawText(12, 24, QStringLiteral("notes.txt - Editor"));
        p.setFont(QFont(QStringLiteral("DejaVu Sans"), 11));
        p.setPen(QColor(40, 40, 48));
        for (int line = 0; line < 16; ++line) {
            const int shown = std::clamp(f * 6 - line * 20, 0, int(text.size()));
            p.drawText(200, 70 + 30 * line, text.left(shown));
        }
        QPainterPath cursor;
        const QPointF at(100 + 10.0 * f, 500 - 6.0 * f);
        cursor.moveTo(at);
        cursor.lineTo(at + QPointF(0, 18));
        cursor.lineTo(at + QPointF(5, 14));
        cursor.lineTo(at + QPointF(12, 13));
        cursor.closeSubpath();
        p.setPen(QPen(Qt::white, 1.5));
        p.setBrush(Qt::black);
        p.drawPath(cursor);
        p.end();
        frames << image;
    }
    return frames;
}

double psnr(const QImage& a, const QImage& b)
{
    if (a.size() != b.size()) return 0;
    const QImage x = a.convertToFormat(QImage::Format_RGB32);
    const QImage y = b.convertToFormat(QImage::Format_RGB32);
    double sum = 0;
    for (int row = 0; row < x.height(); ++row) {
        const auto* p = reinterpret_cast<const QRgb*>(x.constScanLine(row));
        const auto* q = reinterpret_cast<const QRgb*>(y.constScanLine(row));
        for (int col = 0; col < x.width(); ++col) {
            const int dr = qRed(p[col]) - qRed(q[col]), dg = qGreen(p[col]) - qGreen(q[col]),
                      db = qBlue(p[col]) - qBlue(q[col]);
            sum += dr * dr + dg * dg + db * db;
        }
    }
    const double mse = sum / (3.0 * x.width() * x.height());
    return mse == 0 ? 99.0 : 10 * std::log10(255.0 * 255.0 / mse);
}

// Mean PSNR of the frames a reader decodes, against the source; 0 on a frame count mismatch.
double meanPsnr(const QString& path, const QList<QImage>& source)
{
    QImageReader reader(path, "gif");
    double total = 0;
    int n = 0;
    for (QImage image = reader.read(); !image.isNull() && n < source.size(); image = reader.read())
        total += psnr(image, source[n++]);
    return n == source.size() ? total / n : 0;
}

struct Result
{
    const char* name;
    double ms = -1;
    qint64 bytes = 0;
    double psnr = 0;
};

Result runFfmpeg(const char* name, const QString& ffmpeg, const QString& raw, int frames,
                 const QString& filter, const QString& out)
{
    Result r{name};
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QElapsedTimer timer;
    timer.start();
    process.start(ffmpeg,
                  {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-y"),
                   QStringLiteral("-f"), QStringLiteral("rawvideo"), QStringLiteral("-pix_fmt"),
                   QStringLiteral("bgra"), QStringLiteral("-s"),
                   QStringLiteral("%1x%2").arg(kWidth).arg(kHeight), QStringLiteral("-framerate"),
                   QString::number(1000 / kIntervalMs), QStringLiteral("-i"), raw,
                   QStringLiteral("-frames:v"), QString::number(frames),
                   QStringLiteral("-filter_complex"), filter, out});
    if (!process.waitForFinished(600000) || process.exitCode() != 0) return r;
    r.ms = timer.nsecsElapsed() / 1e6;
    r.bytes = QFileInfo(out).size();
    return r;
}

} // namespace

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    const int count = argc > 1 ? std::max(1, atoi(argv[1])) : 60;
    QTemporaryDir temporary;
    const QDir dir(argc > 2 ? QString::fromLocal8Bit(argv[2]) : temporary.path());
    const QList<QImage> frames = makeFrames(count);
    if (argc > 2) frames.first().save(dir.filePath(QStringLiteral("first.png")));
    std::printf("%d frames of %dx%d, %d ms apart\n\n", count, kWidth, kHeight, kIntervalMs);

    QList<Result> results;
    {
        Result r{"own median cut"};
        const QString out = dir.filePath(QStringLiteral("own.gif"));
        QString error;
        QElapsedTimer timer;
        timer.start();
        if (writeGifMedianCut(error, out, frames, kIntervalMs, kWidth, kHeight)) {
            r.ms = timer.nsecsElapsed() / 1e6;
            r.bytes = QFileInfo(out).size();
            if (count <= kCompared) r.psnr = meanPsnr(out, frames);
        }
        results << r;
    }
    {
        QElapsedTimer timer;
        timer.start();
        const FrameSequence sequence{FrameStore::fromImages(frames), allRows(count)};
        std::printf("compressed store of the frames: %.1f MiB, filled in %.1f s\n",
                    sequence.store->storedBytes() / 1048576.0, timer.nsecsElapsed() / 1e9);
        Result r{"own, from the store"};
        const QString out = dir.filePath(QStringLiteral("parallel.gif"));
        QString error;
        timer.restart();
        if (writeGifParallel(error, out, sequence, kIntervalMs, kWidth, kHeight)) {
            r.ms = timer.nsecsElapsed() / 1e6;
            r.bytes = QFileInfo(out).size();
            r.psnr = results.first().psnr;
        }
        std::printf("own encoder from the store on %d threads: %s\n", QThread::idealThreadCount(),
                    fileBytes(out) == fileBytes(dir.filePath(QStringLiteral("own.gif")))
                        ? "the same bytes as on one thread"
                        : "DIFFERENT bytes from one thread");
        results << r;
    }

    const QString ffmpeg = QStandardPaths::findExecutable(QStringLiteral("ffmpeg"));
    if (count > kCompared) {
        std::printf("more than %d frames: no comparison with ffmpeg\n", kCompared);
    } else if (ffmpeg.isEmpty()) {
        std::printf("ffmpeg not found: no comparison\n");
    } else {
        const QString raw = dir.filePath(QStringLiteral("frames.bgra"));
        QFile file(raw);
        if (file.open(QIODevice::WriteOnly))
            for (const QImage& f : frames)
                file.write(reinterpret_cast<const char*>(f.constBits()), f.sizeInBytes());
        file.close();
        const struct
        {
            const char* name;
            const char* filter;
        } variants[] = {
            {"ffmpeg one palette", "[0:v]palettegen[p];[0:v][p]paletteuse"},
            {"ffmpeg per-frame palettes",
             "[0:v]palettegen=stats_mode=single[p];[0:v][p]paletteuse=new=1"},
        };
        for (const auto& v : variants) {
            const QString out =
                dir.filePath(QString::fromLatin1(v.name).replace(' ', '_') + ".gif");
            Result r = runFfmpeg(v.name, ffmpeg, raw, count, QString::fromLatin1(v.filter), out);
            if (r.ms >= 0) r.psnr = meanPsnr(out, frames);
            results << r;
        }
    }

    const Result& own = results.first();
    std::printf("%-28s %10s %12s %10s %9s %9s %9s\n", "encoder", "ms", "bytes", "PSNR dB",
                "time/own", "bytes/own", "dB-own");
    for (const Result& r : std::as_const(results)) {
        if (r.ms < 0) {
            std::printf("%-28s failed\n", r.name);
            continue;
        }
        std::printf("%-28s %10.1f %12lld %10.2f %9.2f %9.2f %+9.2f\n", r.name, r.ms,
                    static_cast<long long>(r.bytes), r.psnr, r.ms / own.ms,
                    double(r.bytes) / double(own.bytes), r.psnr - own.psnr);
    }
    return 0;
}
