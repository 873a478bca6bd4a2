#pragma once

#include <QImage>
#include <QObject>

namespace zelmor::service::capture {

// Grows one tall image out of frames of a fixed region taken while the user scrolls it: where
// the bottom of the previous frame reappears near the top of the new one, what lies below is
// new and is appended.
class ScrollStitcher : public QObject
{
    Q_OBJECT
public:
    enum Result { Used = 0, Rejected = 1, Stop = 2 };

    // `maxCanvasBytes` bounds the stitched image; 0 leaves it unbounded.
    ScrollStitcher(int overlapPx, int sadThreshold, int idleLimit, QObject* parent = nullptr,
                   qint64 maxCanvasBytes = 0);

    // Used, Rejected (a null frame or no match), or Stop: the idle limit or the memory bound
    // was reached, and the caller shall stop.
    int addFrame(const QImage& frame);

    // The stitched image so far, Format_ARGB32_Premultiplied; null before the first frame.
    QImage canvas() const;
    int canvasHeight() const;
    // Stop came from the memory bound, not from still frames.
    bool memoryLimitReached() const;

    struct Overlap
    {
        bool match = false;
        int offset = 0;
        double score = 0;
    };
    // Where `strip` best matches near the top of `frame`, by the mean luma difference.
    Overlap findOverlap(const QImage& frame, const QImage& strip) const;

private:
    int start(const QImage& frame);
    int countStill(const QImage& frame);
    int stopForMemory();
    bool exceedsBound(qint64 bytes) const;
    // Appends `rows` rows of `frame` from `firstRow`; false when the room for them is missing.
    bool append(const QImage& frame, int firstRow, int rows);
    bool reserveRows(qint64 rows);

    int m_overlapPx;
    int m_sadThreshold;
    int m_idleLimit;
    int m_idleCount = 0;
    QImage m_previousFrame;
    QImage m_canvas; // may hold rows beyond canvasHeight(): room to grow
    int m_canvasHeight = 0;
    qint64 m_maxCanvasBytes;
    bool m_memoryLimitReached = false;
};

} // namespace zelmor::service::capture
