#pragma once

#include "ScrollMatch.h"

#include <QImage>
#include <QObject>

#include <vector>

namespace zelmor::service::capture {

// Grows one tall image out of frames of a fixed region taken while it scrolls: each frame is
// compared with the last frame whose rows are in the image, the displacement of the moving
// rows between the two is found, and the rows that scrolled into view are appended. Rows that
// stay put at the top and bottom (a sticky header or footer) are kept once, at their place.
class ScrollStitcher : public QObject
{
    Q_OBJECT
public:
    enum Result { Used = 0, Rejected = 1, Stop = 2 };

    // What the last frame was found to be.
    enum class Step {
        None,       // no frame yet, or a null one
        Started,    // the first frame: the image begins with it
        Appended,   // scrolled down; the rows that came into view were appended
        Still,      // nothing moved
        Back,       // scrolled up, within what the image already holds
        TooFast,    // no rows in common: scrolled further than the region in one step
        Unreliable, // the picture allows no certain displacement (flat, repetitive, changing)
        MemoryFull  // the image reached its memory bound
    };

    // `idleLimit` still frames in a row end the run; `maxCanvasBytes` bounds the stitched
    // image, 0 leaves it unbounded.
    explicit ScrollStitcher(int idleLimit, QObject* parent = nullptr, qint64 maxCanvasBytes = 0);

    // Used (first, appended, still or scrolled back), Rejected (a null frame, or no reliable
    // match: nothing is appended and the next frame is compared with the same reference), or
    // Stop: the idle limit or the memory bound was reached, and the caller shall stop.
    int addFrame(const QImage& frame);

    Step lastStep() const { return m_lastStep; }
    // Rows the content moved up between the reference and the last frame; negative when it
    // moved down. 0 unless the last step was Appended, Still or Back.
    int lastDisplacement() const { return m_lastDisplacement; }

    // The stitched image so far, Format_ARGB32_Premultiplied; null before the first frame.
    QImage canvas() const;
    int canvasHeight() const { return m_canvasHeight; }
    // Stop came from the memory bound, not from still frames.
    bool memoryLimitReached() const { return m_lastStep == Step::MemoryFull; }

private:
    int start(const QImage& frame);
    int settle(Step step, int result);
    int countStill(const QImage& frame, FrameRows rows);
    int stopForMemory();
    int appendMoved(const QImage& frame, FrameRows rows, const Displacement& moved);
    // Writes the frame's rows from `firstRow` on at the image's row `at`, which becomes the
    // image's end; false when the room for them is missing.
    bool writeRows(const QImage& frame, int firstRow, int at);
    bool reserveRows(qint64 rows);

    int m_idleLimit;
    int m_idleCount = 0;
    QImage m_reference; // the frame the image's last rows came from
    FrameRows m_referenceRows;
    // The tallest footer seen: one that later changes in place (a status line) stays a footer.
    int m_footerRows = 0;
    // The image in blocks of rows: it grows without moving what it holds, and the last block
    // may have room to spare.
    std::vector<QImage> m_blocks;
    int m_canvasWidth = 0;
    int m_canvasHeight = 0;
    qint64 m_maxCanvasBytes;
    Step m_lastStep = Step::None;
    int m_lastDisplacement = 0;
};

} // namespace zelmor::service::capture
