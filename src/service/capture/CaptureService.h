#pragma once

#include "core/CaptureResult.h"

#include <QObject>
#include <QRect>

#include <atomic>

namespace zelmor::platform {
struct Point;
}

namespace zelmor::service::capture {

class ScrollStitcher;

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

    // Why a grab came back null, and what the user can do about it.
    static QString failureReason();

    // Samples the region on a pool thread while the user scrolls it, or with `autoScroll`
    // scrolls it by the wheel down to the page's end, and saves the stitched image. A start
    // while one runs does nothing.
    void captureScrolling(const QRect& region, bool autoScroll = false);
    void stopScrollCapture();
    void cancelScrollCapture();

    // At most this many bytes of stitched image, at the next start; 0 measures it then.
    void setScrollMemoryBudget(qint64 bytes) { m_scrollMemoryBudget = bytes; }

signals:
    void scrollCaptureCompleted(zelmor::core::CaptureResult result);
    void scrollCaptureFailed(QString reason);
    void scrollCaptureCancelled();
    void scrollProgressChanged(int canvasHeight);
    // From the pool thread: what the stitcher found the last frame to be, a
    // ScrollStitcher::Step, when it differs from the frame before.
    void scrollStepChanged(int step);
    // From the pool thread: the sampling has ended and the image is being written.
    void scrollSaving();
    // Comes before scrollCaptureCompleted when the image reached the memory budget.
    void scrollMemoryLimitReached(qint64 budgetBytes);

private:
    struct ScrollOutcome;
    struct ScrollPace;
    ScrollOutcome runScroll(const QRect& region, const ScrollPace& pace, ScrollStitcher* stitcher);
    void watchUserScroll(const QRect& region, const ScrollPace& pace, ScrollStitcher* stitcher);
    void scrollForUser(const QRect& region, const platform::Point& pointer,
                       ScrollStitcher* stitcher);
    // Adds a frame and tells the GUI thread the height and, when it changed, the step.
    int feed(ScrollStitcher* stitcher, const QImage& frame, int& shownStep);
    void finishScroll(const ScrollOutcome& outcome);

    std::atomic_bool m_stopRequested{false};
    std::atomic_bool m_cancelRequested{false};
    std::atomic_bool m_scrollBusy{false};
    qint64 m_scrollMemoryBudget = 0;
    QObject* m_scrollJob = nullptr; // the watcher of the running capture
};

} // namespace zelmor::service::capture
