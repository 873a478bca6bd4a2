#pragma once

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QSize>

#include <atomic>
#include <memory>
#include <vector>

namespace zelmor::service::record {

// The frames of a recording, compressed as they arrive: each frame is kept as the tiles that
// changed since the frame before, and every keyInterval-th frame whole, so that any frame is a
// short walk from a whole one. One thread appends; once it is done, any number of readers may
// decode from it at the same time.
class FrameStore
{
public:
    static constexpr int kTileSide = 64;
    static constexpr int kDefaultKeyInterval = 30;

    explicit FrameStore(const QSize& frameSize, int keyInterval = kDefaultKeyInterval);

    // A frame of another size is scaled to the store's; a null frame is stored black.
    void append(const QImage& frame);
    // Drops the copy of the last frame that the next difference would be taken against.
    void close();

    int count() const { return m_count.load(); }
    QSize frameSize() const { return m_size; }
    int keyInterval() const { return m_keyInterval; }
    // What the compressed frames take in memory; safe to read while another thread appends.
    qint64 storedBytes() const { return m_bytes.load(); }

    // A closed store of `images`, at the size of the first one that is not null.
    static std::shared_ptr<FrameStore> fromImages(const QList<QImage>& images);

private:
    friend class FrameReader;
    struct Entry
    {
        QList<quint32> tiles; // the changed tiles, in order; empty for a whole frame
        QByteArray packed;    // their pixels, row by row within each tile
        bool whole = false;
    };
    QRect tileRect(quint32 tile) const;
    bool tileChanged(const QImage& frame, const QRect& rect) const;
    void appendTile(const QImage& frame, const QRect& rect);
    // Writes the pixels of `entry` over `frame`, which holds the frame before it.
    bool decodeInto(const Entry& entry, QImage& frame, QByteArray& scratch) const;

    QSize m_size;
    int m_keyInterval;
    int m_columns;
    std::vector<Entry> m_entries;
    std::atomic_int m_count{0};
    std::atomic<qint64> m_bytes{0};
    QImage m_last;
    QByteArray m_scratch;
};

// Decodes frames of a store on demand for one thread. It keeps the last few frames it made,
// so that playing, stepping back and forth, and reading in order cost one difference each.
class FrameReader
{
public:
    explicit FrameReader(std::shared_ptr<const FrameStore> store, qint64 cacheBytes = qint64(64)
                                                                                      << 20);

    // A null image for an index out of range.
    QImage frame(int index);
    const std::shared_ptr<const FrameStore>& store() const { return m_store; }

private:
    void remember(int index);

    struct Decoded
    {
        int index;
        QImage image;
    };
    std::shared_ptr<const FrameStore> m_store;
    int m_capacity;
    QImage m_current;
    int m_currentIndex = -1;
    QByteArray m_scratch;
    QList<Decoded> m_cache; // oldest use first
};

// The frames an export writes: rows of a store, in the order given.
struct FrameSequence
{
    std::shared_ptr<const FrameStore> store;
    QList<int> rows;
};

} // namespace zelmor::service::record
