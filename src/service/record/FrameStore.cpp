#include "FrameStore.h"

#include "FrameCodec.h"

#include <algorithm>
#include <cstring>

namespace zelmor::service::record {

namespace {

QImage conform(const QImage& frame, const QSize& size)
{
    if (frame.isNull()) {
        QImage black(size, QImage::Format_RGB32);
        black.fill(Qt::black);
        return black;
    }
    QImage image = frame.size() == size
                       ? frame
                       : frame.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return image.convertToFormat(QImage::Format_RGB32);
}

qsizetype tileBytes(const QRect& rect)
{
    return qsizetype(rect.width()) * rect.height() * 4;
}

} // namespace

FrameStore::FrameStore(const QSize& frameSize, int keyInterval)
    : m_size(frameSize.expandedTo(QSize(1, 1))), m_keyInterval(std::max(keyInterval, 1)),
      m_columns((m_size.width() + kTileSide - 1) / kTileSide)
{}

QRect FrameStore::tileRect(quint32 tile) const
{
    const QRect rect(int(tile % quint32(m_columns)) * kTileSide,
                     int(tile / quint32(m_columns)) * kTileSide, kTileSide, kTileSide);
    return rect.intersected(QRect(QPoint(), m_size));
}

bool FrameStore::tileChanged(const QImage& frame, const QRect& rect) const
{
    const size_t bytes = size_t(rect.width()) * 4;
    for (int y = rect.top(); y <= rect.bottom(); ++y)
        if (std::memcmp(frame.constScanLine(y) + rect.left() * 4,
                        m_last.constScanLine(y) + rect.left() * 4, bytes) != 0)
            return true;
    return false;
}

void FrameStore::appendTile(const QImage& frame, const QRect& rect)
{
    const qsizetype row = qsizetype(rect.width()) * 4;
    for (int y = rect.top(); y <= rect.bottom(); ++y)
        m_scratch.append(reinterpret_cast<const char*>(frame.constScanLine(y)) + rect.left() * 4,
                         row);
}

void FrameStore::append(const QImage& input)
{
    const QImage frame = conform(input, m_size);
    Entry entry;
    entry.whole = m_last.isNull() || m_entries.size() % size_t(m_keyInterval) == 0;
    if (entry.whole) {
        entry.packed =
            packBytes(reinterpret_cast<const char*>(frame.constBits()), frame.sizeInBytes());
    } else {
        m_scratch.resize(0);
        const quint32 rows = quint32((m_size.height() + kTileSide - 1) / kTileSide);
        for (quint32 tile = 0; tile < rows * quint32(m_columns); ++tile) {
            const QRect rect = tileRect(tile);
            if (!tileChanged(frame, rect)) continue;
            entry.tiles.append(tile);
            appendTile(frame, rect);
        }
        if (!m_scratch.isEmpty()) entry.packed = packBytes(m_scratch.constData(), m_scratch.size());
        entry.tiles.squeeze();
    }
    m_bytes += qint64(sizeof(Entry)) + entry.packed.size() + entry.tiles.size() * 4;
    m_entries.push_back(std::move(entry));
    m_last = frame;
    ++m_count;
}

void FrameStore::close()
{
    m_last = QImage();
    m_scratch = QByteArray();
}

bool FrameStore::decodeInto(const Entry& entry, QImage& frame, QByteArray& scratch) const
{
    if (entry.whole)
        return unpackBytes(entry.packed, reinterpret_cast<char*>(frame.bits()),
                           frame.sizeInBytes());
    if (entry.tiles.isEmpty()) return true;
    qsizetype total = 0;
    for (quint32 tile : entry.tiles)
        total += tileBytes(tileRect(tile));
    scratch.resize(total);
    if (!unpackBytes(entry.packed, scratch.data(), total)) return false;
    const char* from = scratch.constData();
    uchar* bits = frame.bits();
    const qsizetype stride = frame.bytesPerLine();
    for (quint32 tile : entry.tiles) {
        const QRect rect = tileRect(tile);
        const qsizetype row = qsizetype(rect.width()) * 4;
        for (int y = rect.top(); y <= rect.bottom(); ++y, from += row)
            std::memcpy(bits + y * stride + rect.left() * 4, from, size_t(row));
    }
    return true;
}

std::shared_ptr<FrameStore> FrameStore::fromImages(const QList<QImage>& images)
{
    const auto first = std::find_if(images.cbegin(), images.cend(),
                                    [](const QImage& image) { return !image.isNull(); });
    auto store = std::make_shared<FrameStore>(first == images.cend() ? QSize(2, 2) : first->size());
    for (const QImage& image : images)
        store->append(image);
    store->close();
    return store;
}

FrameReader::FrameReader(std::shared_ptr<const FrameStore> store, qint64 cacheBytes)
    : m_store(std::move(store))
{
    const qint64 frameBytes =
        qint64(m_store->frameSize().width()) * m_store->frameSize().height() * 4;
    m_capacity = int(std::clamp<qint64>(cacheBytes / std::max<qint64>(frameBytes, 1), 2, 64));
}

QImage FrameReader::frame(int index)
{
    if (index < 0 || index >= m_store->count()) return {};
    for (qsizetype i = 0; i < m_cache.size(); ++i) {
        if (m_cache.at(i).index != index) continue;
        m_cache.move(i, m_cache.size() - 1);
        return m_cache.last().image;
    }
    const int whole = index - index % m_store->keyInterval();
    // Walk on from the frame made last when it lies on the way, else from the whole frame.
    int at = m_currentIndex >= whole && m_currentIndex <= index ? m_currentIndex : whole - 1;
    if (m_current.isNull()) m_current = QImage(m_store->frameSize(), QImage::Format_RGB32);
    while (at < index) {
        ++at;
        // A frame that cannot be read stays black, as a null grab would.
        if (!m_store->decodeInto(m_store->m_entries[size_t(at)], m_current, m_scratch))
            m_current.fill(Qt::black);
        m_currentIndex = at;
        if (index - at < m_capacity) remember(at);
    }
    return m_current;
}

void FrameReader::remember(int index)
{
    if (m_cache.size() >= m_capacity) m_cache.removeFirst();
    m_cache.append({index, m_current});
}

} // namespace zelmor::service::record
