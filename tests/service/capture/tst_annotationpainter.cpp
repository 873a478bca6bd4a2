#include "TestMain.h"

#include "service/capture/AnnotationPainter.h"
#include "service/capture/AnnotationShape.h"

#include <QGuiApplication>
#include <QPainter>

#include <cmath>

using namespace zelmor::service::capture;
using Shape = AnnotationShape;

Q_DECLARE_METATYPE(zelmor::service::capture::AnnotationShape)

namespace {

const QColor kRed(0xFF, 0x52, 0x52);

Shape makeShape(int kind, const QList<QPointF>& points, int width = 3)
{
    Shape s;
    s.kind = kind;
    s.points = points;
    s.color = kRed;
    s.width = width;
    return s;
}

QImage canvas(const QColor& fill = Qt::white, QSize size = {100, 100})
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(fill);
    return image;
}

// Paints the shapes in order on one painter with one unmarked source, as the overlay bakes them.
QImage painted(QImage target, const QList<Shape>& shapes, const QImage& source = {})
{
    QPainter painter(&target);
    for (const Shape& s : shapes)
        paintAnnotation(painter, source, s);
    painter.end();
    return target;
}

bool near(const QColor& a, const QColor& b, int tolerance)
{
    return std::abs(a.red() - b.red()) <= tolerance &&
           std::abs(a.green() - b.green()) <= tolerance &&
           std::abs(a.blue() - b.blue()) <= tolerance;
}

// Red across, green down: every pixel tells where it came from.
QImage gradient(QSize size = {100, 100})
{
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, qRgb(2 * x % 256, 2 * y % 256, (x + y) % 256));
    return image;
}

} // namespace

