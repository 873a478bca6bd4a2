#include "RecordingService.h"

#include "CapturePipeline.h"
#include "core/ConfigManager.h"
#include "platform/Memory.h"
#include "service/capture/OutputFile.h"

#include <QDateTime>
#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QThread>
#include <QTimer>
#include <QtConcurrent>

#include <algorithm>

namespace zelmor::service::record {

namespace {

constexpr int kTickMs = 100;
constexpr int kPausePollMs = 30;
constexpr int kLongestSide = 1920;
constexpr qint64 kClickMarkMs = 300;
constexpr qint64 kKeyChipMs = 1499;
constexpr int kChipsOnFrame = 5;
constexpr int kChipsOnHud = 6;
// The compressed frames may take this share; the editor, the encoder and the rest of the
// desktop need the remainder.
constexpr double kAvailableMemoryShare = 0.4;
// The HUD tells the time left once it is shorter than this, from the rate over the window.
constexpr int kTimeLeftShownSecs = 30;
constexpr qint64 kRateWindowMs = 5000;

qint64 nowMs()
{
    return QDateTime::currentMSecsSinceEpoch();
}

int evenSide(int side)
{
    return std::max(side & ~1, 2);
}

qint64 measuredBudget()
{
    return qint64(double(platform::availableMemoryBytes()) * kAvailableMemoryShare);
}

void paintClicks(QPainter& painter, const QImage& image, qint64 frameTimeMs,
                 const QList<ClickEvent>& clicks, const QRect& region)
{
    for (const ClickEvent& click : clicks) {
        const qint64 age = frameTimeMs - click.timestampMs;
        if (age < 0 || age > kClickMarkMs) continue;
        const QPoint at = click.pos - region.topLeft();
        if (!image.rect().contains(at)) continue;
        const double p = double(age) / double(kClickMarkMs);
        const int r = int(p * 18.0 + 14.0);
        const int a = int((1.0 - p) * 255.0);
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(QColor(76, 194, 255, a), 3.0, Qt::SolidLine));
        painter.drawEllipse(at, r, r);
        painter.setBrush(QColor(255, 82, 82, a));
        painter.setPen(Qt::NoPen);
        painter.drawEllipse(at, 3, 3);
    }
}

void paintChips(QPainter& painter, const QImage& image, const QStringList& labels)
{
    QFont font(QStringLiteral("Consolas"));
    font.setPointSize(10);
    font.setWeight(QFont::Bold);
    painter.setFont(font);
    const QFontMetrics metrics(font);
    int width = 0;
    for (const QString& label : labels)
        width += metrics.horizontalAdvance(label) + 18;
    int x = (image.width() - width) / 2;
    const int top = image.height() - 16 - metrics.height();
    const int height = metrics.height() + 8;
    for (const QString& label : labels) {
        const int advance = metrics.horizontalAdvance(label);
        const QRect chip(x, top, advance + 14, height);
        painter.setBrush(QColor(26, 26, 31, 230));
        painter.setPen(QPen(QColor(76, 194, 255, 110), 1.0));
        painter.drawRoundedRect(chip, 4, 4);
        painter.setPen(QColor(QStringLiteral("#e4e4e7")));
        painter.drawText(chip, Qt::AlignCenter, label);
        x += advance + 16;
    }
}

} // namespace

RecordingService::RecordingService(QObject* parent) : QObject(parent) {}

RecordingService::~RecordingService()
{
    m_cancelRequested = true;
    for (QFutureWatcher<GifRecordTaskResult>* job : m_jobs)
        job->waitForFinished();
}

QSize RecordingService::outputSize(const QSize& region)
{
    const int longest = std::max(region.width(), region.height());
    if (longest <= kLongestSide) return {evenSide(region.width()), evenSide(region.height())};
    const double scale = double(kLongestSide) / double(longest);
    return {evenSide(int(region.width() * scale)), evenSide(int(region.height() * scale))};
}

