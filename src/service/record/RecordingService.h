#pragma once

#include "FrameStore.h"
#include "InputHook.h"

#include <QFutureWatcher>
#include <QImage>
#include <QList>
#include <QObject>
#include <QPair>
#include <QRect>
#include <QSize>
#include <QString>
#include <QStringList>

#include <atomic>

class QTimer;

namespace zelmor::service::record {

// What the recording job hands back.
struct GifRecordTaskResult
{
    bool cancelled = false;
    QString error;
    QString path;
    std::shared_ptr<const FrameStore> frames;
    int intervalMs = 100;
    bool memoryLimitReached = false; // it ended as by Stop, with the frames so far
};

// Records a region of the screen into compressed frames: a pool thread keeps the pace, and
// the grab, the marks of clicks and keys, and the compression run on threads of their own.
// It writes no file: the frames go to the editor with the path to write.
class RecordingService : public QObject
{
    Q_OBJECT
public:
    explicit RecordingService(QObject* parent = nullptr);
    // Waits for a running recording to end: its job uses this object.
    ~RecordingService() override;

    // At most this many bytes of compressed frames, at the next start; 0 measures it then.
    void setMemoryBudget(qint64 bytes) { m_memoryBudget = bytes; }

    // The frame size for a region: even sides of at least 2, the longer side at most 1920.
    static QSize outputSize(const QSize& region);
    // Whether the last recording saw clicks and keys to mark.
    bool sawInput() const { return m_sawInput; }
    static int intervalForFps(int fps);
    // The labels a frame taken at `frameTimeMs` shows: the newest five of the last 1.5 s.
    static QStringList keyChipsAt(qint64 frameTimeMs, const QList<KeyEvent>& keys);
    // Paints the clicks and the key chips of the moment `frameTimeMs` on a frame of `region`.
    static void decorateFrame(QImage& image, qint64 frameTimeMs, const QList<ClickEvent>& clicks,
                              const QList<KeyEvent>& keys, const QRect& region);

signals:
    void recordingStarted();
    void framesRecorded(std::shared_ptr<const zelmor::service::record::FrameStore> frames,
                        int intervalMs, QString path);
    void gifCompleted(QString path);
    void gifFailed(QString reason);
    void gifCancelled();
    void elapsedChanged(int secs);
    void pausedChanged(bool paused);
    void keyChipsChanged(QStringList labels);
    // Every 100 ms: the seconds until the memory budget is reached at the recent rate, or -1
    // while that is 30 s or more away.
    void timeLeftChanged(int secs);
    // Comes before framesRecorded when the frames reached the memory budget.
    void memoryLimitReached(qint64 budgetBytes);

public slots:
    void recordGif(QRect region, int durationSecs, int fps);
    void togglePause();
    void stop();
    void cancel();

private:
    struct Job
    {
        QRect grabRect;
        QRect region;
        int intervalMs;
        int durationMs;
        QSize outSize;
        qint64 memoryBudget;
    };
    GifRecordTaskResult runJob(const Job& job);
    void onTick();
    void finish(const GifRecordTaskResult& result, qint64 budget);
    int secondsLeft(qint64 now);

    InputHook* m_inputHook = nullptr;
    bool m_sawInput = false;
    QTimer* m_tickTimer = nullptr;
    std::atomic_bool m_paused{false};
    std::atomic_bool m_stopRequested{false};
    std::atomic_bool m_cancelRequested{false};
    qint64 m_startedAtMs = 0;
    qint64 m_pauseStartedMs = 0;
    qint64 m_pausedTotalMs = 0;
    qint64 m_memoryBudget = 0;
    qint64 m_activeBudget = 0;
    std::atomic<qint64> m_storedBytes{0};               // of the running recording
    QList<QPair<qint64, qint64>> m_storedHistory;       // (time, bytes) of the last seconds
    QList<QFutureWatcher<GifRecordTaskResult>*> m_jobs; // not yet finished
};

} // namespace zelmor::service::record

Q_DECLARE_METATYPE(std::shared_ptr<const zelmor::service::record::FrameStore>)
