#include "OverlayPainter.h"

#include "OverlayGeometry.h"
#include "service/capture/AnnotationPainter.h"

#include <QPainter>
#include <QPainterPath>

namespace zelmor::widget::overlay {

namespace {

const QColor kAccent(76, 194, 255);
const QColor kPlate(26, 26, 31, 230);
const QColor kDimSelection(0, 0, 0, 136);
const QColor kDimIdle(0, 0, 0, 51);

QFont sizedFont(const QPainter& painter, int pointSize, bool bold)
{
    QFont font = painter.font();
    font.setPointSize(pointSize);
    if (bold) font.setWeight(QFont::Bold);
    return font;
}

// Everything of the overlay but `hole` darkened.
void dimAround(QPainter& painter, const QSize& size, const QRect& hole, const QColor& shade)
{
    const QRect all(QPoint(0, 0), size);
    painter.setClipRegion(QRegion(all).subtracted(QRegion(hole)));
    painter.fillRect(all, shade);
    painter.setClipping(false);
}

void paintHint(QPainter& painter, const QSize& size, const QString& hint)
{
    painter.fillRect(QRect(QPoint(0, 0), size), kDimIdle);
    painter.setFont(sizedFont(painter, 11, false));
    QRect box = painter.fontMetrics().boundingRect(hint).adjusted(-16, -10, 16, 10);
    box.moveCenter(QRect(QPoint(0, 0), size).center());
    painter.setPen(Qt::NoPen);
    painter.setBrush(kPlate);
    painter.drawRoundedRect(box, 8.0, 8.0);
    painter.setPen(QColor(QStringLiteral("#e4e4e7")));
    painter.drawText(box, Qt::AlignCenter, hint);
}

void paintIdleLayer(QPainter& painter, const QSize& size, const OverlayScene& scene)
{
    if (!scene.hoverRect.isNull() && scene.mode == 0) {
        dimAround(painter, size, scene.hoverRect, kDimSelection);
        painter.setPen(QPen(kAccent, 2.0));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(scene.hoverRect);
        return;
    }
    paintHint(painter, size, scene.hint);
}

void paintFrame(QPainter& painter, const QRect& selection)
{
    painter.setPen(QPen(kAccent, 2.0));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(selection);

    painter.setPen(QPen(kAccent, 1.0));
    painter.setBrush(QColor(QStringLiteral("#ffffff")));
    for (const QPoint& p : handlePoints(selection))
        painter.drawRect(QRect(p - QPoint(4, 4), QSize(8, 8)));

    const QRect plate = sizeLabelRect(selection);
    painter.setPen(Qt::NoPen);
    painter.setBrush(kPlate);
    painter.drawRoundedRect(plate, 4.0, 4.0);
    painter.setFont(sizedFont(painter, 9, true));
    painter.setPen(kAccent);
    painter.drawText(plate, Qt::AlignCenter,
                     QStringLiteral("%1 × %2").arg(selection.width()).arg(selection.height()));
}

void paintShapes(QPainter& painter, const OverlayScene& scene)
{
    painter.save();
    painter.translate(scene.selection.topLeft());
    painter.setClipRect(QRect(QPoint(0, 0), scene.selection.size()));
    for (const service::capture::AnnotationShape& shape : *scene.annotations)
        service::capture::paintAnnotation(painter, *scene.selectionImage, shape);
    if (scene.currentShape)
        service::capture::paintAnnotation(painter, *scene.selectionImage, *scene.currentShape);
    painter.restore();
}

void paintCrosshair(QPainter& painter, const QSize& size, const QPoint& p)
{
    painter.setPen(QPen(QColor(76, 194, 255, 128), 1.0, Qt::DashLine));
    painter.drawLine(QPoint(p.x(), 0), QPoint(p.x(), size.height()));
    painter.drawLine(QPoint(0, p.y()), QPoint(size.width(), p.y()));
}

void paintSelectionLayer(QPainter& painter, const QSize& size, const OverlayScene& scene)
{
    dimAround(painter, size, scene.selection, kDimSelection);
    paintFrame(painter, scene.selection);
    if (scene.hasSelection && scene.selectionImage && !scene.selectionImage->isNull() &&
        scene.annotations)
        paintShapes(painter, scene);
    if (scene.selecting) {
        paintCrosshair(painter, size, scene.mousePos);
        paintMagnifier(painter, size, scene, scene.mousePos);
    }
}

} // namespace

void paintMagnifier(QPainter& painter, const QSize& size, const OverlayScene& scene,
                    const QPoint& p)
{
    const QRect box = magnifierBox(p, size);
    const QRect source(p.x() - 17, p.y() - 17, 35, 35);
    painter.setClipRect(box);
    const bool fromImage = scene.frozenImage && !scene.frozenImage->isNull();
    if (fromImage) {
        painter.drawImage(box, scene.frozenImage->copy(source).scaled(
                                   box.size(), Qt::IgnoreAspectRatio, Qt::FastTransformation));
    } else if (scene.frozenPixmap) {
        painter.drawPixmap(box, scene.frozenPixmap->copy(source).scaled(
                                    box.size(), Qt::IgnoreAspectRatio, Qt::FastTransformation));
    }
    painter.setPen(QPen(QColor(76, 194, 255, 204), 1.0));
    painter.drawLine(QPoint(box.center().x(), box.top() + 4),
                     QPoint(box.center().x(), box.bottom() - 4));
    painter.drawLine(QPoint(box.left() + 4, box.center().y()),
                     QPoint(box.right() - 4, box.center().y()));
    painter.setClipping(false);

    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(kAccent, 2.0));
    painter.drawRect(box.adjusted(0, 0, -1, -1));

