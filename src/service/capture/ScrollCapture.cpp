// The scroll capture of CaptureService: a pool job samples the region (or scrolls it itself),
// a stitcher grows the image, and the same job saves it, so that a tall image doesn't stall
// the GUI thread.
#include "CaptureService.h"

#include "AutoScroller.h"
#include "OutputFile.h"
#include "ScreenGrabber.h"
#include "ScrollStitcher.h"
#include "core/ConfigManager.h"
#include "platform/Memory.h"
#include "service/history/HistoryService.h"

#include <QFutureWatcher>
#include <QThread>
#include <QtConcurrent>

#include <optional>

namespace zelmor::service::capture {

namespace {

// The stitched image is uncompressed until it is saved; growing it holds the old rows beside
// the new ones for a moment, and saving needs room of its own.
constexpr double kAvailableMemoryShare = 0.3;

} // namespace

struct CaptureService::ScrollOutcome
{
    core::CaptureResult result;
    bool memoryLimitReached = false;
    bool saveFailed = false;
    qint64 budget = 0;
};

// How the region is scrolled: by the user, sampled every `intervalMs`, or by the wheel with
// the pointer held at `pointer`.
struct CaptureService::ScrollPace
{
    int intervalMs = 0;
    int idleFrames = 0;
    std::optional<platform::Point> pointer;
};

CaptureService::~CaptureService()
{
    m_cancelRequested = true;
    if (auto* job = static_cast<QFutureWatcher<ScrollOutcome>*>(m_scrollJob))
        job->waitForFinished();
}

void CaptureService::captureScrolling(const QRect& region, bool autoScroll)
{
    if (m_scrollBusy.exchange(true)) return;
    m_stopRequested = false;
    m_cancelRequested = false;
    const core::ConfigManager& config = core::ConfigManager::instance();
    ScrollPace pace;
    pace.intervalMs = config.scrollIntervalMs();
    pace.idleFrames = config.scrollIdleFrames();
    if (autoScroll) pace.pointer = AutoScroller::pointerTarget(region);
    const qint64 budget =
        m_scrollMemoryBudget > 0
            ? m_scrollMemoryBudget
            : qint64(double(platform::availableMemoryBytes()) * kAvailableMemoryShare);
    auto* stitcher = new ScrollStitcher(config.scrollIdleFrames(), nullptr, budget);
    // Read here: the settings belong to the GUI thread.
    const QString outputDir = config.outputDir();
    const QString naming = config.fileNaming();
    auto* watcher = new QFutureWatcher<ScrollOutcome>(this);
    m_scrollJob = watcher;
    connect(watcher, &QFutureWatcher<ScrollOutcome>::finished, this, [this, watcher] {
        m_scrollJob = nullptr;
        finishScroll(watcher->result());
        watcher->deleteLater();
    });
    watcher->setFuture(QtConcurrent::run(QThreadPool::globalInstance(), [=] {
        ScrollOutcome outcome = runScroll(region, pace, stitcher);
        outcome.budget = budget;
        if (!outcome.result.pixmap.isNull()) {
            emit scrollSaving();
            const QString path = makeOutputPath(outputDir, naming, QStringLiteral("png"));
            outcome.saveFailed = !savePixmapFile(outcome.result.pixmap, path);
            if (!outcome.saveFailed) outcome.result.filePath = path;
        }
        return outcome;
    }));
}

void CaptureService::stopScrollCapture()
{
    m_stopRequested = true;
}

void CaptureService::cancelScrollCapture()
{
    m_cancelRequested = true;
}

CaptureService::ScrollOutcome CaptureService::runScroll(const QRect& region, const ScrollPace& pace,
                                                        ScrollStitcher* stitcher)
{
    ScrollOutcome outcome;
    outcome.result.kind = core::Scroll;
    if (pace.pointer)
        scrollForUser(region, *pace.pointer, stitcher);
    else
        watchUserScroll(region, pace, stitcher);
    QImage canvas;
    if (!m_cancelRequested && stitcher->canvasHeight() > 0) {
        canvas = stitcher->canvas();
        outcome.memoryLimitReached = stitcher->memoryLimitReached();
    }
    delete stitcher; // its spare rows go before the pixmap is made
    if (!canvas.isNull()) {
        outcome.result.pixmap = QPixmap::fromImage(std::move(canvas));
        outcome.result.width = outcome.result.pixmap.width();
        outcome.result.height = outcome.result.pixmap.height();
    }
    return outcome;
}

// Before the page first moves the user may still be on the way to it: still frames end the
// capture only after a few times the idle limit, and at the limit itself once it has moved.
void CaptureService::watchUserScroll(const QRect& region, const ScrollPace& pace,
                                     ScrollStitcher* stitcher)
{
    constexpr int kFirstStepPatience = 4;
    int shownStep = -1;
    bool moved = false;
    int stillBeforeMoving = 0;
    while (!m_cancelRequested && !m_stopRequested) {
        const QPixmap grabbed = grabRegion(region);
        if (!grabbed.isNull()) {
            const QImage frame =
                grabbed.toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
            const int added = feed(stitcher, frame, shownStep);
            moved |= stitcher->lastStep() == ScrollStitcher::Step::Appended;
            if (!moved && stitcher->lastStep() == ScrollStitcher::Step::Still) ++stillBeforeMoving;
            const bool waitedEnough =
                moved || stillBeforeMoving >= kFirstStepPatience * pace.idleFrames;
            if (added == ScrollStitcher::Stop && (waitedEnough || stitcher->memoryLimitReached()))
                break;
        }
        QThread::msleep(ulong(std::max(pace.intervalMs, 0)));
    }
}

// Ends at the page's end: a notch that moves nothing, or a picture the stitcher finds still.
// A step further than the region cannot be taken back by the wheel, so the image ends there.
void CaptureService::scrollForUser(const QRect& region, const platform::Point& pointer,
                                   ScrollStitcher* stitcher)
{
    AutoScroller scroller(region, pointer, [this] { return m_stopRequested || m_cancelRequested; });
    int shownStep = -1;
    for (QImage frame = scroller.first(); !frame.isNull(); frame = scroller.next()) {
        if (feed(stitcher, frame, shownStep) == ScrollStitcher::Stop) break;
        const ScrollStitcher::Step step = stitcher->lastStep();
        if (step == ScrollStitcher::Step::Still || step == ScrollStitcher::Step::TooFast) break;
    }
}

int CaptureService::feed(ScrollStitcher* stitcher, const QImage& frame, int& shownStep)
{
    const int added = stitcher->addFrame(frame);
    if (stitcher->canvasHeight() > 0) emit scrollProgressChanged(stitcher->canvasHeight());
    const int step = int(stitcher->lastStep());
    if (step != shownStep) emit scrollStepChanged(step);
    shownStep = step;
    return added;
}

void CaptureService::finishScroll(const ScrollOutcome& outcome)
{
    const core::CaptureResult& result = outcome.result;
    m_scrollBusy = false;
    if (result.pixmap.isNull()) {
        emit scrollCaptureCancelled();
        return;
    }
    if (outcome.saveFailed) {
        emit scrollCaptureFailed(QStringLiteral("scroll: save failed"));
        return;
    }
    history::HistoryService::instance().insert(result.pixmap, result.filePath,
                                               core::HistoryCategory::Screenshot, QString());
    if (outcome.memoryLimitReached) emit scrollMemoryLimitReached(outcome.budget);
    emit scrollCaptureCompleted(result);
}

} // namespace zelmor::service::capture