class TestAnnotationPainter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void highlightReplacesTheColoursAlpha()
    {
        Shape s = makeShape(Shape::Highlight, {{10, 50}, {90, 50}}, 4);
        s.color.setAlpha(100);
        const QImage image = painted(canvas(), {s});
        const int half = 3 * 4 / 2;
        const QColor expected(255, 194, 194); // the red at 35% over white
        for (int y = 50 - half; y < 50 + half; ++y)
            QVERIFY2(near(image.pixelColor(50, y), expected, 2), qPrintable(QString::number(y)));
        QCOMPARE(image.pixelColor(50, 50 - half - 1), QColor(Qt::white));
        QCOMPARE(image.pixelColor(50, 50 + half), QColor(Qt::white));
    }

    // Where the marks of fixed geometry put their colour: the arrow's head beside the shaft,
    // and the smallest circles of counter and stamp, whatever their font size says.
    void marksOfFixedGeometry_data()
    {
        QTest::addColumn<AnnotationShape>("shape");
        QTest::addColumn<QPoint>("at");
        QTest::addColumn<bool>("marked");
        const Shape arrow = makeShape(Shape::Arrow, {{10, 50}, {90, 50}}, 2);
        QTest::newRow("arrow head beside the shaft") << arrow << QPoint(85, 48) << true;
        QTest::newRow("arrow head only at the tip") << arrow << QPoint(70, 47) << false;
        Shape counter = makeShape(Shape::Counter, {{50, 50}});
        counter.fontSize = 8; // radius 10 all the same
        QTest::newRow("counter of font 8, radius 10") << counter << QPoint(50, 43) << true;
        Shape stamp = makeShape(Shape::Stamp, {{50, 50}});
        stamp.fontSize = 5; // radius 14, not 10
        QTest::newRow("stamp of font 5, radius 14") << stamp << QPoint(50, 37) << true;
        QTest::newRow("stamp ends at its radius") << stamp << QPoint(50, 33) << false;
    }
    void marksOfFixedGeometry()
    {
        QFETCH(AnnotationShape, shape);
        QFETCH(QPoint, at);
        QFETCH(bool, marked);
        QCOMPARE(painted(canvas(), {shape}).pixelColor(at) != QColor(Qt::white), marked);
    }

    // Each block takes the mean of its pixels, also where it sticks out of the image, and
    // translucent pixels count by their colour.
    void mosaicBlocksHoldMeans()
    {
        QImage source(3, 2, QImage::Format_ARGB32);
        source.fill(Qt::transparent);
        source.setPixel(0, 0, qRgba(100, 0, 0, 255));
        source.setPixel(1, 0, qRgba(0, 200, 0, 128));
        source.setPixel(2, 1, qRgba(30, 60, 90, 255));
        source = source.convertToFormat(QImage::Format_ARGB32_Premultiplied);
        QImage image = canvas(Qt::white, QSize(3, 2));
        QPainter painter(&image);
        paintMosaic(painter, source, QRect(0, 0, 4, 4), 2);
        painter.end();
        QVERIFY(near(image.pixelColor(1, 1), QColor(25, 50, 0), 1));
        QVERIFY(near(image.pixelColor(2, 0), QColor(15, 30, 45), 1)); // half outside
    }

    void blurSmearsAlongRowsOnly()
    {
        // Red steps at x = 20, green at y = 20.
        QImage source(40, 40, QImage::Format_RGB32);
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 40; ++x)
                source.setPixel(x, y, qRgb(x >= 20 ? 255 : 0, y >= 20 ? 255 : 0, 0));

        Shape whole = makeShape(Shape::Blur, {{40, 40}, {0, 0}});
        whole.blockSize = 16;
        const QImage image = painted(source, {whole}, source);
        for (int y = 0; y < 40; ++y) {
            for (int x = 0; x < 40; ++x) {
                const QRgb p = image.pixel(x, y);
                QCOMPARE(qGreen(p), y >= 20 ? 255 : 0);
                const bool smeared = x >= 12 && x < 28; // two radii of 16 / 4 about the step
                QVERIFY2((qRed(p) > 0 && qRed(p) < 255) == smeared,
                         qPrintable(QStringLiteral("x %1 red %2").arg(x).arg(qRed(p))));
            }
        }

        // Rows are clamped to the rectangle, so nothing left of it is pulled in.
        Shape rightHalf = whole;
        rightHalf.points = {{20, 0}, {40, 40}};
        QCOMPARE(painted(source, {rightHalf}, source), source);
    }

    void blurAndMosaicReadTheUnmarkedSource_data()
    {
        QTest::addColumn<int>("kind");
        QTest::newRow("blur") << int(Shape::Blur);
        QTest::newRow("mosaic") << int(Shape::Mosaic);
    }
    void blurAndMosaicReadTheUnmarkedSource()
    {
        QFETCH(int, kind);
        const QImage source = gradient();
        Shape arrow = makeShape(Shape::Arrow, {{10, 50}, {90, 50}}, 4);
        arrow.color = Qt::green;
        Shape cover = makeShape(kind, {{30, 30}, {70, 70}});
        cover.blockSize = 8;

        QImage both = painted(source, {arrow, cover}, source);
        QImage arrowOnly = painted(source, {arrow}, source);
        const QRect covered(30, 30, 40, 40);
        QCOMPARE(both.copy(covered), painted(source, {cover}, source).copy(covered));
        for (QImage* image : {&both, &arrowOnly}) {
            QPainter painter(image);
            painter.fillRect(covered, Qt::black);
        }
        QCOMPARE(both, arrowOnly);
    }

    void painterIsLeftAsFound_data()
    {
        QTest::addColumn<AnnotationShape>("shape");
        QTest::addColumn<bool>("paints");
        QTest::newRow("kind above 10") << makeShape(11, {{10, 10}, {60, 60}}) << false;
        QTest::newRow("empty text") << makeShape(Shape::Text, {{10, 10}}) << false;
        QTest::newRow("blur, null source") << makeShape(Shape::Blur, {{0, 0}, {50, 50}}) << false;
        QTest::newRow("stamp") << makeShape(Shape::Stamp, {{50, 50}}) << true;
    }
    void painterIsLeftAsFound()
    {
        QFETCH(AnnotationShape, shape);
        QFETCH(bool, paints);
        QImage image = canvas();
        const QImage before = image;
        QPainter painter(&image);
        painter.setPen(QPen(Qt::blue, 7));
        painter.setBrush(Qt::green);
        painter.setFont(QFont(QStringLiteral("Sans"), 31));
        const QFont font = painter.font();
        paintAnnotation(painter, QImage(), shape);
        QCOMPARE(painter.pen(), QPen(Qt::blue, 7));
        QCOMPARE(painter.brush(), QBrush(Qt::green));
        QCOMPARE(painter.font(), font);
        QVERIFY(!painter.testRenderHint(QPainter::Antialiasing));
        painter.end();
        QCOMPARE(image != before, paints);
    }

    // Numbers from outside far beyond the image: the work stays within the image and a
    // shape covering all of it paints as one that fits.
    void hugeShapesPaintLikeTheirPartOnTheImage_data()
    {
        QTest::addColumn<AnnotationShape>("huge");
        QTest::addColumn<AnnotationShape>("fitting");
        const auto block = [](int kind, QList<QPointF> points, int blockSize) {
            Shape s = makeShape(kind, points);
            s.blockSize = blockSize;
            return s;
        };
        QTest::newRow("mosaic to a million") << block(Shape::Mosaic, {{0, 0}, {1e6, 1e6}}, 12)
                                             << block(Shape::Mosaic, {{0, 0}, {108, 108}}, 12);
        QTest::newRow("mosaic from far left")
            << block(Shape::Mosaic, {{-1e6 - 6, 0}, {50, 50}}, 12)
            << block(Shape::Mosaic, {{-10, 0}, {50, 50}}, 12); // the same grid
        QTest::newRow("mosaic, block of two billion")
            << block(Shape::Mosaic, {{0, 0}, {1e12, 1e12}}, 2000000000)
            << block(Shape::Mosaic, {{0, 0}, {100, 100}}, 1000);
        QTest::newRow("blur of two billion")
            << block(Shape::Blur, {{-1e15, 0}, {1e15, 50}}, 2000000000)
            << block(Shape::Blur, {{0, 0}, {100, 50}}, 2000000000);
        Shape wide = makeShape(Shape::Rect, {{-1e12, -1e12}, {1e12, 1e12}}, 2000000000);
        QTest::newRow("pen of two billion")
            << wide << makeShape(Shape::Rect, {{-5000, -5000}, {5000, 5000}}, 2000);
        Shape counter = makeShape(Shape::Counter, {{50, 50}});
        counter.fontSize = 2000000000;
        Shape fittingCounter = counter;
        fittingCounter.fontSize = 2000;
        QTest::newRow("counter of two billion") << counter << fittingCounter;
    }
    void hugeShapesPaintLikeTheirPartOnTheImage()
    {
        QFETCH(AnnotationShape, huge);
        QFETCH(AnnotationShape, fitting);
        const QImage source = gradient();
        QCOMPARE(painted(source, {huge}, source), painted(source, {fitting}, source));
    }
};

ZELMOR_TEST_MAIN(TestAnnotationPainter, QGuiApplication)
#include "tst_annotationpainter.moc"
