// The preferred encoder: frames streamed to a gifski process as YUV4MPEG2.

#include "GifEncoder.h"

#include "core/Log.h"
#include "core/Utilities.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QSaveFile>
#include <QStandardPaths>
#include <QTemporaryFile>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace zelmor::service::record {

namespace {

// Floor division by 256, as an arithmetic shift does; written out because shifting a
// negative int right is implementation-defined before C++20.
constexpr int shiftDown8(int v)
{
    return v >= 0 ? v >> 8 : -((-v + 255) >> 8);
}

uchar clampByte(int v)
{
    return uchar(std::clamp(v, 0, 255));
}

bool isProgram(const QString& path)
{
    const QFileInfo info(path);
    return info.isFile() && info.isExecutable();
}

// Killed and reaped here, so that the QProcess never dies with a live child.
void stop(QProcess& process)
{
    process.kill();
    process.waitForFinished(5000);
}

bool cancelled(const std::atomic_bool* cancel)
{
    return cancel && cancel->load();
}

// Waits for the end of the process, looking at `cancel` in between.
bool waitForEnd(QProcess& process, int msecs, const std::atomic_bool* cancel)
{
    QElapsedTimer clock;
    clock.start();
    while (process.state() != QProcess::NotRunning) {
        if (cancelled(cancel) || clock.elapsed() > msecs) return false;
        process.waitForFinished(200);
    }
    return true;
}

// Copies what gifski wrote to `path` through a file of its own, so that the old file is
// replaced only by a complete one.
bool replaceWith(const QString& produced, const QString& path)
{
    QFile in(produced);
    QSaveFile out(path);
    if (!in.open(QIODevice::ReadOnly) || !out.open(QIODevice::WriteOnly)) return false;
    while (!in.atEnd())
        if (out.write(in.read(1 << 20)) < 0) return false;
    return in.error() == QFileDevice::NoError && out.commit();
}

// Waits until the pipe has taken everything, so that at most one frame is ever buffered.
bool sendAll(QProcess& process, const QByteArray& data, int msecs)
{
    if (data.isEmpty() || process.write(data) != data.size()) return false;
    while (process.bytesToWrite() > 0)
        if (!process.waitForBytesWritten(msecs)) return false;
    return true;
}

} // namespace

QString findGifski()
{
    const QString name = core::executableFileName(QStringLiteral("gifski"));
    QStringList candidates;
    if (QCoreApplication::instance()) {
        const QString d = QCoreApplication::applicationDirPath();
        candidates << d + QLatin1Char('/') + name
                   << d + QStringLiteral("/third_party/gifski/bin/") + name
                   << d + QStringLiteral("/../third_party/gifski/bin/") + name
                   << d + QStringLiteral("/../") + name;
    }
    const QString c = QDir::currentPath();
    candidates << c + QLatin1Char('/') + name
               << c + QStringLiteral("/third_party/gifski/bin/") + name
               << c + QStringLiteral("/build/") + name
               << QStandardPaths::findExecutable(QStringLiteral("gifski"));
    // Without a suffix a folder named gifski, say a source checkout, could pass for the program:
    // only executable files count.
    for (const QString& path : std::as_const(candidates))
        if (!path.isEmpty() && isProgram(path)) return QDir::cleanPath(path);
    return {};
}