int RecordingService::intervalForFps(int fps)
{
    // 30 fps is the most that is offered, and it records at 30.
    return std::clamp(1000 / std::max(fps, 1), 33, 1000);
}

QStringList RecordingService::keyChipsAt(qint64 frameTimeMs, const QList<KeyEvent>& keys)
{
    QStringList labels;
    for (auto key = keys.crbegin(); key != keys.crend() && labels.size() < kChipsOnFrame; ++key) {
        // A key pressed after the frame was taken has no place on it.
        if (key->timestampMs > frameTimeMs) continue;
        if (frameTimeMs - key->timestampMs > kKeyChipMs) break;
        labels.prepend(key->label);
    }
    return labels;
}

void RecordingService::decorateFrame(QImage& image, qint64 frameTimeMs,
                                     const QList<ClickEvent>& clicks, const QList<KeyEvent>& keys,
                                     const QRect& region)
{
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    paintClicks(painter, image, frameTimeMs, clicks, region);
    const QStringList labels = keyChipsAt(frameTimeMs, keys);
    if (!labels.isEmpty()) paintChips(painter, image, labels);
}

void RecordingService::recordGif(QRect region, int durationSecs, int fps)
{
    if (region.isEmpty() || durationSecs < 0 || fps <= 0) {
        emit gifFailed(QStringLiteral("invalid record parameters"));
        return;
    }
    if (!m_inputHook) m_inputHook = new InputHook(this);
    m_inputHook->install();
    m_sawInput = m_inputHook->observing();
    m_paused = false;
    m_stopRequested = false;
    m_cancelRequested = false;
    m_pauseStartedMs = 0;
    m_pausedTotalMs = 0;
    m_startedAtMs = nowMs();
    m_storedBytes = 0;
    m_storedHistory.clear();
    if (!m_tickTimer) {
        m_tickTimer = new QTimer(this);
        connect(m_tickTimer, &QTimer::timeout, this, &RecordingService::onTick);
    }
    m_tickTimer->start(kTickMs);
    emit recordingStarted();

    const QScreen* primary = QGuiApplication::primaryScreen();
    const QPoint origin = primary ? primary->virtualGeometry().topLeft() : QPoint();
    const qint64 budget = m_memoryBudget > 0 ? m_memoryBudget : measuredBudget();
    m_activeBudget = budget;
    const Job job{region.translated(-origin), region, intervalForFps(fps), durationSecs * 1000,
                  outputSize(region.size()),  budget};
    auto* watcher = new QFutureWatcher<GifRecordTaskResult>(this);
    connect(watcher, &QFutureWatcher<GifRecordTaskResult>::finished, this, [this, watcher, budget] {
        m_jobs.removeOne(watcher);
        finish(watcher->result(), budget);
        watcher->deleteLater();
    });
    m_jobs.append(watcher);
    watcher->setFuture(
        QtConcurrent::run(QThreadPool::globalInstance(), [this, job] { return runJob(job); }));
}

void RecordingService::togglePause()
{
    const bool paused = !m_paused.load();
    m_paused = paused;
    if (paused) {
        m_pauseStartedMs = nowMs();
    } else if (m_pauseStartedMs > 0) {
        m_pausedTotalMs += nowMs() - m_pauseStartedMs;
        m_pauseStartedMs = 0;
    }
    emit pausedChanged(paused);
}

void RecordingService::stop()
{
    m_stopRequested = true;
}

void RecordingService::cancel()
{
    m_cancelRequested = true;
}

void RecordingService::onTick()
{
    const qint64 now = nowMs();
    const qint64 runningPause = m_pauseStartedMs > 0 ? now - m_pauseStartedMs : 0;
    emit elapsedChanged(int((now - m_pausedTotalMs - m_startedAtMs - runningPause) / 1000));
    QStringList labels;
    if (m_inputHook) {
        const QList<KeyEvent> keys = m_inputHook->recentKeys();
        for (const KeyEvent& key : keys.mid(std::max<qsizetype>(keys.size() - kChipsOnHud, 0)))
            labels << key.label;
    }
    emit keyChipsChanged(labels);
    emit timeLeftChanged(m_pauseStartedMs > 0 ? -1 : secondsLeft(now));
}

