#include "ScrollStitcher.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace zelmor::service::capture {

namespace {

constexpr QImage::Format kCanvasFormat = QImage::Format_ARGB32_Premultiplied;
constexpr int kBytesPerPixel = 4;
// One scroll step must move the picture by nearly the region's height: the strip is only
// looked for this far below the top of the new frame.
constexpr int kMaxOffset = 64;
constexpr int kMaxOffsetCap = 256;

bool is32Bit(const QImage& image)
{
    const QImage::Format format = image.format();
    return format == QImage::Format_RGB32 || format == QImage::Format_ARGB32 ||
           format == kCanvasFormat;
}

uchar luma(QRgb pixel)
{
    return uchar((54 * qRed(pixel) + 183 * qGreen(pixel) + 19 * qBlue(pixel)) >> 8);
}

// Luma of the top-left `width` x `rows` pixels, row after row; pixels are read as they are
// stored, so a premultiplied frame is compared by its premultiplied values.
std::vector<uchar> lumaOfTop(const QImage& image, int rows, int width)
{
    const QImage source =
        is32Bit(image) ? image : image.copy(0, 0, width, rows).convertToFormat(kCanvasFormat);
    std::vector<uchar> out(size_t(rows) * size_t(width));
    if (source.isNull()) return out;
    for (int y = 0; y < rows; ++y) {
        const auto* in = reinterpret_cast<const QRgb*>(source.constScanLine(y));
        uchar* row = out.data() + size_t(y) * size_t(width);
        for (int x = 0; x < width; ++x)
            row[x] = luma(in[x]);
    }
    return out;
}

// Blocks of a fixed length, so that the compiler turns them into vector instructions.
qint64 rowDifference(const uchar* a, const uchar* b, int width)
{
    constexpr int kBlock = 16;
    qint64 sum = 0;
    int x = 0;
    for (; x + kBlock <= width; x += kBlock) {
        unsigned block = 0;
        for (int k = 0; k < kBlock; ++k)
            block += unsigned(std::abs(int(a[x + k]) - int(b[x + k])));
        sum += block;
    }
    for (; x < width; ++x)
        sum += std::abs(int(a[x]) - int(b[x]));
    return sum;
}

} // namespace

ScrollStitcher::ScrollStitcher(int overlapPx, int sadThreshold, int idleLimit, QObject* parent,
                               qint64 maxCanvasBytes)
    : QObject(parent), m_overlapPx(overlapPx), m_sadThreshold(sadThreshold), m_idleLimit(idleLimit),
      m_maxCanvasBytes(std::max<qint64>(0, maxCanvasBytes))
{}

int ScrollStitcher::addFrame(const QImage& frame)
{
    if (frame.isNull()) return Rejected;
    if (m_canvas.isNull()) return start(frame);

    const int s = std::min(m_previousFrame.height(), m_overlapPx);
    const int w = std::min(m_previousFrame.width(), frame.width());
    const QImage strip =
        s > 0 ? m_previousFrame.copy(0, m_previousFrame.height() - s, w, s) : QImage();
    const Overlap overlap = findOverlap(frame, strip);
    if (!overlap.match) {
        m_previousFrame = frame;
        m_idleCount = 0;
        return Rejected;
    }
    if (overlap.offset == s || overlap.offset >= frame.height() - 1) return countStill(frame);

    const int newRows = frame.height() - (s + overlap.offset);
    if (newRows > 0 && !append(frame, overlap.offset + s, newRows)) {
        m_memoryLimitReached = true;
        return Stop;
    }
    m_previousFrame = frame;
    m_idleCount = 0;
    return Used;
}

QImage ScrollStitcher::canvas() const
{
    if (m_canvasHeight == m_canvas.height()) return m_canvas;
    return m_canvas.copy(0, 0, m_canvas.width(), m_canvasHeight);
}

int ScrollStitcher::canvasHeight() const
{
    return m_canvasHeight;
}

bool ScrollStitcher::memoryLimitReached() const
{
    return m_memoryLimitReached;
}

