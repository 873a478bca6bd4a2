#include "CapturePipeline.h"

#include "service/capture/ScreenGrabber.h"

#include <QPixmap>
#include <QThread>

namespace zelmor::service::record {

namespace {

// Samples waiting for the grab: one more than this and the grab is a frame behind.
constexpr qsizetype kGrabsWaiting = 1;
// Grabbed frames waiting for compression: a short burst of whole frames is absorbed.
constexpr qsizetype kFramesWaiting = 3;

QImage grabFrame(const QRect& region, const QRect& grabRect)
{
    QPixmap pixmap = capture::grabRegion(region);
    // Partly off the screens: the canvas copy keeps the size and fills what lies outside.
    if (pixmap.size() != region.size()) pixmap = capture::grabAllScreens().copy(grabRect);
    return pixmap.toImage().convertToFormat(QImage::Format_RGB32);
}

} // namespace

CapturePipeline::CapturePipeline(Setup setup)
    : m_setup(std::move(setup)), m_store(std::make_shared<FrameStore>(m_setup.outSize)),
      m_grabber(QThread::create([this] { grabLoop(); })),
      m_compressor(QThread::create([this] { compressLoop(); }))
{
    m_grabber->start();
    m_compressor->start();
}

CapturePipeline::~CapturePipeline()
{
    finish();
}

bool CapturePipeline::sample(qint64 timeMs)
{
    QMutexLocker lock(&m_mutex);
    if (m_ending || m_memoryFull || m_toGrab.size() >= kGrabsWaiting) return false;
    m_toGrab.append(timeMs);
    m_changed.wakeAll();
    return true;
}

std::shared_ptr<FrameStore> CapturePipeline::finish()
{
    {
        QMutexLocker lock(&m_mutex);
        m_ending = true;
        m_changed.wakeAll();
    }
    m_grabber->wait();
    m_compressor->wait();
    m_store->close();
    return m_store;
}

void CapturePipeline::grabLoop()
{
    for (;;) {
        qint64 timeMs = 0;
        {
            QMutexLocker lock(&m_mutex);
            while (m_toGrab.isEmpty() && !m_ending)
                m_changed.wait(&m_mutex);
            if (m_toGrab.isEmpty()) break;
            timeMs = m_toGrab.takeFirst();
        }
        QImage image = grabFrame(m_setup.region, m_setup.grabRect);
        QMutexLocker lock(&m_mutex);
        while (m_toCompress.size() >= kFramesWaiting)
            m_changed.wait(&m_mutex);
        m_toCompress.append({timeMs, std::move(image)});
        m_changed.wakeAll();
    }
    QMutexLocker lock(&m_mutex);
    m_grabbingDone = true;
    m_changed.wakeAll();
}

void CapturePipeline::compressLoop()
{
    for (;;) {
        Grabbed frame;
        {
            QMutexLocker lock(&m_mutex);
            while (m_toCompress.isEmpty() && !m_grabbingDone)
                m_changed.wait(&m_mutex);
            if (m_toCompress.isEmpty()) return;
            frame = m_toCompress.takeFirst();
            m_changed.wakeAll();
        }
        // A grab that failed (a desktop that sent no picture in time) leaves no frame.
        if (m_memoryFull || frame.image.isNull()) continue;
        QImage image = std::move(frame.image);
        if (image.size() != m_setup.outSize)
            image = image.scaled(m_setup.outSize, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        image.setDevicePixelRatio(1.0);
        if (m_setup.decorate) m_setup.decorate(image, frame.timeMs);
        m_store->append(image);
        // The frame that passes the budget is the last: the recording ends as by Stop.
        if (m_store->storedBytes() >= m_setup.memoryBudget) m_memoryFull = true;
    }
}

} // namespace zelmor::service::record
