#pragma once

#include <QColor>
#include <QImage>
#include <QList>
#include <QPoint>
#include <QRect>
#include <QSize>

#include <array>

// The geometry rules of the capture overlay, as free functions so that each can be
// checked alone.
namespace zelmor::widget::overlay {

inline constexpr int kHandleCount = 8;
inline constexpr int kPanelMargin = 8;

// Handle points 0 top left, 1 top centre, 2 top right, 3 right centre, 4 bottom right,
// 5 bottom centre, 6 bottom left, 7 left centre.
std::array<QPoint, kHandleCount> handlePoints(const QRect& selection);

// The first handle within a Manhattan distance below 13, or -1.
int handleAt(const QRect& selection, const QPoint& pos);

Qt::CursorShape handleCursor(int handle);

// Pulls each edge to the nearest left or right value of the rectangles within 8 pixels.
// Top and bottom compare with x values too; that is how it has always behaved.
QRect snapRect(const QRect& r, const QList<QRect>& snapRects);

// The smallest of the rectangles that contain the point; the earlier on equal areas.
QRect smallestContaining(const QList<QRect>& rects, const QPoint& pos);

// Sets one edge or corner of `r` to `pos` by handle index, normalized.
QRect resizedByHandle(const QRect& r, int handle, const QPoint& pos);

struct ToolbarPlacement
{
    QPoint actionBar;
    QPoint annotationBar; // meaningful only when the annotation bar is shown
};

// Where the action bar (size `actionSize`) and, when `annotationSize` is valid, the
// annotation bar go around a selection inside an overlay of `overlay` size.
ToolbarPlacement placeToolbars(const QRect& selection, const QSize& overlay,
                               const QSize& actionSize, const QSize& annotationSize);

// Right of the selection, or left when it would leave the overlay, and clear of the
// `toolbars` (their bounding rectangle; null for none) where the overlay has room.
QPoint placeSidePanel(const QRect& selection, const QSize& overlay, const QSize& panelSize,
                      const QRect& toolbars = QRect());

// The 140x140 magnifier box for the pointer, flipped near the right and bottom edges.
QRect magnifierBox(const QPoint& pointer, const QSize& overlay);

// The 84x20 size plate above the selection, or below it at the top edge.
QRect sizeLabelRect(const QRect& selection);

// "#RRGGBB" or "rgb(r, g, b)" of the pixel; empty outside the image.
QString colourText(const QImage& image, const QPoint& pos, bool hex);

} // namespace zelmor::widget::overlay
