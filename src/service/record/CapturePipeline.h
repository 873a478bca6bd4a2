#pragma once

#include "FrameStore.h"

#include <QImage>
#include <QList>
#include <QMutex>
#include <QRect>
#include <QWaitCondition>

#include <functional>
#include <memory>

class QThread;

namespace zelmor::service::record {

// Takes the frames of a recording off the thread that keeps the pace: one thread grabs the
// region, another scales, marks and compresses each frame into the store, in the order the
// frames were asked for. A sample asked while the grab is behind is dropped, so that the pace
// holds and the memory in flight stays bounded.
class CapturePipeline
{
public:
    struct Setup
    {
        QRect region;   // in desktop coordinates, as given
        QRect grabRect; // the same on the canvas of all screens
        QSize outSize;
        qint64 memoryBudget;
        // Paints on a frame what happened at its time; called on the compressing thread.
        std::function<void(QImage& frame, qint64 timeMs)> decorate;
    };

    explicit CapturePipeline(Setup setup);
    // Finishes the frames in flight.
    ~CapturePipeline();
    CapturePipeline(const CapturePipeline&) = delete;
    CapturePipeline& operator=(const CapturePipeline&) = delete;

    // Asks for a frame taken at `timeMs`; false when it is dropped.
    bool sample(qint64 timeMs);
    // The compressed frames passed the budget; no frame is taken any more.
    bool memoryFull() const { return m_memoryFull.load(); }
    qint64 storedBytes() const { return m_store->storedBytes(); }
    // Waits for the frames in flight and ends both threads; the store is closed.
    std::shared_ptr<FrameStore> finish();

private:
    struct Grabbed
    {
        qint64 timeMs = 0;
        QImage image;
    };
    void grabLoop();
    void compressLoop();

    const Setup m_setup;
    std::shared_ptr<FrameStore> m_store;
    std::atomic_bool m_memoryFull{false};
    QMutex m_mutex;
    QWaitCondition m_changed;
    QList<qint64> m_toGrab;
    QList<Grabbed> m_toCompress;
    bool m_ending = false;
    bool m_grabbingDone = false;
    std::unique_ptr<QThread> m_grabber;
    std::unique_ptr<QThread> m_compressor;
};

} // namespace zelmor::service::record
