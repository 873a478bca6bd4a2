#include "GifEncoder.h"

#include "core/Log.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

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
        // the file, the same with every standard library. Both halves of a cut stay sorted, so
        // a box cut again along the same channel needs no sort.
        const auto less = [channel](const ColorEntry& a, const ColorEntry& b) {
            const int ca = channelOf(a.rgb, channel), cb = channelOf(b.rgb, channel);
            return ca != cb ? ca < cb : a.rgb < b.rgb;
        };
        if (!std::is_sorted(box.colors.cbegin(), box.colors.cend(), less))
            std::sort(box.colors.begin(), box.colors.end(), less);
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

// The LZW dictionary: (prefix code << 8) + byte -> code. Open addressing over twice the
// 4096 codes, so a clear costs one small fill instead of freeing and regrowing a hash.
class LzwDictionary
{
public:
    LzwDictionary() { clear(); }

    void clear() { std::fill(std::begin(m_keys), std::end(m_keys), 0u); }

    // The code for key, or -1 with `slot` left where it belongs.
    int find(quint32 key, quint32& slot) const
    {
        slot = (key * 2654435761u) >> (32 - kBits);
        for (;; slot = (slot + 1) & (kSlots - 1)) {
            if (m_keys[slot] == key + 1) return m_codes[slot];
            if (m_keys[slot] == 0) return -1;
        }
    }
    void insert(quint32 slot, quint32 key, int code)
    {
        m_keys[slot] = key + 1;
        m_codes[slot] = quint16(code);
    }

private:
    static constexpr int kBits = 13, kSlots = 1 << kBits;
    quint32 m_keys[kSlots]; // key + 1; 0 is a free slot
    quint16 m_codes[kSlots];
};

// GIF image data: minimum code size 8, variable-width LZW codes packed from the lowest bit up,
// sub-blocks of at most 255 bytes, the terminator. Its buffers serve frame after frame.
class ImageDataWriter
{
public:
    void append(QByteArray& out, const uchar* data, qsizetype size)
    {
        out.append(char(8));
        if (size <= 0) return;
        encode(data, size);
        out.reserve(out.size() + m_used + m_used / 255 + 2);
        for (qsizetype offset = 0; offset < m_used; offset += 255) {
            const qsizetype length = std::min<qsizetype>(255, m_used - offset);
            out.append(char(length));
            out.append(m_codes.constData() + offset, length);
        }
        out.append(char(0));
    }

private:
    void encode(const uchar* data, qsizetype size)
    {
        constexpr int clearCode = 256, endCode = 257;
        m_codes.resize(std::max(m_codes.size(), size / 2 + 256));
        m_used = 0;
        m_acc = 0;
        m_bits = 0;
        m_dictionary->clear();
        int nextCode = 258, codeSize = 9;

        put(clearCode, codeSize);
        int current = data[0];
        for (qsizetype i = 1; i < size; ++i) {
            const int b = data[i];
            const quint32 key = (quint32(current) << 8) + quint32(b);
            quint32 slot = 0;
            const int found = m_dictionary->find(key, slot);
            if (found >= 0) {
                current = found;
                continue;
            }
            put(current, codeSize);
            if (nextCode < 4096) {
                m_dictionary->insert(slot, key, nextCode);
                if (nextCode == (1 << codeSize) && codeSize < 12) ++codeSize;
                ++nextCode;
            } else {
                // The table stays full until this miss, then one clear code restarts it.
                put(clearCode, codeSize);
                m_dictionary->clear();
                nextCode = 258;
                codeSize = 9;
            }
            current = b;
        }
        put(current, codeSize);
        put(endCode, codeSize);
        if (m_bits > 0) m_codes[m_used++] = char(m_acc & 0xFF);
    }

