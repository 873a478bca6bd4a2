#include "AnnotationPainter.h"

#include "AnnotationShape.h"

#include <QImage>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace zelmor::service::capture {

namespace {

constexpr double kArrowHalfAngle = 0.4487989505128276; // pi / 7
// Far beyond any desktop, yet small enough that pixel arithmetic never overflows and the
// raster engine clips rather than walks.
constexpr double kCoordinateLimit = 1 << 20;
constexpr int kSizeLimit = 2000; // pen width and font size

bool drawable(double v)
{
    return std::isfinite(v) && std::abs(v) <= kCoordinateLimit;
}

bool withinLimits(const AnnotationShape& shape)
{
    const auto inRange = [](int v, int low) { return v >= low && v <= kSizeLimit; };
    return inRange(shape.width, 0) && inRange(shape.fontSize, 1) &&
           std::all_of(shape.points.cbegin(), shape.points.cend(),
                       [](QPointF p) { return drawable(p.x()) && drawable(p.y()); });
}

double boundedCoordinate(double v)
{
    return std::isfinite(v) ? std::clamp(v, -kCoordinateLimit, kCoordinateLimit) : 0.0;
}

// The shape as it may be painted: coordinates and sizes held to what can be drawn at all.
AnnotationShape bounded(const AnnotationShape& shape)
{
    AnnotationShape out = shape;
    for (QPointF& p : out.points)
        p = QPointF(boundedCoordinate(p.x()), boundedCoordinate(p.y()));
    out.width = std::clamp(shape.width, 0, kSizeLimit);
    out.fontSize = std::clamp(shape.fontSize, 1, kSizeLimit);
    return out;
}

void setBoldFont(QPainter& painter, int pointSize)
{
    QFont font = painter.font();
    font.setPointSize(pointSize);
    font.setWeight(QFont::Bold);
    painter.setFont(font);
}

// Keeps the round cap and join of the shape's pen.
void setPenColour(QPainter& painter, const QColor& color, int width)
{
    QPen pen = painter.pen();
    pen.setColor(color);
    pen.setWidth(width);
    painter.setPen(pen);
}

QRectF circleAround(QPointF centre, double radius)
{
    return QRectF(centre.x() - radius, centre.y() - radius, 2 * radius, 2 * radius);
}

void drawPolyline(QPainter& painter, const QList<QPointF>& points)
{
    if (points.size() == 1) {
        painter.drawPoint(points.first());
        return;
    }
    QPainterPath path(points.first());
    for (qsizetype i = 1; i < points.size(); ++i)
        path.lineTo(points.at(i));
    painter.drawPath(path);
}

void drawArrow(QPainter& painter, QPointF from, QPointF tip, const QColor& color, int width)
{
    painter.drawLine(from, tip);
    const double angle = std::atan2(tip.y() - from.y(), tip.x() - from.x());
    const double length = std::max(3.0 * width, 10.0);
    const QPointF head[3] = {
        tip,
        tip -
            length * QPointF(std::cos(angle - kArrowHalfAngle), std::sin(angle - kArrowHalfAngle)),
        tip -
            length * QPointF(std::cos(angle + kArrowHalfAngle), std::sin(angle + kArrowHalfAngle)),
    };
    painter.setBrush(color);
    painter.drawPolygon(head, 3, Qt::OddEvenFill);
}

// Two box passes along the rows only; the missing vertical pass is the intended look. Taps
// past either end of a row repeat its end pixel; prefix sums keep a row linear in its width
// whatever the radius.
QImage blurRows(const QImage& image, int radius)
{
    const int w = image.width();
    const qint64 taps = 2 * qint64(radius) + 1;
    QImage out(image.size(), image.format());
    std::vector<std::array<qint64, 4>> prefix(size_t(w) + 1);
    for (int y = 0; y < image.height(); ++y) {
        const auto* in = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        auto* dst = reinterpret_cast<QRgb*>(out.scanLine(y));
        for (int x = 0; x < w; ++x)
            prefix[size_t(x) + 1] = {
                prefix[size_t(x)][0] + qAlpha(in[x]), prefix[size_t(x)][1] + qRed(in[x]),
                prefix[size_t(x)][2] + qGreen(in[x]), prefix[size_t(x)][3] + qBlue(in[x])};
        const QRgb first = in[0], last = in[w - 1];
        for (int x = 0; x < w; ++x) {
            const qint64 from = qint64(x) - radius, to = qint64(x) + radius;
            const qint64 before = std::max<qint64>(0, -from),
                         after = std::max<qint64>(0, to - (w - 1));
            const size_t lo = size_t(std::max<qint64>(from, 0)),
                         hi = size_t(std::min<qint64>(to, w - 1)) + 1;
            const auto channel = [&](int c, int (*of)(QRgb)) {
                return int((prefix[hi][c] - prefix[lo][c] + before * of(first) + after * of(last)) /
                           taps);
            };
            dst[x] =
                qRgba(channel(1, qRed), channel(2, qGreen), channel(3, qBlue), channel(0, qAlpha));
        }
    }
    return out;
}

void paintBlur(QPainter& painter, const QImage& source, QRect rect, int blockSize)
{
    rect &= source.rect();
    if (rect.isEmpty()) return;
    QImage image = source.copy(rect).convertToFormat(QImage::Format_ARGB32_Premultiplied);
    int radius = blockSize / 4;
    if (radius < 2) radius = 1;
    for (int pass = 0; pass < 2; ++pass)
        image = blurRows(image, radius);
    painter.drawImage(rect.topLeft(), image);
}

void paintText(QPainter& painter, const AnnotationShape& shape)
{
    setBoldFont(painter, shape.fontSize);
    const QPointF at = shape.points.first();
    const auto drawAt = [&](QPointF p) {
        painter.drawText(QRectF(p, QSizeF(4000, 4000)), Qt::AlignLeft | Qt::AlignTop, shape.text);
    };
    // The white halo is all the background a text gets.
    painter.setPen(Qt::white);
    for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx)
            if (dx != 0 || dy != 0) drawAt(at + QPointF(dx, dy));
    painter.setPen(shape.color);
    drawAt(at);
}