bool encodeWithGifski(QString& error, const QString& path, const FrameSequence& frames,
                      int intervalMs, int width, int height, const std::atomic_bool* cancel,
                      const ExportProgress& progress)
{
    const QString gifski = findGifski();
    if (gifski.isEmpty()) {
        core::writeLogLine(
            QStringLiteral(
                "[GifEncoder] %1 not found, using per-frame median-cut LCT fallback encoder.")
                .arg(core::executableFileName(QStringLiteral("gifski"))));
        return false;
    }
    core::writeLogLine(QStringLiteral("[GifEncoder] Using gifski executable: ") + gifski);

    const auto fail = [&error](const QString& reason) {
        error = reason;
        core::writeLogLine(QStringLiteral("[GifEncoder] ") + reason);
        return false;
    };

    // gifski writes the file itself: into a temporary one beside the target.
    QTemporaryFile output(QFileInfo(path).absolutePath() + QStringLiteral("/.gifski-XXXXXX.gif"));
    if (!output.open()) return fail(QStringLiteral("gifski output not writable"));
    output.close();

    const int interval = std::clamp(intervalMs, 1, 65535);
    const int fps = std::clamp(int(std::lround(1000.0 / interval)), 1, 60);
    const QStringList arguments{
        QStringLiteral("--fps"),   QString::number(fps),  QStringLiteral("-W"),
        QString::number(width),    QStringLiteral("-H"),  QString::number(height),
        QStringLiteral("-Q"),      QStringLiteral("100"), QStringLiteral("--no-sort"),
        QStringLiteral("--quiet"), QStringLiteral("-o"),  output.fileName(),
        QStringLiteral("-")};

    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(gifski, arguments, QIODevice::ReadWrite);
    if (!process.waitForStarted(10000)) return fail(QStringLiteral("gifski start failed"));

    // The rate 1000/intervalMs makes one frame last exactly the interval.
    const QByteArray header = QStringLiteral("YUV4MPEG2 W%1 H%2 F1000:%3 Ip A0:0 C420jpeg\n")
                                  .arg(width)
                                  .arg(height)
                                  .arg(std::max(1, intervalMs))
                                  .toLatin1();
    if (!sendAll(process, header, 10000)) {
        stop(process);
        return fail(QStringLiteral("gifski Y4M header write failed"));
    }
    FrameReader reader(frames.store);
    for (qsizetype i = 0; i < frames.rows.size(); ++i) {
        if (cancelled(cancel)) {
            stop(process);
            return fail(QStringLiteral("cancelled"));
        }
        if (!sendAll(process, y4mFrame(reader.frame(frames.rows.at(i)), width, height), 30000)) {
            stop(process);
            return fail(QStringLiteral("gifski Y4M frame write failed"));
        }
        if (progress) progress(int(i + 1));
    }
    process.closeWriteChannel();
    if (!waitForEnd(process, 300000, cancel)) {
        stop(process);
        return fail(cancelled(cancel) ? QStringLiteral("cancelled")
                                      : QStringLiteral("gifski timed out"));
    }
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        return fail(QStringLiteral("gifski exit %1").arg(process.exitCode()));
    if (QFileInfo(output.fileName()).size() == 0)
        return fail(QStringLiteral("gifski produced no output"));
    if (!replaceWith(output.fileName(), path)) return fail(QStringLiteral("write failed"));
    return true;
}

QByteArray y4mFrame(const QImage& frame, int width, int height)
{
    if (width <= 0 || height <= 0) return {};
    const QImage image = fitFrame(frame, width, height);
    if (image.isNull()) return {};

    const qsizetype lumaSize = qsizetype(width) * height;
    const int chromaWidth = width / 2, chromaHeight = height / 2;
    const qsizetype chromaSize = qsizetype(chromaWidth) * chromaHeight;
    QByteArray buffer(6 + lumaSize + 2 * chromaSize, Qt::Uninitialized);
    std::memcpy(buffer.data(), "FRAME\n", 6);
    auto* yPlane = reinterpret_cast<uchar*>(buffer.data() + 6);
    uchar* cbPlane = yPlane + lumaSize;
    uchar* crPlane = cbPlane + chromaSize;

    for (int y = 0; y < height; ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        uchar* out = yPlane + qsizetype(y) * width;
        for (int x = 0; x < width; ++x) {
            const QRgb p = line[x];
            out[x] =
                uchar(std::min(255, (77 * qRed(p) + 150 * qGreen(p) + 29 * qBlue(p) + 128) >> 8));
        }
    }
    for (int by = 0; by < chromaHeight; ++by) {
        const auto* top = reinterpret_cast<const QRgb*>(image.constScanLine(2 * by));
        const auto* bottom = reinterpret_cast<const QRgb*>(image.constScanLine(2 * by + 1));
        const qsizetype row = qsizetype(by) * chromaWidth;
        for (int bx = 0; bx < chromaWidth; ++bx) {
            const QRgb a = top[2 * bx], b = top[2 * bx + 1], c = bottom[2 * bx],
                       d = bottom[2 * bx + 1];
            const int r = (qRed(a) + qRed(b) + qRed(c) + qRed(d)) / 4;
            const int g = (qGreen(a) + qGreen(b) + qGreen(c) + qGreen(d)) / 4;
            const int bl = (qBlue(a) + qBlue(b) + qBlue(c) + qBlue(d)) / 4;
            cbPlane[row + bx] = clampByte(shiftDown8(128 * bl - 85 * g - 43 * r + 128) + 128);
            crPlane[row + bx] = clampByte(shiftDown8(128 * r - 107 * g - 21 * bl + 128) + 128);
        }
    }
    return buffer;
}

} // namespace zelmor::service::record
