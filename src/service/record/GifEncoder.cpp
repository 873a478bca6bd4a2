#include "GifEncoder.h"

#include "ColorTable.h"
#include "GifPalette.h"
#include "LzwWriter.h"

#include <QMutex>
#include <QSaveFile>
#include <QThread>
#include <QWaitCondition>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

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

QByteArray gifHead(int width, int height)
{
    QByteArray head("GIF89a");
    appendLe16(head, width);
    appendLe16(head, height);
    // A global table is announced and left black: every frame brings its own.
    head.append("\xF7\x00\x00", 3);
    head.append(768, '\0');
    head.append(loopExtension());
    return head;
}

int frameDelay(int intervalMs)
{
    return std::clamp(intervalMs / 10, 1, 65535);
}

// Encodes frames one after another, keeping its working memory from one frame to the next.
class FrameBlockWriter
{
public:
    // Appends the control extension, descriptor, local table and image data of `image`, which
    // is in RGB32 at the size of the animation.
    void append(QByteArray& block, const QImage& image, int delay)
    {
        m_table.reset();
        countColors(image, m_table);
        const QList<QRgb> palette = paletteFor(m_table);
        mapToPalette(image, m_table, palette, m_indices);
        // Disposal 1 and no transparency: every frame is written whole.
        block.append("\x21\xF9\x04\x04", 4);
        appendLe16(block, delay);
        block.append("\x00\x00", 2);
        block.append("\x2C\x00\x00\x00\x00", 5);
        appendLe16(block, image.width());
        appendLe16(block, image.height());
        block.append(char(0x87));
        for (QRgb c : palette) {
            block.append(char(qRed(c)));
            block.append(char(qGreen(c)));
            block.append(char(qBlue(c)));
        }
        m_imageData.append(block, reinterpret_cast<const uchar*>(m_indices.constData()),
                           m_indices.size());
    }

private:
    ColorTable m_table;
    ImageDataWriter m_imageData;
    QByteArray m_indices;
};

// Frames cut into runs that worker threads decode and encode, each with a reader of its own;
// the calling thread hands the runs on in order. Workers stay a few runs ahead at most, so
// that finished runs do not pile up behind a slow one.
class ParallelFrames
{
public:
    // False stops the work: the blocks could not be written.
    using Sink = std::function<bool(const QByteArray& blocks, int framesWritten)>;

    ParallelFrames(const FrameSequence& frames, int width, int height, int delay,
                   const std::atomic_bool* cancel)
        : m_frames(frames), m_width(width), m_height(height), m_delay(delay), m_cancel(cancel),
          m_runs(int((frames.rows.size() + kRunFrames - 1) / kRunFrames)), m_encoded(m_runs),
          m_ready(m_runs, false)
    {}

    bool run(const Sink& sink)
    {
        const int workers = std::clamp(QThread::idealThreadCount(), 1, std::max(m_runs, 1));
        std::vector<std::unique_ptr<QThread>> threads;
        for (int i = 0; i < workers; ++i) {
            threads.emplace_back(QThread::create([this] { work(); }));
            threads.back()->start();
        }
        bool complete = true;
        for (int run = 0; run < m_runs && complete; ++run) {
            QByteArray blocks;
            {
                QMutexLocker lock(&m_mutex);
                while (!m_failed && !m_ready.at(run))
                    m_changed.wait(&m_mutex);
                complete = !m_failed;
                blocks = std::exchange(m_encoded[run], QByteArray());
                m_flushed = run + 1;
                m_changed.wakeAll();
            }
            if (complete)
                complete = sink(blocks, int(std::min<qsizetype>(qsizetype(run + 1) * kRunFrames,
                                                                m_frames.rows.size())));
        }
        {
            QMutexLocker lock(&m_mutex);
            m_failed = m_failed || !complete;
            m_changed.wakeAll();
        }
        for (const auto& thread : threads)
            thread->wait();
        return complete;
    }

private:
    static constexpr int kRunFrames = 8;
    static constexpr int kRunsAhead = 6;
    static constexpr qint64 kReaderCacheBytes = qint64(16) << 20;

