#pragma once

#include "core/CaptureResult.h"

#include <QObject>
#include <QRect>

#include <atomic>

namespace zelmor::service::capture {

class CaptureService : public QObject
{
    Q_OBJECT
public:
    explicit CaptureService(QObject* parent = nullptr);
    // Waits for a running scroll capture to end: its job uses this object.
    ~CaptureService() override;

    // The whole desktop in physical pixels.
    core::CaptureResult captureFullscreen();
    // A logical rectangle of the desktop; parts outside the screens come out empty.
    core::CaptureResult captureRegion(const QRect& rect);
    // The frozen screens under an overlay.
    QPixmap grabScreens();

    // Samples the region on a pool thread while the user scrolls it, and saves the stitched
    // image. A start while one runs does nothing.
    void captureScrolling(const QRect& region);
    void stopScrollCapture();
    void cancelScrollCapture();

    // At most this many bytes of stitched image, at the next start; 0 measures it then.
    void setScrollMemoryBudget(qint64 bytes) { m_scrollMemoryBudget = bytes; }

signals:
    void scrollCaptureCompleted(zelmor::core::CaptureResult result);
    void scrollCaptureFailed(QString reason);
    void scrollCaptureCancelled();
    void scrollProgressChanged(int canvasHeight);
    // From the pool thread: the sampling has ended and the image is being written.
    void scrollSaving();
    // Comes before scrollCaptureCompleted when the image reached the memory budget.
    void scrollMemoryLimitReached(qint64 budgetBytes);

private:
    struct ScrollOutcome;
    ScrollOutcome runScroll(const QRect& region, int intervalMs, class ScrollStitcher* stitcher);
    void finishScroll(const ScrollOutcome& outcome);

    std::atomic_bool m_stopRequested{false};
    std::atomic_bool m_cancelRequested{false};
    std::atomic_bool m_scrollBusy{false};
    qint64 m_scrollMemoryBudget = 0;
    QObject* m_scrollJob = nullptr; // the watcher of the running capture
};

} // namespace zelmor::service::capture
