#include "OverlayGeometry.h"

#include <cstdlib>

namespace zelmor::widget::overlay {

namespace {

constexpr int kHandleReach = 13;
constexpr int kSnapReach = 9;

int snapEdge(int edge, const QList<QRect>& snapRects)
{
    int best = kSnapReach;
    int value = edge;
    for (const QRect& r : snapRects) {
        for (int candidate : {r.left(), r.right()}) {
            const int distance = std::abs(candidate - edge);
            if (distance < best) {
                best = distance;
                value = candidate;
            }
        }
    }
    return value;
}

int clampTo(int value, int low, int high)
{
    return qMax(low, qMin(value, high));
}

} // namespace

std::array<QPoint, kHandleCount> handlePoints(const QRect& s)
{
    const QPoint c = s.center();
    return {QPoint(s.left(), s.top()),    QPoint(c.x(), s.top()),        QPoint(s.right(), s.top()),
            QPoint(s.right(), c.y()),     QPoint(s.right(), s.bottom()), QPoint(c.x(), s.bottom()),
            QPoint(s.left(), s.bottom()), QPoint(s.left(), c.y())};
}

int handleAt(const QRect& selection, const QPoint& pos)
{
    if (selection.isNull() || selection.isEmpty()) return -1;
    const auto points = handlePoints(selection);
    for (int i = 0; i < kHandleCount; ++i)
        if ((points[i] - pos).manhattanLength() < kHandleReach) return i;
    return -1;
}

Qt::CursorShape handleCursor(int handle)
{
    switch (handle) {
    case 0:
    case 4:
        return Qt::SizeFDiagCursor;
    case 1:
    case 5:
        return Qt::SizeVerCursor;
    case 2:
    case 6:
        return Qt::SizeBDiagCursor;
    default:
        return Qt::SizeHorCursor;
    }
}

QRect snapRect(const QRect& r, const QList<QRect>& snapRects)
{
    if (r.isNull() || snapRects.isEmpty()) return r;
    QRect snapped = r;
    snapped.setLeft(snapEdge(r.left(), snapRects));
    snapped.setTop(snapEdge(r.top(), snapRects));
    snapped.setRight(snapEdge(r.right(), snapRects));
    snapped.setBottom(snapEdge(r.bottom(), snapRects));
    return snapped.normalized();
}

QRect smallestContaining(const QList<QRect>& rects, const QPoint& pos)
{
    QRect best;
    qint64 bestArea = 0;
    for (const QRect& r : rects) {
        if (!r.contains(pos)) continue;
        const qint64 area = qint64(r.height()) * r.width();
        if (best.isNull() || area < bestArea) {
            best = r;
            bestArea = area;
        }
    }
    return best;
}

QRect resizedByHandle(const QRect& start, int handle, const QPoint& pos)
{
    QRect r = start;
    switch (handle) {
    case 0:
        r.setTopLeft(pos);
        break;
    case 1:
        r.setTop(pos.y());
        break;
    case 2:
        r.setTopRight(pos);
        break;
    case 3:
        r.setRight(pos.x());
        break;
    case 4:
        r.setBottomRight(pos);
        break;
    case 5:
        r.setBottom(pos.y());
        break;
    case 6:
        r.setBottomLeft(pos);
        break;
    case 7:
        r.setLeft(pos.x());
        break;
    }
    return r.normalized();
}

ToolbarPlacement placeToolbars(const QRect& s, const QSize& overlay, const QSize& actionSize,
                               const QSize& annotationSize)
{
    const int M = kPanelMargin;
    const int H = overlay.height();
    const int th = actionSize.height();
    int actionTop = 0;
    int annotationTop = 0;
    const bool withAnnotation = annotationSize.isValid();
    if (withAnnotation) {
        const int ah = annotationSize.height();
        if (s.bottom() + 16 + th + ah <= H - M) {
            actionTop = s.bottom() + 10;
            annotationTop = s.bottom() + 16 + th;
        } else if (s.top() - (16 + th + ah) >= 8) {
            actionTop = s.top() - 10 - th;
            annotationTop = actionTop - ah - 6;
        } else {
            actionTop = clampTo(s.bottom() - 10 - th, ah + 14, H - th - M);
            annotationTop = actionTop - ah - 6;
            if (annotationTop < 8) {
                annotationTop = 8;
                actionTop = ah + 14;
            }
        }
    } else if (s.bottom() + 10 + th <= H - M) {
        actionTop = s.bottom() + 10;
    } else if (s.top() - 10 - th >= 8) {
        actionTop = s.top() - 10 - th;
    } else {
        actionTop = clampTo(s.bottom() - 10 - th, 8, H - th - M);
    }

    const auto place = [&](const QSize& size, int top) {
        const int left = s.center().x() - size.width() / 2;
        return QPoint(clampTo(left, M, overlay.width() - size.width() - M),
                      clampTo(top, 8, H - size.height() - 8));
    };
    ToolbarPlacement placement;
    placement.actionBar = place(actionSize, actionTop);
    if (withAnnotation) placement.annotationBar = place(annotationSize, annotationTop);
    return placement;
}

QPoint placeSidePanel(const QRect& s, const QSize& overlay, const QSize& panelSize,
                      const QRect& toolbars)
{
    const int M = kPanelMargin;
    const int w = panelSize.width();
    const int h = panelSize.height();
    const auto beside = [&](const QRect& r, int top) {
        int left = r.right() + 10;
        if (left + w > overlay.width() - M) left = r.left() - 10 - w;
        return QRect(QPoint(left, clampTo(top, M, overlay.height() - h - M)), panelSize);
    };
    // Beside the selection at its top; else beside it, ending above the toolbars; else beside
    // the toolbars. A small selection would otherwise have the panel over the toolbars.
    const QRect first = beside(s, s.top());
    if (toolbars.isNull()) return first.topLeft();
    const QRect candidates[] = {first, beside(s, toolbars.top() - 10 - h),
                                beside(toolbars, s.top())};
    for (const QRect& r : candidates) {
        const bool inside = r.left() >= 0 && r.right() < overlay.width();
        if (inside && !r.intersects(toolbars)) return r.topLeft();
    }
    return first.topLeft();
}

QRect magnifierBox(const QPoint& p, const QSize& overlay)
{
    QRect box(p + QPoint(20, 20), QSize(140, 140));
    if (box.x() + box.width() > overlay.width() - 8) box.moveLeft(p.x() - 160);
    if (box.y() + box.height() > overlay.height() - 8) box.moveTop(p.y() - 160);
    return box;
}

QRect sizeLabelRect(const QRect& selection)
{
    QRect plate(selection.left(), selection.top() - 24, 84, 20);
    if (plate.top() < 0) plate.moveTop(selection.bottom() + 4);
    return plate;
}

QString colourText(const QImage& image, const QPoint& pos, bool hex)
{
    if (!image.rect().contains(pos)) return QString();
    const QRgb rgb = image.pixel(pos);
    if (!hex)
        return QStringLiteral("rgb(%1, %2, %3)").arg(qRed(rgb)).arg(qGreen(rgb)).arg(qBlue(rgb));
    return QStringLiteral("#%1%2%3")
        .arg(qRed(rgb), 2, 16, QLatin1Char('0'))
        .arg(qGreen(rgb), 2, 16, QLatin1Char('0'))
        .arg(qBlue(rgb), 2, 16, QLatin1Char('0'))
        .toUpper();
}

} // namespace zelmor::widget::overlay
