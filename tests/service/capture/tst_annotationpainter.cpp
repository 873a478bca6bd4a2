#include "TestMain.h"

#include "service/capture/AnnotationPainter.h"
#include "service/capture/AnnotationShape.h"

#include <QGuiApplication>
#include <QPainter>
#include <QRandomGenerator>

#include <cmath>

using namespace zelmor::service::capture;
using Shape = AnnotationShape;

Q_DECLARE_METATYPE(zelmor::service::capture::AnnotationShape)

namespace {

constexpr double kPi = 3.141592653589793;
const QColor kRed(0xFF, 0x52, 0x52);
const QColor kGrey(128, 128, 128);

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

QColor blend(const QColor& over, const QColor& under, double alpha)
{
    const auto mix = [&](int o, int u) { return int(std::lround(u + (o - u) * alpha)); };
    return QColor(mix(over.red(), under.red()), mix(over.green(), under.green()),
                  mix(over.blue(), under.blue()));
}

} // namespace

class TestAnnotationPainter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void arrowHead_data()
    {
        QTest::addColumn<double>("angle");
        QTest::addColumn<int>("width");
        QTest::newRow("right, head at least 10") << 0.0 << 2;
        QTest::newRow("down-left, head 3x width") << 2.356 << 6;
    }
    void arrowHead()
    {
        QFETCH(double, angle);
        QFETCH(int, width);
        const QPointF tip = QPointF(50, 50) + 35 * QPointF(std::cos(angle), std::sin(angle));
        const QImage image = painted(canvas(), {makeShape(Shape::Arrow, {{50, 50}, tip}, width)});
        const double length = std::max(3.0 * width, 10.0);
        const double half = kPi / 7;
        const auto back = [&](double off, double distance) {
            return tip - distance * QPointF(std::cos(angle + off), std::sin(angle + off));
        };
        const auto marked = [&](QPointF p) {
            return image.pixelColor(int(std::floor(p.x())), int(std::floor(p.y()))).green() < 160;
        };
        QVERIFY(marked(tip));
        for (int side : {-1, 1}) {
            QVERIFY(marked(back(side * half, length)));
            QVERIFY(!marked(back(side * half, length + width / 2.0 + 3)));
            QVERIFY(!marked(back(side * 2 * half, length)));
        }
    }

    void highlight_data()
    {
        QTest::addColumn<int>("alpha");
        QTest::addColumn<int>("width");
        QTest::newRow("opaque colour") << 255 << 2;
        QTest::newRow("own alpha is replaced") << 100 << 4;
    }
    void highlight()
    {
        QFETCH(int, alpha);
        QFETCH(int, width);
        Shape s = makeShape(Shape::Highlight, {{10, 50}, {90, 50}}, width);
        s.color.setAlpha(alpha);
        const QImage image = painted(canvas(), {s});
        const int half = 3 * width / 2;
        const QColor expected = blend(kRed, Qt::white, 0.35);
        for (int y = 50 - half; y < 50 + half; ++y)
            QVERIFY2(near(image.pixelColor(50, y), expected, 2), qPrintable(QString::number(y)));
        QCOMPARE(image.pixelColor(50, 50 - half - 1), QColor(Qt::white));
        QCOMPARE(image.pixelColor(50, 50 + half), QColor(Qt::white));
    }

    void mosaicBlocksHoldMeans_data()
    {
        QTest::addColumn<QImage::Format>("format");
        QTest::addColumn<QRect>("rect");
        QTest::addColumn<int>("blockSize");
        QTest::addColumn<QList<int>>("origins"); // of blocks, along x and y alike
        QTest::newRow("blocks stick out right and bottom")
            << QImage::Format_RGB32 << QRect(2, 2, 10, 10) << 4 << QList<int>{2, 6, 10};
        QTest::newRow("block size 1 gives blocks of 2")
            << QImage::Format_RGB32 << QRect(4, 4, 5, 5) << 1 << QList<int>{4, 6};
        QTest::newRow("past the image edge")
            << QImage::Format_RGB32 << QRect(14, 14, 10, 10) << 4 << QList<int>{14, 18, 22};
        QTest::newRow("premultiplied, translucent")
            << QImage::Format_ARGB32_Premultiplied << QRect(0, 0, 20, 20) << 5
            << QList<int>{0, 5, 10, 15};
    }
    void mosaicBlocksHoldMeans()
    {
        QFETCH(QImage::Format, format);
        QFETCH(QRect, rect);
        QFETCH(int, blockSize);
        QFETCH(QList<int>, origins);

        QImage noise(20, 20, QImage::Format_ARGB32);
        QRandomGenerator random(7);
        for (int y = 0; y < noise.height(); ++y)
            for (int x = 0; x < noise.width(); ++x)
                noise.setPixel(x, y, random.generate() | ((x + y) % 2 ? 0xFF000000 : 0));
        const QImage source = noise.convertToFormat(format);

        QImage actual = canvas(Qt::white, source.size());
        QPainter painter(&actual);
        paintMosaic(painter, source, rect, blockSize);
        painter.end();

        const int edge = std::max(blockSize, 2);
        QImage expected = canvas(Qt::white, source.size());
        for (int by : origins) {
            for (int bx : origins) {
                const QRect block = QRect(bx, by, edge, edge) & source.rect();
                if (block.isEmpty()) continue;
                int r = 0, g = 0, b = 0;
                for (int y = block.top(); y <= block.bottom(); ++y)
                    for (int x = block.left(); x <= block.right(); ++x) {
                        const QColor c = source.pixelColor(x, y);
                        r += c.red(), g += c.green(), b += c.blue();
                    }
                const int n = block.width() * block.height();
                for (int y = block.top(); y <= block.bottom(); ++y)
                    for (int x = block.left(); x <= block.right(); ++x)
                        expected.setPixelColor(x, y, QColor(r / n, g / n, b / n));
            }
        }
        QCOMPARE(actual, expected);
    }

    void blurSmearsAlongRowsOnly()
    {
        const int radius = 4; // a quarter of the block size
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
                const bool smeared = x >= 20 - 2 * radius && x < 20 + 2 * radius;
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
        QImage source(100, 100, QImage::Format_RGB32);
        for (int y = 0; y < 100; ++y)
            for (int x = 0; x < 100; ++x)
                source.setPixel(x, y, qRgb(2 * x, 2 * y, 100));
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

    void textHasWhiteHalo()
    {
        Shape text = makeShape(Shape::Text, {{20, 30}});
        text.text = QStringLiteral("Hi");
        text.color = Qt::black;
        const QImage image = painted(canvas(kGrey), {text});
        int white = 0, dark = 0;
        QRect changed;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x) {
                const QColor c = image.pixelColor(x, y);
                white += near(c, Qt::white, 5);
                dark += near(c, Qt::black, 40);
                if (c != kGrey) changed |= QRect(x, y, 1, 1);
            }
        QVERIFY(white > 20);
        QVERIFY(dark > 20);
        QVERIFY2(changed.left() >= 19 && changed.top() >= 29, "drawn from the point down-right");
    }

    void circles_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<int>("fontSize");
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("radius");
        QTest::addColumn<QColor>("ring");    // at the radius
        QTest::addColumn<QColor>("between"); // 2 inside
        QTest::addColumn<QColor>("inner");   // 3 inside, on a stamp's inner circle
        const QColor stampFill = blend(kRed, kGrey, 0.55);
        QTest::newRow("counter, font 16")
            << int(Shape::Counter) << 16 << 3 << 16 << QColor(Qt::white) << kRed << kRed;
        QTest::newRow("stamp, twice font")
            << int(Shape::Stamp) << 12 << 2 << 24 << kRed << stampFill << kRed;
    }
    void circles()
    {
        QFETCH(int, kind);
        QFETCH(int, fontSize);
        QFETCH(int, width);
        QFETCH(int, radius);
        QFETCH(QColor, ring);
        QFETCH(QColor, between);
        QFETCH(QColor, inner);
        Shape s = makeShape(kind, {{60.5, 60.5}}, width);
        s.fontSize = fontSize;
        s.text = QStringLiteral("7");
        const QImage image = painted(canvas(kGrey, {120, 120}), {s});
        // Pixel 60 + d spans distances d - 0.5 to d + 0.5 from the centre.
        const auto at = [&](int d) { return image.pixelColor(60 + d, 60); };
        QVERIFY(near(at(radius), ring, 12));
        QVERIFY(near(at(radius + 2), kGrey, 6));
        QVERIFY(near(at(radius - 2), between, 12));
        QVERIFY(near(at(radius - 3), inner, 20)); // a thin ring covers a little less
    }

    void counterKeepsSmallFont()
    {
        const auto whiteInside = [](int fontSize) {
            Shape s = makeShape(Shape::Counter, {{50, 50}});
            s.fontSize = fontSize;
            s.text = QStringLiteral("8");
            const QImage image = painted(canvas(kGrey), {s});
            int count = 0;
            for (int y = 45; y < 56; ++y)
                for (int x = 45; x < 56; ++x)
                    count += near(image.pixelColor(x, y), Qt::white, 60);
            return count;
        };
        QVERIFY(whiteInside(8) > 0);
        QVERIFY(whiteInside(8) < whiteInside(10));
    }

    void stampWithoutTextShowsCheckMark()
    {
        const auto stamp = [](const QString& text) {
            Shape s = makeShape(Shape::Stamp, {{50, 50}});
            s.text = text;
            return painted(canvas(), {s});
        };
        QCOMPARE(stamp(QString()), stamp(QStringLiteral("\u2713")));
        QVERIFY(stamp(QString()) != stamp(QStringLiteral("A")));
    }

    void painterIsLeftAsFound_data()
    {
        QTest::addColumn<AnnotationShape>("shape");
        QTest::addColumn<bool>("paints");
        QTest::newRow("kind above 10") << makeShape(11, {{10, 10}, {60, 60}}) << false;
        QTest::newRow("rect, one point") << makeShape(Shape::Rect, {{10, 10}}) << false;
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
        QImage source = canvas();
        for (int y = 0; y < 100; ++y)
            for (int x = 0; x < 100; ++x)
                source.setPixelColor(x, y, QColor(x * 2, y * 2, (x + y) % 256));
        QCOMPARE(painted(source, {huge}, source), painted(source, {fitting}, source));
    }
};

ZELMOR_TEST_MAIN(TestAnnotationPainter, QGuiApplication)
#include "tst_annotationpainter.moc"