    void put(int code, int size)
    {
        m_acc |= quint32(code) << m_bits;
        m_bits += size;
        if (m_used + 4 > m_codes.size()) m_codes.resize(m_codes.size() * 2);
        char* out = m_codes.data() + m_used;
        while (m_bits >= 8) {
            *out++ = char(m_acc & 0xFF);
            m_acc >>= 8;
            m_bits -= 8;
        }
        m_used = out - m_codes.constData();
    }

    std::unique_ptr<LzwDictionary> m_dictionary = std::make_unique<LzwDictionary>();
    QByteArray m_codes;
    qsizetype m_used = 0;
    quint32 m_acc = 0;
    int m_bits = 0;
};

// The distinct colours of a frame with their pixel counts, in first-seen order: open
// addressing over opaque RGB32 values, which are never 0, so 0 marks a free slot.
class ColorTable
{
public:
    ColorTable() { rehash(1 << 14); }

    void reset()
    {
        colors.clear();
        counts.clear();
        std::fill(m_keys.begin(), m_keys.end(), 0u);
    }

    int indexOf(QRgb color) const
    {
        for (quint32 slot = hash(color);; slot = (slot + 1) & m_mask) {
            if (m_keys[slot] == color) return m_ids[slot];
            if (m_keys[slot] == 0) return -1;
        }
    }
    int add(QRgb color)
    {
        quint32 slot = hash(color);
        for (; m_keys[slot] != 0; slot = (slot + 1) & m_mask)
            if (m_keys[slot] == color) return m_ids[slot];
        const int id = int(colors.size());
        m_keys[slot] = color;
        m_ids[slot] = id;
        colors.push_back(color);
        counts.push_back(0);
        if (colors.size() * 2 > m_keys.size()) rehash(m_keys.size() * 2);
        return id;
    }

    std::vector<QRgb> colors;
    std::vector<qint32> counts;

private:
    quint32 hash(QRgb color) const { return (color * 2654435761u) >> m_shift; }
    void rehash(size_t slotCount)
    {
        m_keys.assign(slotCount, 0);
        m_ids.assign(slotCount, 0);
        m_mask = quint32(slotCount - 1);
        m_shift = 32;
        for (size_t n = slotCount; n > 1; n >>= 1)
            --m_shift;
        for (size_t id = 0; id < colors.size(); ++id) {
            quint32 slot = hash(colors[id]);
            while (m_keys[slot] != 0)
                slot = (slot + 1) & m_mask;
            m_keys[slot] = colors[id];
            m_ids[slot] = int(id);
        }
    }

    std::vector<QRgb> m_keys;
    std::vector<int> m_ids;
    quint32 m_mask = 0;
    int m_shift = 32;
};

// `rgb32` must be Format_RGB32. Colours are read with the alpha byte forced to opaque.
void countColors(const QImage& rgb32, ColorTable& table)
{
    const int width = rgb32.width(), height = rgb32.height();
    QRgb last = 0;
    int id = -1;
    for (int y = 0; y < height; ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(rgb32.constScanLine(y));
        for (int x = 0; x < width; ++x) {
            const QRgb c = line[x] | 0xFF000000u;
            if (c != last) {
                last = c;
                id = table.add(c);
            }
            ++table.counts[size_t(id)];
        }
    }
}

QList<QRgb> paletteFor(const ColorTable& table)
{
    QList<QRgb> palette;
    if (table.colors.size() <= 256) {
        palette = QList<QRgb>(table.colors.begin(), table.colors.end());
    } else {
        QList<ColorEntry> colors;
        colors.reserve(qsizetype(table.colors.size()));
        for (size_t i = 0; i < table.colors.size(); ++i)
            colors.append({table.colors[i] & 0xFFFFFFu, table.counts[i]});
        palette = medianCut(std::move(colors));
    }
    while (palette.size() < 256)
        palette.append(0xFF000000u);
    return palette;
}

