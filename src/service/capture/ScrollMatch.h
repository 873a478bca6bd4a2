#pragma once

#include <QImage>

#include <vector>

namespace zelmor::service::capture {

// Each row of a frame cut into a few vertical stripes, every piece reduced to a hash: rows are
// then compared by their hashes, and a stripe that differs (a scroll bar's thumb, a blinking
// caret) spoils one piece of a row, not the row.
class FrameRows
{
public:
    FrameRows() = default;
    // The left `width` columns of a 32-bit image.
    FrameRows(const QImage& frame, int width);

    int height() const { return m_height; }
    int width() const { return m_width; }
    int stripes() const { return m_stripes; }
    quint64 cell(int row, int stripe) const { return m_cells[size_t(row * m_stripes + stripe)]; }
    // One colour all along: such a piece tells nothing about where it is.
    bool flat(int row, int stripe) const { return m_flat[size_t(row * m_stripes + stripe)]; }
    bool sameRow(int row, const FrameRows& other, int otherRow) const;
    // Pixels of the piece that differ from the other frame's piece, counted up to `enough`.
    int differingPixels(int row, int stripe, const FrameRows& other, int otherRow,
                        int enough) const;

private:
    QImage m_frame;
    int m_height = 0;
    int m_width = 0;
    int m_stripes = 0;
    std::vector<quint64> m_cells;
    std::vector<bool> m_flat;
};

// How the content of `current` lies against `reference`.
struct Displacement
{
    enum Kind { Moved, Still, TooFast, Unreliable };
    Kind kind = Unreliable;
    int rows = 0;       // how far the content moved up (negative: down); for Moved and Still
    int headerRows = 0; // rows at the top that stayed put in both frames
    int footerRows = 0; // and at the bottom
};

// The displacement is the one that most pieces of rows which occur once in each frame agree
// on, checked against all rows the two frames share; rows that stayed put at the top and the
// bottom are set aside as fixed bands.
Displacement findDisplacement(const FrameRows& reference, const FrameRows& current);

} // namespace zelmor::service::capture
