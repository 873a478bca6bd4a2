#include "GifEncoder.h"

#include "ColorTable.h"
#include "GifPalette.h"
#include "LzwWriter.h"

#include <QSaveFile>

#include <algorithm>
#include <cstring>

namespace zelmor::service::record {

namespace {

bool cancelled(const std::atomic_bool* cancel)
{
    return cancel && cancel->load();
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

} // namespace

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

bool encodeGif(QString& error, const QString& path, const QList<QImage>& frames, int intervalMs,
               int width, int height, const std::atomic_bool* cancel)
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
    if (encodeWithGifski(error, path, frames, intervalMs, w, h, cancel)) return true;
    if (cancelled(cancel)) return false;
    return writeGifMedianCut(error, path, frames, intervalMs, w, h, cancel);
}

bool writeGifMedianCut(QString& error, const QString& path, const QList<QImage>& frames,
                       int intervalMs, int width, int height, const std::atomic_bool* cancel)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
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
        if (cancelled(cancel)) {
            error = QStringLiteral("cancelled");
            return false;
        }
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
    // Any failed write above makes the commit fail and drops the new file.
    if (!file.commit()) {
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