void paintCounter(QPainter& painter, const AnnotationShape& shape)
{
    const int radius = shape.fontSize > 10 ? shape.fontSize : 10;
    const QRectF circle = circleAround(shape.points.first(), radius);
    setPenColour(painter, Qt::white, std::max(2, shape.width));
    painter.setBrush(shape.color);
    painter.drawEllipse(circle);
    setBoldFont(painter, shape.fontSize);
    painter.setPen(Qt::white);
    painter.drawText(circle, Qt::AlignCenter, shape.text);
}

void paintStamp(QPainter& painter, const AnnotationShape& shape)
{
    const QString text = shape.text.isEmpty() ? QStringLiteral("\u2713") : shape.text;
    const int radius = std::max(2 * shape.fontSize, 14);
    const QRectF circle = circleAround(shape.points.first(), radius);
    QColor fill = shape.color;
    fill.setAlphaF(0.55f);
    painter.setBrush(fill);
    setPenColour(painter, shape.color, std::max(2, shape.width));
    painter.drawEllipse(circle);
    painter.setBrush(Qt::NoBrush);
    setPenColour(painter, shape.color, 1);
    painter.drawEllipse(circle.adjusted(3, 3, -3, -3));
    setBoldFont(painter, std::max(shape.fontSize, 10));
    painter.setPen(Qt::white);
    painter.drawText(circle, Qt::AlignCenter, text);
}

// QImage::pixelColor's channels, read straight from the scan line for the common 32-bit
// formats; everything else, and premultiplied pixels that are not opaque, take pixelColor.
struct PixelReader
{
    const QImage& image;
    bool raw32;
    bool premultiplied;

    explicit PixelReader(const QImage& img)
        : image(img),
          raw32(img.format() == QImage::Format_RGB32 || img.format() == QImage::Format_ARGB32 ||
                img.format() == QImage::Format_ARGB32_Premultiplied),
          premultiplied(img.format() == QImage::Format_ARGB32_Premultiplied)
    {}

