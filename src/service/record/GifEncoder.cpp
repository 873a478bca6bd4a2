#include "GifEncoder.h"

#include "core/Log.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QProcess>
#include <QStandardPaths>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace zelmor::service::record {

namespace {

QString gifskiFileName()
{
#ifdef Q_OS_WIN
    return QStringLiteral("gifski.exe");
#else
    return QStringLiteral("gifski");
#endif
}

struct ColorEntry
{
    quint32 rgb = 0;
    qint32 count = 0;
};

struct ColorBox
{
    int rMin = 255, rMax = 0, gMin = 255, gMax = 0, bMin = 255, bMax = 0;
    qint64 pixels = 0;
    QList<ColorEntry> colors;
};

int channelOf(quint32 rgb, int channel)
{
    return int(rgb >> (16 - 8 * channel)) & 0xFF;
}

ColorBox makeBox(QList<ColorEntry> colors)
{
    ColorBox box;
    box.colors = std::move(colors);
    for (const ColorEntry& c : std::as_const(box.colors)) {
        const int r = qRed(c.rgb), g = qGreen(c.rgb), b = qBlue(c.rgb);
        box.rMin = std::min(box.rMin, r);
        box.rMax = std::max(box.rMax, r);
        box.gMin = std::min(box.gMin, g);
        box.gMax = std::max(box.gMax, g);
        box.bMin = std::min(box.bMin, b);
        box.bMax = std::max(box.bMax, b);
        box.pixels += c.count;
    }
    return box;
}

// 0 red, 1 green, 2 blue; ties go to the earlier channel.
int widestChannel(const ColorBox& box)
{
    const int r = box.rMax - box.rMin, g = box.gMax - box.gMin, b = box.bMax - box.bMin;
    if (r >= g && r >= b) return 0;
    return g >= b ? 1 : 2;
}

int widestRange(const ColorBox& box)
{
    return std::max({box.rMax - box.rMin, box.gMax - box.gMin, box.bMax - box.bMin});
}

QList<QRgb> medianCut(QList<ColorEntry> colors)
{
    QList<ColorBox> boxes;
    boxes.append(makeBox(std::move(colors)));
    while (boxes.size() < 256) {
        int pick = -1, pickRange = 0;
        for (int i = 0; i < boxes.size(); ++i) {
            if (boxes[i].colors.size() < 2) continue;
            const int range = widestRange(boxes[i]);
            if (pick < 0 || range > pickRange) {
                pick = i;
                pickRange = range;
            }
        }
        if (pick < 0 || pickRange == 0) break;

        ColorBox box = boxes.takeAt(pick);
        const int channel = widestChannel(box);
        // Colours are distinct, so ordering ties by the whole value makes the cut, and with it
        // the file, the same with every standard library.
        std::sort(box.colors.begin(), box.colors.end(),
                  [channel](const ColorEntry& a, const ColorEntry& b) {
                      const int ca = channelOf(a.rgb, channel), cb = channelOf(b.rgb, channel);
                      return ca != cb ? ca < cb : a.rgb < b.rgb;
                  });
        const qint64 half = box.pixels / 2;
        qsizetype cut = 1;
        qint64 sum = 0;
        for (qsizetype i = 0; i + 1 < box.colors.size(); ++i) {
            sum += box.colors[i].count;
            if (sum >= half) {
                cut = i + 1;
                break;
            }
        }
        boxes.append(makeBox(box.colors.mid(0, cut)));
        boxes.append(makeBox(box.colors.mid(cut)));
    }

    QList<QRgb> palette;
    palette.reserve(256);
    for (const ColorBox& box : std::as_const(boxes)) {
        if (box.colors.isEmpty()) continue;
        qint64 r = 0, g = 0, b = 0, n = 0;
        for (const ColorEntry& c : box.colors) {
            r += qint64(qRed(c.rgb)) * c.count;
            g += qint64(qGreen(c.rgb)) * c.count;
            b += qint64(qBlue(c.rgb)) * c.count;
            n += c.count;
        }
        palette.append(qRgb(int(r / n), int(g / n), int(b / n)));
    }
    return palette;
}

// The frame at exactly width x height in RGB32; a null frame becomes black so that the
// animation keeps its length.
QImage fitFrame(const QImage& frame, int width, int height)
{
    QImage image;
    if (frame.isNull()) {
        image = QImage(width, height, QImage::Format_RGB32);
        image.fill(Qt::black);
        return image;
    }
    image = frame.size() == QSize(width, height)
                ? frame
                : frame.scaled(width, height, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    image = image.convertToFormat(QImage::Format_RGB32);
    image.setDevicePixelRatio(1);
    return image;
}

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

void appendLe16(QByteArray& bytes, int value)
{
    bytes.append(char(value & 0xFF));
    bytes.append(char((value >> 8) & 0xFF));
}

const QByteArray& loopExtension()
{
    static const QByteArray bytes("\x21\xFF\x0B"
                                  "NETSCAPE2.0"
                                  "\x03\x01\x00\x00\x00",
                                  19);
    return bytes;
}

class BitWriter
{
public:
    explicit BitWriter(QByteArray& bytes) : m_bytes(bytes) {}

    void put(int code, int size)
    {
        m_acc |= quint32(code) << m_bits;
        m_bits += size;
        while (m_bits >= 8) {
            m_bytes.append(char(m_acc & 0xFF));
            m_acc >>= 8;
            m_bits -= 8;
        }
    }
    void finish()
    {
        if (m_bits > 0) m_bytes.append(char(m_acc & 0xFF));
        m_acc = 0;
        m_bits = 0;
    }

private:
    QByteArray& m_bytes;
    quint32 m_acc = 0;
    int m_bits = 0;
};

// GIF's variable-width LZW over 8-bit indices, codes packed from the lowest bit up.
QByteArray lzwCodes(const uchar* data, qsizetype size)
{
    constexpr int clearCode = 256, endCode = 257;
    QByteArray bytes;
    bytes.reserve(size / 2 + 256);
    BitWriter writer(bytes);
    QHash<quint32, quint16> dictionary;
    int nextCode = 258, codeSize = 9;

    writer.put(clearCode, codeSize);
    int current = data[0];
    for (qsizetype i = 1; i < size; ++i) {
        const int b = data[i];
        const quint32 key = (quint32(current) << 8) + quint32(b);
        const auto found = dictionary.constFind(key);
        if (found != dictionary.cend()) {
            current = *found;
            continue;
        }
        writer.put(current, codeSize);
        if (nextCode < 4096) {
            dictionary.insert(key, quint16(nextCode));
            if (nextCode == (1 << codeSize) && codeSize < 12) ++codeSize;
            ++nextCode;
        } else {
            // The table stays full until this miss, then one clear code restarts it.
            writer.put(clearCode, codeSize);
            dictionary.clear();
            nextCode = 258;
            codeSize = 9;
        }
        current = b;
    }
    writer.put(current, codeSize);
    writer.put(endCode, codeSize);
    writer.finish();
    return bytes;
}

void writeSubBlocks(QIODevice& out, const QByteArray& data)
{
    QByteArray blocks;
    blocks.reserve(data.size() + data.size() / 255 + 2);
    for (qsizetype offset = 0; offset < data.size(); offset += 255) {
        const qsizetype length = std::min<qsizetype>(255, data.size() - offset);
        blocks.append(char(length));
        blocks.append(data.constData() + offset, length);
    }
    blocks.append(char(0));
    out.write(blocks);
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

// Waits until the pipe has taken everything, so that at most one frame is ever buffered.
bool sendAll(QProcess& process, const QByteArray& data, int msecs)
{
    if (data.isEmpty() || process.write(data) != data.size()) return false;
    while (process.bytesToWrite() > 0)
        if (!process.waitForBytesWritten(msecs)) return false;
    return true;
}

} // namespace

bool encodeGif(QString& error, const QString& path, const QList<QImage>& frames, int intervalMs,
               int width, int height)
{
    if (frames.isEmpty()) {
        error = QStringLiteral("no frames");
        return false;
    }
    const int w = std::max(2, width & ~1);
    const int h = std::max(2, height & ~1);
    // Sizes travel as 16-bit fields in the file.
    if (w > 65535 || h > 65535) {
        error = QStringLiteral("invalid dimensions");
        return false;
    }
    if (encodeWithGifski(error, path, frames, intervalMs, w, h)) return true;
    return writeGifMedianCut(error, path, frames, intervalMs, w, h);
}

QString findGifski()
{
    const QString name = gifskiFileName();
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
    for (const QString& path : std::as_const(candidates))
        if (!path.isEmpty() && isProgram(path)) return QDir::cleanPath(path);
    return {};
}

bool encodeWithGifski(QString& error, const QString& path, const QList<QImage>& frames,
                      int intervalMs, int width, int height)
{
    const QString gifski = findGifski();
    if (gifski.isEmpty()) {
        core::writeLogLine(
            QStringLiteral(
                "[GifEncoder] %1 not found, using per-frame median-cut LCT fallback encoder.")
                .arg(gifskiFileName()));
        return false;
    }
    core::writeLogLine(QStringLiteral("[GifEncoder] Using gifski executable: ") + gifski);

    const auto fail = [&error](const QString& reason) {
        error = reason;
        core::writeLogLine(QStringLiteral("[GifEncoder] ") + reason);
        return false;
    };

    const int interval = std::clamp(intervalMs, 1, 65535);
    const int fps = std::clamp(int(std::lround(1000.0 / interval)), 1, 60);
    const QStringList arguments{
        QStringLiteral("--fps"),   QString::number(fps),  QStringLiteral("-W"),
        QString::number(width),    QStringLiteral("-H"),  QString::number(height),
        QStringLiteral("-Q"),      QStringLiteral("100"), QStringLiteral("--no-sort"),
        QStringLiteral("--quiet"), QStringLiteral("-o"),  path,
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
    for (const QImage& frame : frames) {
        if (!sendAll(process, y4mFrame(frame, width, height), 30000)) {
            stop(process);
            return fail(QStringLiteral("gifski Y4M frame write failed"));
        }
    }
    process.closeWriteChannel();
    // A process that ended during the writes is already finished, and waiting would say no.
    if (process.state() != QProcess::NotRunning && !process.waitForFinished(300000)) {
        stop(process);
        return fail(QStringLiteral("gifski timed out"));
    }
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        return fail(QStringLiteral("gifski exit %1").arg(process.exitCode()));
    const QFileInfo output(path);
    if (!output.exists() || output.size() == 0)
        return fail(QStringLiteral("gifski produced no output"));
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

bool writeGifMedianCut(QString& error, const QString& path, const QList<QImage>& frames,
                       int intervalMs, int width, int height)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        error = QStringLiteral("cannot open output: %1").arg(path);
        return false;
    }

    QByteArray head("GIF89a");
    appendLe16(head, width);
    appendLe16(head, height);
    // A global table is announced and left black: every frame brings its own.
    head.append("\xF7\x00\x00", 3);
    head.append(768, '\0');
    head.append(loopExtension());
    file.write(head);

    const int delay = std::clamp(intervalMs / 10, 1, 65535);
    for (const QImage& frame : frames) {
        const QImage image = fitFrame(frame, width, height);
        if (image.isNull()) break;
        const QList<QRgb> palette = buildPalette(image);
        const QImage indexed =
            image.convertToFormat(QImage::Format_Indexed8, palette, Qt::AutoColor);

        QByteArray block;
        block.reserve(8 + 10 + 768);
        // Disposal 1 and no transparency: every frame is written whole.
        block.append("\x21\xF9\x04\x04", 4);
        appendLe16(block, delay);
        block.append("\x00\x00", 2);
        block.append("\x2C\x00\x00\x00\x00", 5);
        appendLe16(block, width);
        appendLe16(block, height);
        block.append(char(0x87));
        for (int i = 0; i < 256; ++i) {
            const QRgb c = i < palette.size() ? palette[i] : 0;
            block.append(char(qRed(c)));
            block.append(char(qGreen(c)));
            block.append(char(qBlue(c)));
        }
        file.write(block);
        writeLzw(file, indexed);
    }
    file.write("\x3B", 1);
    file.flush();
    if (file.error() != QFileDevice::NoError) {
        error = QStringLiteral("write failed");
        return false;
    }
    return true;
}

QList<QRgb> buildPalette(const QImage& frame)
{
    const QImage image = frame.convertToFormat(QImage::Format_RGB32);
    QHash<QRgb, qint32> counts;
    counts.reserve(8192);
    // First-seen order rather than the hash's, whose seed changes from run to run: the same
    // frames then give the same file.
    QList<QRgb> order;
    for (int y = 0; y < image.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const QRgb c = line[x] | 0xFF000000u;
            auto it = counts.find(c);
            if (it == counts.end()) {
                counts.insert(c, 1);
                order.append(c);
            } else {
                ++*it;
            }
        }
    }

    QList<QRgb> palette;
    if (order.size() <= 256) {
        palette = order;
    } else {
        QList<ColorEntry> colors;
        colors.reserve(order.size());
        for (QRgb c : std::as_const(order))
            colors.append({c & 0xFFFFFFu, counts.value(c)});
        palette = medianCut(std::move(colors));
    }
    while (palette.size() < 256)
        palette.append(0xFF000000u);
    return palette;
}

void writeLzw(QIODevice& out, const QImage& indexed)
{
    out.putChar(char(8));
    const QImage image = indexed.format() == QImage::Format_Indexed8
                             ? indexed
                             : indexed.convertToFormat(QImage::Format_Indexed8);
    const int width = image.width(), height = image.height();
    if (width <= 0 || height <= 0) return;
    QByteArray pixels(qsizetype(width) * height, Qt::Uninitialized);
    for (int y = 0; y < height; ++y)
        std::memcpy(pixels.data() + qsizetype(y) * width, image.constScanLine(y), size_t(width));
    writeSubBlocks(out,
                   lzwCodes(reinterpret_cast<const uchar*>(pixels.constData()), pixels.size()));
}

} // namespace zelmor::service::record