// The palette index of every pixel, chosen as QImage::convertToFormat(Format_Indexed8,
// palette) chooses: the first entry at the least sum of channel differences.
void mapToPalette(const QImage& rgb32, const ColorTable& table, const QList<QRgb>& palette,
                  QByteArray& indices)
{
    std::vector<uchar> indexOfColor(table.colors.size());
    if (table.colors.size() <= 256) {
        // The palette starts with these very colours.
        for (size_t i = 0; i < indexOfColor.size(); ++i)
            indexOfColor[i] = uchar(i);
    } else {
        int r[256], g[256], b[256];
        for (int i = 0; i < 256; ++i)
            r[i] = qRed(palette[i]), g[i] = qGreen(palette[i]), b[i] = qBlue(palette[i]);
        for (size_t c = 0; c < indexOfColor.size(); ++c) {
            const int cr = qRed(table.colors[c]), cg = qGreen(table.colors[c]),
                      cb = qBlue(table.colors[c]);
            int best = 0, bestDistance = INT_MAX;
            for (int i = 0; i < 256 && bestDistance > 0; ++i) {
                const int d = std::abs(cr - r[i]) + std::abs(cg - g[i]) + std::abs(cb - b[i]);
                if (d < bestDistance) best = i, bestDistance = d;
            }
            indexOfColor[c] = uchar(best);
        }
    }

    const int width = rgb32.width(), height = rgb32.height();
    indices.resize(qsizetype(width) * height);
    auto* out = reinterpret_cast<uchar*>(indices.data());
    QRgb last = 0;
    uchar index = 0;
    for (int y = 0; y < height; ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(rgb32.constScanLine(y));
        for (int x = 0; x < width; ++x) {
            const QRgb c = line[x] | 0xFF000000u;
            if (c != last) {
                last = c;
                index = indexOfColor[size_t(table.indexOf(c))];
            }
            *out++ = index;
        }
    }
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
    // Without a suffix a folder named gifski, say a source checkout, could pass for the program:
    // only executable files count.
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
    // Working memory kept from one frame to the next.
    ColorTable table;
    ImageDataWriter imageData;
    QByteArray indices, block;
    for (const QImage& frame : frames) {
        const QImage image = fitFrame(frame, width, height);
        if (image.isNull()) { // out of memory
            error = QStringLiteral("write failed");
            return false;
        }
        table.reset();
        countColors(image, table);
        const QList<QRgb> palette = paletteFor(table);
        mapToPalette(image, table, palette, indices);

        block.resize(0);
        // Disposal 1 and no transparency: every frame is written whole.
        block.append("\x21\xF9\x04\x04", 4);
        appendLe16(block, delay);
        block.append("\x00\x00", 2);
        block.append("\x2C\x00\x00\x00\x00", 5);
        appendLe16(block, width);
        appendLe16(block, height);
        block.append(char(0x87));
        for (QRgb c : palette) {
            block.append(char(qRed(c)));
            block.append(char(qGreen(c)));
            block.append(char(qBlue(c)));
        }
        imageData.append(block, reinterpret_cast<const uchar*>(indices.constData()),
                         indices.size());
        file.write(block);
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
    ColorTable table;
    countColors(frame.convertToFormat(QImage::Format_RGB32), table);
    return paletteFor(table);
}

void writeLzw(QIODevice& out, const QImage& indexed)
{
    const QImage image = indexed.format() == QImage::Format_Indexed8
                             ? indexed
                             : indexed.convertToFormat(QImage::Format_Indexed8);
    const int width = std::max(0, image.width()), height = std::max(0, image.height());
    QByteArray pixels(qsizetype(width) * height, Qt::Uninitialized);
    for (int y = 0; y < height; ++y)
        std::memcpy(pixels.data() + qsizetype(y) * width, image.constScanLine(y), size_t(width));
    QByteArray data;
    ImageDataWriter().append(data, reinterpret_cast<const uchar*>(pixels.constData()),
                             pixels.size());
    out.write(data);
}

} // namespace zelmor::service::record