    void addRow(int y, int x0, int x1, qint64& r, qint64& g, qint64& b) const
    {
        const auto* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = x0; x < x1; ++x) {
            if (raw32 && (!premultiplied || qAlpha(line[x]) == 255)) {
                r += qRed(line[x]);
                g += qGreen(line[x]);
                b += qBlue(line[x]);
            } else {
                const QColor c = image.pixelColor(x, y);
                r += c.red();
                g += c.green();
                b += c.blue();
            }
        }
    }
};

} // namespace

void paintMosaic(QPainter& painter, const QImage& source, QRect rect, int blockSize)
{
    if (source.isNull() || rect.isEmpty()) return;
    const qint64 edge = std::clamp<qint64>(blockSize, 2, qint64(kCoordinateLimit));
    const PixelReader reader(source);
    // Blocks stay on the grid of the rectangle's corner; those wholly off the image are
    // skipped without a walk, so the work is bounded by the image.
    const auto firstOnImage = [edge](qint64 start) {
        return start >= 0 ? start : start + (-start) / edge * edge;
    };
    const qint64 bottom = std::min<qint64>(rect.bottom(), source.height());
    const qint64 right = std::min<qint64>(rect.right(), source.width());
    for (qint64 y = firstOnImage(rect.top()); y < bottom; y += edge) {
        const int y0 = int(std::max<qint64>(y, 0));
        const int y1 = int(std::min<qint64>(y + edge, source.height()));
        for (qint64 x = firstOnImage(rect.left()); x < right; x += edge) {
            const int x0 = int(std::max<qint64>(x, 0));
            const int x1 = int(std::min<qint64>(x + edge, source.width()));
            if (x0 >= x1 || y0 >= y1) continue;
            qint64 r = 0, g = 0, b = 0;
            for (int py = y0; py < y1; ++py)
                reader.addRow(py, x0, x1, r, g, b);
            const qint64 count = qint64(x1 - x0) * (y1 - y0);
            painter.fillRect(QRect(int(x), int(y), int(edge), int(edge)),
                             QColor(int(r / count), int(g / count), int(b / count), 255));
        }
    }
}

void paintAnnotation(QPainter& painter, const QImage& source, const AnnotationShape& given)
{
    // The overlay repaints every shape on every frame: a copy only for shapes out of range.
    AnnotationShape held;
    const AnnotationShape& shape = withinLimits(given) ? given : (held = bounded(given));
    painter.save();
    painter.setPen(QPen(shape.color, shape.width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.setRenderHint(QPainter::Antialiasing, true);

    const QList<QPointF>& pts = shape.points;
    const bool twoPoints = pts.size() >= 2;
    const QRectF span = twoPoints ? QRectF(pts[0], pts[1]).normalized() : QRectF();

    if (!pts.isEmpty()) {
        switch (shape.kind) {
        case AnnotationShape::Rect:
            if (twoPoints) painter.drawRect(span);
            break;
        case AnnotationShape::Ellipse:
            if (twoPoints) painter.drawEllipse(span);
            break;
        case AnnotationShape::Line:
            if (twoPoints) painter.drawLine(pts[0], pts[1]);
            break;
        case AnnotationShape::Arrow:
            if (twoPoints) drawArrow(painter, pts[0], pts[1], shape.color, shape.width);
            break;
        case AnnotationShape::Brush:
            drawPolyline(painter, pts);
            break;
        case AnnotationShape::Highlight: {
            QColor color = shape.color;
            color.setAlphaF(0.35f);
            setPenColour(painter, color, 3 * shape.width);
            drawPolyline(painter, pts);
            break;
        }
        case AnnotationShape::Mosaic:
            if (twoPoints) paintMosaic(painter, source, span.toRect(), shape.blockSize);
            break;
        case AnnotationShape::Blur:
            if (twoPoints && !source.isNull() && !span.toRect().isEmpty())
                paintBlur(painter, source, span.toRect(), shape.blockSize);
            break;
        case AnnotationShape::Text:
            if (!shape.text.isEmpty()) paintText(painter, shape);
            break;
        case AnnotationShape::Counter:
            paintCounter(painter, shape);
            break;
        case AnnotationShape::Stamp:
            paintStamp(painter, shape);
            break;
        default:
            break;
        }
    }

    painter.restore();
}

} // namespace zelmor::service::capture
