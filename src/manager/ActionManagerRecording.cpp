// The recording and scrolling entries of ActionManager: the overlay in its mode, the frame
// around the region, the strip over it, and what comes at the end.
#include "ActionManager.h"

#include "core/Log.h"
#include "core/Toast.h"
#include "platform/ScreenGrab.h"
#include "service/capture/CaptureService.h"
#include "service/capture/ScrollStitcher.h"
#include "service/record/RecordingService.h"
#include "widget/GifEditorDialog.h"
#include "widget/MainWindow.h"
#include "widget/RecordHud.h"
#include "widget/ScrollHud.h"
#include "widget/overlay/CaptureOverlay.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTimer>

namespace zelmor::manager {

namespace {

constexpr int kToastMs = 3000;
constexpr qint64 kMebibyte = 1024 * 1024;
// The overlay closes only after it has asked for the start: what it covered has to be back on
// the screen, repainted by its programs, before the first frame is taken.
constexpr int kOverlayGoneMs = 200;

// Where the strips over a recording or a scroll capture stand: centred, 12 px under the top.
void placeAtTopCentre(QWidget* strip)
{
    const QScreen* primary = QGuiApplication::primaryScreen();
    if (!primary) return;
    const QRect g = primary->availableGeometry();
    strip->adjustSize(); // its width, before it was ever shown
    strip->move(g.center().x() - strip->width() / 2, g.top() + 12);
}

} // namespace

void ActionManager::connectRecording()
{
    using service::record::RecordingService;
    RecordingService* recording = m_recordingService;
    connect(recording, &RecordingService::framesRecorded, this, &ActionManager::tellUnmarked);
    connect(recording, &RecordingService::framesRecorded, this, &ActionManager::openGifEditor);
    connect(recording, &RecordingService::gifFailed, this, [](const QString& reason) {
        core::notifyUser(tr("GIF failed", "record.gif.failed"), reason, kToastMs);
    });
    connect(recording, &RecordingService::memoryLimitReached, this, [](qint64 budget) {
        core::notifyUser(tr("Recording stopped", "record.gif.memoryLimit.title"),
                         tr("The recording reached its memory limit of %1 MB and stopped. The "
                            "frames so far are in the editor.",
                            "record.gif.memoryLimit.body")
                             .arg(budget / kMebibyte),
                         kToastMs);
    });
    connect(recording, &RecordingService::recordingStarted, this, &ActionManager::showRecordHud);
    connect(recording, &RecordingService::elapsedChanged, this, [this](int secs) {
        if (m_recordHud) m_recordHud->setElapsed(secs);
    });
    connect(recording, &RecordingService::pausedChanged, this, [this](bool paused) {
        if (m_recordHud) m_recordHud->setPaused(paused);
    });
    connect(recording, &RecordingService::keyChipsChanged, this, [this](const QStringList& keys) {
        if (m_recordHud) m_recordHud->setKeyChips(keys);
    });
    connect(recording, &RecordingService::timeLeftChanged, this, [this](int secs) {
        if (m_recordHud) m_recordHud->setTimeLeft(secs);
    });
    const auto hideHud = [this] {
        if (m_recordHud) m_recordHud->hide();
    };
    connect(recording, &RecordingService::gifCompleted, this, hideHud);
    connect(recording, &RecordingService::gifFailed, this, hideHud);
    connect(recording, &RecordingService::gifCancelled, this, hideHud);
    connect(recording, &RecordingService::gifCompleted, this, &ActionManager::retireRegionFrame);
    connect(recording, &RecordingService::gifFailed, this, &ActionManager::retireRegionFrame);
    connect(recording, &RecordingService::gifCancelled, this, &ActionManager::retireRegionFrame);
}

bool ActionManager::refuseScreenSeries()
{
    if (!platform::grabsAreSinglePictures()) return false;
    const QString reason =
        tr("This desktop gives Zelmor single screenshots through its screenshot portal, not the "
           "stream of pictures that recording and scroll capture need. Record and scroll on "
           "sway or another wlroots desktop, or in an X11 session.",
           "capture.failed.noScreenStream");
    core::writeLogLine(QStringLiteral("[capture] failed: ") + reason);
    core::notifyUser(tr("Capture failed", "capture.failed.title"), reason, kToastMs);
    return true;
}

void ActionManager::recordGif()
{
    if (refuseScreenSeries()) return;
    const QPixmap pixmap = m_captureService->grabScreens();
    if (pixmap.isNull()) {
        toastCaptureFailed();
        return;
    }
    auto* overlay = takeOverlay(pixmap);
    overlay->setMode(1);
    connect(overlay, &widget::CaptureOverlay::recordStartRequested, this,
            [this](const QRect& rect, int durationSecs, int fps) {
                showRegionFrame(rect);
                QTimer::singleShot(kOverlayGoneMs, m_recordingService,
                                   [=] { m_recordingService->recordGif(rect, durationSecs, fps); });
            });
    overlay->show();
}

// Said after the first recording, not during it, where the notice would be recorded too.
void ActionManager::tellUnmarked()
{
    if (m_recordingService->sawInput() || m_toldUnmarked) return;
    m_toldUnmarked = true;
    core::writeLogLine(QStringLiteral("[record] recorded without click marks and key chips"));
    core::notifyUser(tr("Recorded without marks", "record.unmarked.title"),
                     tr("This desktop lets no program see clicks and keys, so recordings show "
                        "no click marks or key chips.",
                        "record.unmarked.body"),
                     kToastMs);
}

void ActionManager::showRecordHud()
{
    if (!m_recordHud) {
        m_recordHud = new widget::RecordHud(nullptr);
        m_recordHud->hide();
        using service::record::RecordingService;
        connect(m_recordHud, &widget::RecordHud::pauseRequested, m_recordingService,
                &RecordingService::togglePause);
        connect(m_recordHud, &widget::RecordHud::stopRequested, m_recordingService,
                &RecordingService::stop);
        connect(m_recordHud, &widget::RecordHud::cancelRequested, m_recordingService,
                &RecordingService::cancel);
    }
    placeAtTopCentre(m_recordHud);
    m_recordHud->setPaused(false);
    m_recordHud->show();
    m_recordHud->raise();
}

void ActionManager::openGifEditor(std::shared_ptr<const service::record::FrameStore> frames,
                                  int intervalMs, const QString& path)
{
    if (m_recordHud) m_recordHud->hide();
    retireRegionFrame();
    auto* editor = new widget::GifEditorDialog(std::move(frames), intervalMs, path, m_mainWindow);
    editor->exec();
    editor->deleteLater();
}

void ActionManager::connectScrolling()
{
    using service::capture::CaptureService;
    using Step = service::capture::ScrollStitcher::Step;
    CaptureService* capture = m_captureService;
    connect(capture, &CaptureService::scrollCaptureCompleted, this,
            [this](const core::CaptureResult& result) {
                endScroll();
                QString body =
                    tr("Stitched image saved (%1x%2)").arg(result.width).arg(result.height);
                // One toast says all: a second would replace the first at once.
                if (m_scrollLimitBytes > 0)
                    body += QLatin1Char('\n') +
                            tr("The stitched image reached its memory limit of %1 MB; what was "
                               "stitched so far is saved.",
                               "record.scroll.memoryLimit.body")
                                .arg(m_scrollLimitBytes / kMebibyte);
                if (m_scrollAuto && m_scrollStep == int(Step::TooFast))
                    body += QLatin1Char('\n') +
                            tr("The page jumped further than the region in one step, so the "
                               "image ends there.",
                               "record.scroll.autoTooFast.body");
                core::notifyUser(tr("Scroll capture", "record.scroll.saved"), body, kToastMs);
            });
    connect(capture, &CaptureService::scrollCaptureFailed, this, [this](const QString& reason) {
        endScroll();
        core::notifyUser(tr("Scroll failed", "record.scroll.failed"), reason, kToastMs);
    });
    connect(capture, &CaptureService::scrollCaptureCancelled, this, &ActionManager::endScroll);
    connect(capture, &CaptureService::scrollProgressChanged, this, [this](int height) {
        if (m_scrollHud) m_scrollHud->setStitchedHeight(height);
    });
    connect(capture, &CaptureService::scrollStepChanged, this, [this](int step) {
        m_scrollStep = step;
        // The hint stands until rows are appended again, whatever comes between.
        if (!m_scrollHud) return;
        if (step == int(Step::TooFast)) m_scrollHud->setTooFast(true);
        if (step == int(Step::Appended)) m_scrollHud->setTooFast(false);
    });
    connect(capture, &CaptureService::scrollMemoryLimitReached, this,
            [this](qint64 budget) { m_scrollLimitBytes = budget; });
    connect(capture, &CaptureService::scrollSaving, this, [this] {
        if (m_scrollHud) m_scrollHud->setSaving(true);
    });
}

void ActionManager::scrollCapture()
{
    if (refuseScreenSeries()) return;
    const QPixmap pixmap = m_captureService->grabScreens();
    if (pixmap.isNull()) {
        toastCaptureFailed();
        return;
    }
    auto* overlay = takeOverlay(pixmap);
    overlay->setMode(2);
    connect(overlay, &widget::CaptureOverlay::scrollStartRequested, this,
            [this](const QRect& rect) { startScroll(rect); });
    connect(overlay, &widget::CaptureOverlay::autoScrollStartRequested, this,
            [this](const QRect& rect) { startScroll(rect, true); });
    overlay->show();
}

void ActionManager::startScroll(const QRect& rect, bool autoScroll)
{
    showRegionFrame(rect);
    if (!m_scrollHud) {
        m_scrollHud = new widget::ScrollHud(nullptr);
        m_scrollHud->hide();
        using service::capture::CaptureService;
        connect(m_scrollHud, &widget::ScrollHud::stopRequested, m_captureService,
                &CaptureService::stopScrollCapture);
        connect(m_scrollHud, &widget::ScrollHud::stopRequested, m_scrollHud,
                [hud = m_scrollHud] { hud->setSaving(true); });
        connect(m_scrollHud, &widget::ScrollHud::cancelRequested, m_captureService,
                &CaptureService::cancelScrollCapture);
    }
    m_scrollLimitBytes = 0;
    m_scrollAuto = autoScroll;
    m_scrollStep = 0;
    m_scrollHud->setSaving(false);
    m_scrollHud->setTooFast(false);
    m_scrollHud->setStitchedHeight(0);
    placeAtTopCentre(m_scrollHud);
    m_scrollHud->show();
    m_scrollHud->raise();
    QTimer::singleShot(kOverlayGoneMs, m_captureService, [this, rect, autoScroll] {
        m_captureService->captureScrolling(rect, autoScroll);
    });
}

void ActionManager::endScroll()
{
    if (m_scrollHud) m_scrollHud->hide();
    retireRegionFrame();
}

// A new start replaces a frame still standing at once, not later.
void ActionManager::showRegionFrame(const QRect& rect)
{
    delete m_regionFrame;
    m_regionFrame = new widget::RecordRegionFrame(rect, nullptr);
    m_regionFrame->show();
}

void ActionManager::retireRegionFrame()
{
    if (!m_regionFrame) return;
    m_regionFrame->hide();
    m_regionFrame->deleteLater();
    m_regionFrame = nullptr;
}

} // namespace zelmor::manager