int RecordingService::secondsLeft(qint64 now)
{
    const qint64 stored = m_storedBytes.load();
    m_storedHistory.append({now, stored});
    while (m_storedHistory.size() > 2 && now - m_storedHistory.at(1).first >= kRateWindowMs)
        m_storedHistory.removeFirst();
    const auto [since, before] = m_storedHistory.first();
    if (now - since < 1000 || stored <= before) return -1;
    const double bytesPerMs = double(stored - before) / double(now - since);
    const double secs = double(std::max<qint64>(m_activeBudget - stored, 0)) / bytesPerMs / 1000.0;
    return secs < kTimeLeftShownSecs ? int(secs) : -1;
}

GifRecordTaskResult RecordingService::runJob(const Job& job)
{
    GifRecordTaskResult result;
    result.intervalMs = job.intervalMs;
    InputHook* hook = m_inputHook;
    CapturePipeline pipeline({job.region, job.grabRect, job.outSize, job.memoryBudget,
                              [hook, region = job.region](QImage& frame, qint64 timeMs) {
                                  if (hook)
                                      decorateFrame(frame, timeMs, hook->recentClicks(),
                                                    hook->recentKeys(), region);
                              }});
    const qint64 t0 = nowMs();
    qint64 pauseTotal = 0;
    qint64 pauseBegin = 0;
    qint64 next = t0; // when the next frame is due
    while (!m_cancelRequested) {
        if (m_stopRequested) break;
        const qint64 now = nowMs();
        if (m_paused) {
            if (pauseBegin == 0) pauseBegin = now;
            QThread::msleep(kPausePollMs);
            continue;
        }
        if (pauseBegin != 0) {
            pauseTotal += now - pauseBegin;
            pauseBegin = 0;
            next = now;
        }
        if (job.durationMs > 0 && now - pauseTotal - t0 >= job.durationMs) break;
        m_storedBytes = pipeline.storedBytes();
        // The frame that passed the budget was the last: end as by Stop, keeping what exists.
        if (pipeline.memoryFull()) {
            result.memoryLimitReached = true;
            break;
        }
        if (now >= next) {
            pipeline.sample(now);
            // Due times stay on the grid of the interval; a late wake skips what it missed.
            next = now - next >= job.intervalMs ? now + job.intervalMs : next + job.intervalMs;
        }
        QThread::msleep(ulong(std::clamp<qint64>(next - nowMs(), 1, kPausePollMs)));
    }
    const std::shared_ptr<FrameStore> frames = pipeline.finish();
    result.memoryLimitReached = result.memoryLimitReached || pipeline.memoryFull();
    if (m_cancelRequested) {
        result.cancelled = true;
        return result;
    }
    if (frames->count() == 0) {
        result.error = QStringLiteral("no frames captured");
        return result;
    }
    result.frames = frames;
    const core::ConfigManager& config = core::ConfigManager::instance();
    result.path =
        capture::makeOutputPath(config.outputDir(), config.fileNaming(), QStringLiteral("gif"));
    return result;
}

void RecordingService::finish(const GifRecordTaskResult& result, qint64 budget)
{
    m_tickTimer->stop();
    if (m_inputHook) m_inputHook->uninstall();
    if (result.cancelled) {
        emit gifCancelled();
    } else if (!result.error.isEmpty()) {
        emit gifFailed(result.error);
    } else {
        if (result.memoryLimitReached) emit memoryLimitReached(budget);
        emit framesRecorded(result.frames, result.intervalMs, result.path);
        emit gifCompleted(result.path);
    }
}

} // namespace zelmor::service::record