ScrollStitcher::Overlap ScrollStitcher::findOverlap(const QImage& frame, const QImage& strip) const
{
    const int w = std::min(frame.width(), strip.width());
    const int h = strip.height();
    if (w < 1 || h < 1) return {};
    const int m = std::min({kMaxOffsetCap, kMaxOffset, frame.height() - h});
    if (m < 0) return {};

    // The frame's luma is taken once, for the rows the search can reach; as m leaves room for
    // the strip below every offset, no row it compares lies beyond the frame.
    const int frameRows = m + h;
    const std::vector<uchar> frameLuma = lumaOfTop(frame, frameRows, w);
    const std::vector<uchar> stripLuma = lumaOfTop(strip, h, w);

    qint64 best = INT_MAX;
    int bestOffset = h;
    for (int y = 0; y <= m; ++y) {
        qint64 sum = 0;
        for (int r = 0; r < h; ++r) {
            sum += rowDifference(frameLuma.data() + size_t(y + r) * size_t(w),
                                 stripLuma.data() + size_t(r) * size_t(w), w);
            if (sum > best) break;
        }
        if (sum < best) {
            best = sum;
            bestOffset = y;
        }
    }

    Overlap overlap;
    overlap.offset = bestOffset;
    overlap.score = double(best) / (double(h) * double(w));
    overlap.match = double(m_sadThreshold) >= overlap.score;
    return overlap;
}

int ScrollStitcher::start(const QImage& frame)
{
    if (exceedsBound(qint64(frame.width()) * kBytesPerPixel * frame.height()))
        return stopForMemory();
    QImage canvas = frame.convertToFormat(kCanvasFormat);
    if (canvas.isNull()) return stopForMemory();
    m_canvas = canvas;
    m_canvasHeight = canvas.height();
    m_previousFrame = frame;
    m_idleCount = 0;
    return Used;
}

int ScrollStitcher::countStill(const QImage& frame)
{
    if (++m_idleCount >= m_idleLimit) return Stop;
    m_previousFrame = frame;
    return Used;
}

int ScrollStitcher::stopForMemory()
{
    m_memoryLimitReached = true;
    return Stop;
}

bool ScrollStitcher::exceedsBound(qint64 bytes) const
{
    return m_maxCanvasBytes > 0 && bytes > m_maxCanvasBytes;
}

bool ScrollStitcher::append(const QImage& frame, int firstRow, int rows)
{
    if (!reserveRows(qint64(m_canvasHeight) + rows)) return false;
    const int width = std::min(frame.width(), m_canvas.width());
    // Frames normally come in the canvas's format and are copied straight from their rows.
    const bool direct = frame.format() == kCanvasFormat;
    const QImage source =
        direct ? frame : frame.copy(0, firstRow, width, rows).convertToFormat(kCanvasFormat);
    if (source.isNull()) return false;
    const int sourceTop = direct ? firstRow : 0;

    const size_t copied = size_t(width) * kBytesPerPixel;
    const size_t rowBytes = size_t(m_canvas.bytesPerLine());
    for (int r = 0; r < rows; ++r) {
        uchar* out = m_canvas.scanLine(m_canvasHeight + r);
        std::memcpy(out, source.constScanLine(sourceTop + r), copied);
        std::memset(out + copied, 0, rowBytes - copied);
    }
    m_canvasHeight += rows;
    return true;
}

bool ScrollStitcher::reserveRows(qint64 rows)
{
    if (rows <= m_canvas.height()) return true;
    const qint64 rowBytes = m_canvas.bytesPerLine();
    const qint64 maxRows = m_maxCanvasBytes > 0 ? m_maxCanvasBytes / rowBytes : INT_MAX;
    if (rows > maxRows) return false;

    // Doubling keeps appends cheap: the stitched rows are moved only when the room runs out.
    const qint64 roomy = std::min(std::max(rows, 2 * qint64(m_canvas.height())), maxRows);
    QImage grown(m_canvas.width(), int(roomy), kCanvasFormat);
    if (grown.isNull() && roomy > rows) grown = QImage(m_canvas.width(), int(rows), kCanvasFormat);
    if (grown.isNull()) return false;
    const size_t used = size_t(m_canvas.width()) * kBytesPerPixel;
    for (int y = 0; y < m_canvasHeight; ++y)
        std::memcpy(grown.scanLine(y), m_canvas.constScanLine(y), used);
    m_canvas = grown;
    return true;
}

} // namespace zelmor::service::capture
