#pragma once

#include <QRect>

class QImage;
class QPainter;

namespace zelmor::service::capture {

struct AnnotationShape;

// Paints one shape and leaves the painter's state as it found it. `source` is the picture
// under the shapes, in the painter's coordinates and without marks: mosaic and blur read it,
// never earlier shapes. A list is painted by calling this per shape, in order, on one painter.
void paintAnnotation(QPainter& painter, const QImage& source, const AnnotationShape& shape);

// Fills blocks of `blockSize` (at least 2) laid out from the corner of `rect` with the mean
// colour of the source pixels under them; the last row and column may stick out of `rect`.
void paintMosaic(QPainter& painter, const QImage& source, QRect rect, int blockSize);

} // namespace zelmor::service::capture