    if (scene.altHeld) {
        QRect marker(0, 0, 4, 4);
        marker.moveCenter(box.center());
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(255, 255, 255, 102));
        painter.drawRect(marker);
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(QColor(255, 82, 82, 255), 2.0));
        painter.drawEllipse(QPointF(box.center()), 6.0, 6.0);
    }

    const QImage& picture = fromImage ? *scene.frozenImage : QImage();
    const QRect pictureRect =
        fromImage ? picture.rect() : (scene.frozenPixmap ? scene.frozenPixmap->rect() : QRect());
    if (!pictureRect.contains(p)) return;
    const QString text = fromImage ? colourText(picture, p, scene.hexColor)
                                   : colourText(scene.frozenPixmap->toImage(), p, scene.hexColor);
    const QRect plate(box.left(), box.top() - 20, 96, 18);
    painter.setPen(Qt::NoPen);
    painter.setBrush(kPlate);
    painter.drawRoundedRect(plate, 4.0, 4.0);
    painter.setFont(sizedFont(painter, 9, false));
    painter.setPen(kAccent);
    painter.drawText(plate, Qt::AlignCenter, text);
}

void paintOverlayFrame(QPainter& painter, const QSize& size, const OverlayScene& scene)
{
    painter.setRenderHint(QPainter::Antialiasing);
    // Unscaled: a screen grab fills the overlay exactly, and a smaller re-edited picture
    // stays aligned with its selection instead of being stretched over the desktop.
    if (scene.frozenImage && !scene.frozenImage->isNull()) {
        painter.drawImage(QPoint(0, 0), *scene.frozenImage);
    } else if (scene.frozenPixmap) {
        painter.drawPixmap(QPoint(0, 0), *scene.frozenPixmap);
    }
    const bool selectionShown = scene.selecting || scene.hasSelection || scene.hoverPressed;
    if (selectionShown && !scene.selection.isNull()) {
        paintSelectionLayer(painter, size, scene);
    } else {
        paintIdleLayer(painter, size, scene);
    }
}

} // namespace zelmor::widget::overlay
