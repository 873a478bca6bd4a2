#include "ScrollStitcher.h"

#include <algorithm>
#include <climits>
#include <cstring>

namespace zelmor::service::capture {

namespace {

constexpr QImage::Format kCanvasFormat = QImage::Format_ARGB32_Premultiplied;
constexpr int kBytesPerPixel = 4;
constexpr int kBlockRows = 2048;

// Frames are compared pixel by pixel as stored; any 32-bit layout will do.
QImage as32Bit(const QImage& frame)
{
    const QImage::Format format = frame.format();
    if (format == QImage::Format_RGB32 || format == QImage::Format_ARGB32 ||
        format == kCanvasFormat)
        return frame;
    return frame.convertToFormat(kCanvasFormat);
}

} // namespace

ScrollStitcher::ScrollStitcher(int idleLimit, QObject* parent, qint64 maxCanvasBytes)
    : QObject(parent), m_idleLimit(idleLimit), m_maxCanvasBytes(std::max<qint64>(0, maxCanvasBytes))
{}

int ScrollStitcher::addFrame(const QImage& input)
{
    m_lastDisplacement = 0;
    if (input.isNull()) return settle(Step::None, Rejected);
    if (m_canvasHeight == 0) return start(input);
    const QImage frame = as32Bit(input);
    if (frame.isNull()) return stopForMemory();
    FrameRows rows(frame, std::min(frame.width(), m_canvasWidth));
    if (rows.width() != m_referenceRows.width())
        m_referenceRows = FrameRows(m_reference, rows.width());

    const Displacement found = findDisplacement(m_referenceRows, rows);
    switch (found.kind) {
    case Displacement::Still:
        return countStill(frame, std::move(rows));
    case Displacement::TooFast:
        return settle(Step::TooFast, Rejected);
    case Displacement::Unreliable:
        return settle(Step::Unreliable, Rejected);
    case Displacement::Moved:
        break;
    }
    m_lastDisplacement = found.rows;
    // Scrolled back: the image holds those rows already, and its end still matches the
    // reference, where the next step down continues.
    if (found.rows < 0) return settle(Step::Back, Used);
    return appendMoved(frame, std::move(rows), found);
}

QImage ScrollStitcher::canvas() const
{
    if (m_canvasHeight == 0) return {};
    QImage image(m_canvasWidth, m_canvasHeight, kCanvasFormat);
    if (image.isNull()) return image;
    const size_t rowBytes = size_t(m_canvasWidth) * kBytesPerPixel;
    for (int y = 0; y < m_canvasHeight; ++y)
        std::memcpy(image.scanLine(y),
                    m_blocks[size_t(y / kBlockRows)].constScanLine(y % kBlockRows), rowBytes);
    return image;
}

int ScrollStitcher::start(const QImage& input)
{
    const QImage frame = as32Bit(input);
    m_canvasWidth = frame.width();
    if (frame.isNull() || !writeRows(frame, 0, 0)) {
        m_blocks.clear();
        return stopForMemory();
    }
    m_reference = frame;
    m_referenceRows = FrameRows(frame, frame.width());
    return settle(Step::Started, Used);
}

int ScrollStitcher::settle(Step step, int result)
{
    m_lastStep = step;
    if (step != Step::None) m_idleCount = 0;
    return result;
}

int ScrollStitcher::countStill(const QImage& frame, FrameRows rows)
{
    m_lastStep = Step::Still;
    if (++m_idleCount >= m_idleLimit) return Stop;
    // The newest look of what stays: a caret that blinked is not a change the next time.
    m_reference = frame;
    m_referenceRows = std::move(rows);
    return Used;
}

int ScrollStitcher::stopForMemory()
{
    m_lastStep = Step::MemoryFull;
    return Stop;
}

int ScrollStitcher::appendMoved(const QImage& frame, FrameRows rows, const Displacement& moved)
{
    // A footer taller than the true one costs nothing: the rows it covers moved like the
    // rest, and they are written again from the new frame at the place they belong.
    m_footerRows = std::max(m_footerRows, moved.footerRows);
    const int footer = std::clamp(m_footerRows, 0, frame.height() - moved.rows - moved.headerRows);
    if (!writeRows(frame, frame.height() - footer - moved.rows, m_canvasHeight - footer))
        return stopForMemory();
    m_reference = frame;
    m_referenceRows = std::move(rows);
    return settle(Step::Appended, Used);
}

bool ScrollStitcher::writeRows(const QImage& frame, int firstRow, int at)
{
    const int rows = frame.height() - firstRow;
    if (!reserveRows(qint64(at) + rows)) return false;
    const int width = std::min(frame.width(), m_canvasWidth);
    const size_t copied = size_t(width) * kBytesPerPixel;
    const size_t rowBytes = size_t(m_canvasWidth) * kBytesPerPixel;
    for (int r = 0; r < rows; ++r) {
        const int y = at + r;
        uchar* out = m_blocks[size_t(y / kBlockRows)].scanLine(y % kBlockRows);
        std::memcpy(out, frame.constScanLine(firstRow + r), copied);
        std::memset(out + copied, 0, rowBytes - copied);
    }
    m_canvasHeight = at + rows;
    return true;
}

bool ScrollStitcher::reserveRows(qint64 rows)
{
    const qint64 rowBytes = qint64(m_canvasWidth) * kBytesPerPixel;
    if (rows > INT_MAX || (m_maxCanvasBytes > 0 && rows * rowBytes > m_maxCanvasBytes))
        return false;
    while (qint64(m_blocks.size()) * kBlockRows < rows) {
        QImage block(m_canvasWidth, kBlockRows, kCanvasFormat);
        if (block.isNull()) return false;
        m_blocks.push_back(std::move(block));
    }
    return true;
}

} // namespace zelmor::service::capture