    void work()
    {
        FrameReader reader(m_frames.store, kReaderCacheBytes);
        FrameBlockWriter writer;
        for (;;) {
            int run = 0;
            {
                QMutexLocker lock(&m_mutex);
                while (!m_failed && m_taken < m_runs && m_taken - m_flushed >= kRunsAhead)
                    m_changed.wait(&m_mutex);
                if (m_failed || m_taken >= m_runs) return;
                run = m_taken++;
            }
            QByteArray blocks;
            const bool ok = encodeRun(run, reader, writer, blocks);
            QMutexLocker lock(&m_mutex);
            if (ok) {
                m_encoded[run] = std::move(blocks);
                m_ready[run] = true;
            } else {
                m_failed = true;
            }
            m_changed.wakeAll();
        }
    }

    bool encodeRun(int run, FrameReader& reader, FrameBlockWriter& writer, QByteArray& blocks)
    {
        const qsizetype end =
            std::min<qsizetype>(qsizetype(run + 1) * kRunFrames, m_frames.rows.size());
        for (qsizetype i = qsizetype(run) * kRunFrames; i < end; ++i) {
            if (cancelled(m_cancel)) return false;
            const QImage image = fitFrame(reader.frame(m_frames.rows.at(i)), m_width, m_height);
            if (image.isNull()) return false; // out of memory
            writer.append(blocks, image, m_delay);
        }
        return true;
    }

    const FrameSequence& m_frames;
    const int m_width, m_height, m_delay;
    const std::atomic_bool* m_cancel;
    const int m_runs;
    QList<QByteArray> m_encoded;
    QList<bool> m_ready;
    QMutex m_mutex;
    QWaitCondition m_changed;
    int m_taken = 0;
    int m_flushed = 0;
    bool m_failed = false;
};

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

bool encodeGif(QString& error, const QString& path, const FrameSequence& frames, int intervalMs,
               int width, int height, const std::atomic_bool* cancel,
               const ExportProgress& progress)
{
    if (frames.rows.isEmpty() || !frames.store) {
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
    if (encodeWithGifski(error, path, frames, intervalMs, w, h, cancel, progress)) return true;
    if (cancelled(cancel)) return false;
    return writeGifParallel(error, path, frames, intervalMs, w, h, cancel, progress);
}

bool encodeGif(QString& error, const QString& path, const QList<QImage>& frames, int intervalMs,
               int width, int height, const std::atomic_bool* cancel)
{
    if (frames.isEmpty()) {
        error = QStringLiteral("no frames");
        return false;
    }
    FrameSequence sequence{FrameStore::fromImages(frames), {}};
    for (int row = 0; row < sequence.store->count(); ++row)
        sequence.rows << row;
    return encodeGif(error, path, sequence, intervalMs, width, height, cancel);
}

bool writeGifMedianCut(QString& error, const QString& path, const QList<QImage>& frames,
                       int intervalMs, int width, int height, const std::atomic_bool* cancel)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        error = QStringLiteral("cannot open output: %1").arg(path);
        return false;
    }
    file.write(gifHead(width, height));
    const int delay = frameDelay(intervalMs);
    FrameBlockWriter writer;
    QByteArray block;
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
        block.resize(0);
        writer.append(block, image, delay);
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

bool writeGifParallel(QString& error, const QString& path, const FrameSequence& frames,
                      int intervalMs, int width, int height, const std::atomic_bool* cancel,
                      const ExportProgress& progress)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        error = QStringLiteral("cannot open output: %1").arg(path);
        return false;
    }
    file.write(gifHead(width, height));
    ParallelFrames work(frames, width, height, frameDelay(intervalMs), cancel);
    // A short write is a full disk: the file would end in the middle of a frame.
    const bool complete = work.run([&](const QByteArray& blocks, int written) {
        if (file.write(blocks) != blocks.size()) return false;
        if (progress) progress(written);
        return true;
    });
    if (!complete) {
        error = cancelled(cancel) ? QStringLiteral("cancelled") : QStringLiteral("write failed");
        return false;
    }
    file.write("\x3B", 1);
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
