#pragma once

#include "service/capture/AnnotationShape.h"

#include <QImage>
#include <QList>
#include <QPixmap>
#include <QRect>
#include <QString>

class QPainter;

namespace zelmor::widget::overlay {

// Everything one overlay frame shows, borrowed from the overlay for the time of a paint.
struct OverlayScene
{
    const QImage* frozenImage = nullptr;
    const QPixmap* frozenPixmap = nullptr;
    const QImage* selectionImage = nullptr;
    const QList<service::capture::AnnotationShape>* annotations = nullptr;
    const service::capture::AnnotationShape* currentShape =
        nullptr; // the shape being drawn, or null
    QString hint;
    QRect selection;
    QRect hoverRect;
    QPoint mousePos;
    int mode = 0;
    bool selecting = false;
    bool hasSelection = false;
    bool hoverPressed = false;
    bool altHeld = false;
    bool hexColor = true;
};

// Paints the whole frame of an overlay of `size` onto `painter`.
void paintOverlayFrame(QPainter& painter, const QSize& size, const OverlayScene& scene);

void paintMagnifier(QPainter& painter, const QSize& size, const OverlayScene& scene,
                    const QPoint& p);

} // namespace zelmor::widget::overlay
