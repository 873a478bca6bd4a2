#pragma once

#include <QColor>
#include <QList>
#include <QPointF>
#include <QRgb>
#include <QString>

#include <array>

namespace zelmor::service::capture {

// One drawn mark, kept as a record and repainted on every frame rather than rasterised.
struct AnnotationShape
{
    enum Kind : qint32 {
        Rect = 0,
        Ellipse = 1,
        Arrow = 2,
        Line = 3,
        Brush = 4,
        Highlight = 5,
        Mosaic = 6,
        Blur = 7,
        Text = 8,
        Counter = 9,
        Stamp = 10,
    };

    qint32 kind = Rect;
    QList<QPointF> points; // relative to the top left of the selection
    QColor color = Qt::red;
    qint32 width = 3;
    qint32 fontSize = 18;  // also the radius measure of counter and stamp
    QString text;          // text, counter number or stamp symbol
    qint32 blockSize = 12; // mosaic block edge, or blur strength
};

// The shape kind an overlay tool draws: tools 1..11 give kinds 0..10, anything else -1.
int shapeKindForTool(int tool);

struct PaletteColour
{
    const char* name;
    QRgb argb;
};

// The nine annotation colours in the order of the digits 1..9 that select them.
const std::array<PaletteColour, 9>& annotationPalette();

} // namespace zelmor::service::capture
