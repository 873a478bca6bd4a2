#include "TestMain.h"
#include "TestSupport.h"

#include "manager/ThemeManager.h"
#include "service/capture/AnnotationPainter.h"
#include "widget/overlay/CaptureOverlay.h"
#include "widget/overlay/OverlayGeometry.h"
#include "widget/overlay/OverlayPanels.h"

#include <QClipboard>
#include <QComboBox>
#include <QDirIterator>
#include <QPainter>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QSpinBox>
#include <QSvgRenderer>
#include <QTextEdit>
#include <QToolButton>

#include <cmath>

using namespace zelmor::service::capture;
using Shape = AnnotationShape;
using zelmor::widget::CaptureOverlay;
using namespace zelmor::widget::overlay;

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

const QRect kWindowRect(400, 300, 500, 400); // the frame of a real window under the overlay

// A picture with a distinct colour per pixel column and row, so that crops can be checked.
QPixmap patternPicture()
{
    QImage image(1920, 1080, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x)
            line[x] = qRgb(x & 0xff, y & 0xff, (x >> 8) * 16 + (y >> 8));
    }
    return QPixmap::fromImage(image);
}

void moveTo(QWidget* w, QPoint p)
{
    QMouseEvent move(QEvent::MouseMove, p, w->mapToGlobal(p), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QApplication::sendEvent(w, &move);
}
void ctrlWheelUp(QWidget* w)
{
    QWheelEvent up(QPointF(150, 150), QPointF(150, 150), QPoint(), QPoint(0, 120), Qt::NoButton,
                   Qt::ControlModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(w, &up);
}
void drag(QWidget* w, QPoint from, QPoint to)
{
    QTest::mousePress(w, Qt::LeftButton, {}, from);
    moveTo(w, (from + to) / 2);
    moveTo(w, to);
    QTest::mouseRelease(w, Qt::LeftButton, {}, to);
}

} // namespace

class TestCaptureOverlay : public QObject
{
    Q_OBJECT

    std::unique_ptr<QWidget> m_window; // gives the overlay a window to hover
    QPixmap m_picture;
    QPointer<CaptureOverlay> m_overlay;

    CaptureOverlay* open(int mode = CaptureOverlay::Region)
    {
        m_overlay = new CaptureOverlay(m_picture, QRect(0, 0, 1920, 1080), nullptr);
        m_overlay->setMode(mode);
        m_overlay->show();
        if (!QTest::qWaitForWindowExposed(m_overlay)) return nullptr;
        return m_overlay;
    }
    CaptureOverlay* openWithSelection(const QRect& r, int mode = CaptureOverlay::Region)
    {
        CaptureOverlay* o = open(mode);
        drag(o, r.topLeft(), r.bottomRight());
        return o;
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_picture = patternPicture();
        m_window = zelmor::test::makeSolidWindow(
            QStringLiteral("Zelmor hover target"), Qt::darkCyan,
            QRect(kWindowRect.topLeft() + QPoint(1, 20), QSize(498, 375)));
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        QTRY_COMPARE(m_window->frameGeometry(), kWindowRect);
    }
    void cleanup() { delete m_overlay; }

    // A drag of at most 8 px on a hovered window selects the window; under 5x5 px, nothing.
    void pressAndReleaseSelect_data()
    {
        QTest::addColumn<QPoint>("from");
        QTest::addColumn<QPoint>("to");
        QTest::addColumn<QRect>("selection");
        QTest::newRow("8 px drag keeps the window")
            << QPoint(600, 500) << QPoint(604, 504) << kWindowRect;
        QTest::newRow("9 px drag starts a free selection")
            << QPoint(600, 500) << QPoint(605, 504) << QRect(QPoint(600, 500), QPoint(605, 504));
        QTest::newRow("5x5") << QPoint(100, 100) << QPoint(104, 104) << QRect(100, 100, 5, 5);
        // Snapping to the window's edge 5 px away shows during the drag only.
        QTest::newRow("no snap once released")
            << QPoint(100, 100) << QPoint(395, 200) << QRect(QPoint(100, 100), QPoint(395, 200));
        QTest::newRow("4x4") << QPoint(100, 100) << QPoint(103, 103) << QRect();
    }
    void pressAndReleaseSelect()
    {
        QFETCH(QPoint, from);
        QFETCH(QPoint, to);
        QFETCH(QRect, selection);
        CaptureOverlay* o = open();
        moveTo(o, from);
        QTest::mousePress(o, Qt::LeftButton, {}, from);
        moveTo(o, to);
        moveTo(o, to); // a free drag follows the pointer from its second step
        QTest::mouseRelease(o, Qt::LeftButton, {}, to);
        QCOMPARE(o->hasSelection(), selection.isValid());
        QCOMPARE(o->panels()->actionBar()->isVisible(), selection.isValid());
        if (selection.isValid()) QCOMPARE(o->selection(), selection);
    }

    void everyControlHasAName()
    {
        CaptureOverlay* o = openWithSelection(QRect(300, 300, 400, 200));
        QCOMPARE(zelmor::test::unnamedControls(o), QString());
    }

    // Shapes keep their place on the desktop; the crop cuts what sticks out.
    void movingTheSelectionLeavesShapesOnTheDesktop()
    {
        CaptureOverlay* o = openWithSelection(QRect(100, 100, 300, 200));
        o->setTool(1);
        drag(o, QPoint(150, 150), QPoint(250, 250));
        o->setTool(0);
        drag(o, QPoint(300, 250), QPoint(400, 250));
        QCOMPARE(o->selection(), QRect(200, 100, 300, 200));
        QCOMPARE(o->annotations().first().points.first() + QPointF(o->selection().topLeft()),
                 QPointF(150, 150));
        const QImage cropped = o->croppedPixmap().toImage();
        QCOMPARE(cropped.size(), QSize(300, 200));
        QCOMPARE(cropped.pixelColor(QPoint(250, 150) - QPoint(200, 100)), QColor(255, 82, 82));
        QCOMPARE(cropped.pixelColor(10, 10), m_picture.toImage().pixelColor(210, 110));
    }

    void escapeDropsTheShapeThenCloses()
    {
        CaptureOverlay* o = openWithSelection(QRect(100, 100, 300, 200));
        QSignalSpy cancelled(o, &CaptureOverlay::cancelled);
        o->setTool(2);
        QTest::mousePress(o, Qt::LeftButton, {}, QPoint(150, 150));
        moveTo(o, QPoint(200, 200));
        QTest::keyClick(o, Qt::Key_Escape);
        QCOMPARE(cancelled.count(), 0);
        QTest::mouseRelease(o, Qt::LeftButton, {}, QPoint(200, 200));
        QVERIFY(o->annotations().isEmpty());
        QTest::keyClick(o, Qt::Key_Escape);
        QCOMPARE(cancelled.count(), 1);
        QTRY_VERIFY(!m_overlay);
    }

    // Return and Ctrl+C copy, Ctrl+S saves, Ctrl+Y redoes; in the recording mode, nothing.
    void keys_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("keys");
        QTest::addColumn<int>("copied");
        QTest::addColumn<int>("saved");
        QTest::addColumn<int>("shapes");
        QTest::newRow("Return") << int(CaptureOverlay::Region) << "Return" << 1 << 0 << 0;
        QTest::newRow("Ctrl+C") << int(CaptureOverlay::Region) << "Ctrl+C" << 1 << 0 << 0;
        QTest::newRow("Ctrl+S") << int(CaptureOverlay::Region) << "Ctrl+S" << 0 << 1 << 0;
        QTest::newRow("Ctrl+Y") << int(CaptureOverlay::Region) << "Ctrl+Y" << 0 << 0 << 1;
        QTest::newRow("Return, gif") << int(CaptureOverlay::Gif) << "Return" << 0 << 0 << 0;
    }
    void keys()
    {
        QFETCH(int, mode);
        QFETCH(QString, keys);
        QFETCH(int, copied);
        QFETCH(int, saved);
        QFETCH(int, shapes);
        CaptureOverlay* o = openWithSelection(QRect(100, 100, 300, 200), mode);
        if (mode == CaptureOverlay::Region) { // a shape to redo
            o->setTool(1);
            drag(o, QPoint(150, 150), QPoint(200, 200));
            QTest::keySequence(o, QKeySequence::Undo);
        }
        QSignalSpy copies(o, &CaptureOverlay::copyRequested);
        QSignalSpy saves(o, &CaptureOverlay::saveRequested);
        QTest::keySequence(o, QKeySequence(keys));
        QCOMPARE(copies.count(), copied);
        QCOMPARE(saves.count(), saved);
        if (copied + saved == 0) {
            QCOMPARE(o->annotations().size(), shapes);
            return;
        }
        const QPixmap cropped = (copied ? copies : saves).first().first().value<QPixmap>();
        QCOMPARE(cropped.toImage(), m_picture.copy(100, 100, 300, 200).toImage());
        QTRY_VERIFY(!m_overlay);
    }

    // However small the selection, the side panel leaves the toolbars free.
    void sidePanelClearsTheToolbars()
    {
        CaptureOverlay* o = openWithSelection(QRect(900, 300, 40, 30));
        const QRect panel = o->panels()->sidePanel()->geometry();
        QVERIFY(!panel.intersects(o->panels()->annotationBar()->geometry()));
        QVERIFY(!panel.intersects(o->panels()->actionBar()->geometry()));
    }

    // The box that takes a text shows it at the size the shape is drawn with.
    void textPreviewMatchesTheShape_data()
    {
        QTest::addColumn<int>("fontSize");
        QTest::newRow("default size, under the application's style sheet") << 18;
        QTest::newRow("large") << 60;
    }
    void textPreviewMatchesTheShape()
    {
        QFETCH(int, fontSize);
        zelmor::manager::ThemeManager::instance().apply(QStringLiteral("dark"));
        const auto plain = qScopeGuard([] { qApp->setStyleSheet(QString()); });
        CaptureOverlay* o = openWithSelection(QRect(100, 100, 600, 400));
        o->findChildren<QSpinBox*>().last()->setValue(fontSize);
        o->setTool(9);
        QTest::mouseClick(o, Qt::LeftButton, Qt::NoModifier, QPoint(150, 150));
        QTest::keyClicks(o->inlineEdit(), QStringLiteral("Hi"));
        const QPixmap cropped = o->croppedPixmap(); // the shape's font in points on its pixels
        QCOMPARE(QFontInfo(o->inlineEdit()->font()).pixelSize(),
                 qRound(fontSize * cropped.logicalDpiY() / 72.0));
        QVERIFY(o->inlineEdit()->height() > QFontMetrics(o->inlineEdit()->font()).height());
    }

    void toolLettersAndPaletteDigits()
    {
        CaptureOverlay* o = openWithSelection(QRect(100, 100, 300, 200));
        for (const auto& [key, tool] : {std::pair("E", 2), std::pair("c", 10)}) {
            QTest::keyClicks(o, QLatin1String(key)); // "c" picks the counter with a selection
            QCOMPARE(o->tool(), tool);
            QVERIFY(o->panels()->toolButton(tool)->isChecked());
        }
        QTest::keyClicks(o, QStringLiteral("4"));
        QCOMPARE(o->penColor(), QColor::fromRgba(0xFF4CC2FF));
        QVERIFY(o->panels()->paletteButton(4)->isChecked());
    }

    void ctrlWheelEditsTheNewestShape()
    {
        CaptureOverlay* o = openWithSelection(QRect(100, 100, 300, 200));
        ctrlWheelUp(o);
        QCOMPARE(o->penWidth(), 3); // the select tool: nothing

        o->setTool(1);
        drag(o, QPoint(150, 150), QPoint(200, 200));
        o->setTool(7);
        drag(o, QPoint(210, 150), QPoint(260, 200));
        o->setTool(10);
        for (int i = 0; i < 3; ++i)
            ctrlWheelUp(o);
        QCOMPARE(o->annotations().last().blockSize, 15); // the mosaic, though the counter is on
        QCOMPARE(o->annotations().first().width, 3);
        QCOMPARE(o->penWidth(), 3);
    }

    void countersKeepCounting()
    {
        CaptureOverlay* o = openWithSelection(QRect(100, 100, 300, 200));
        o->setTool(10);
        QTest::mouseClick(o, Qt::LeftButton, Qt::NoModifier, QPoint(150, 150));
        QTest::mouseClick(o, Qt::LeftButton, Qt::NoModifier, QPoint(200, 150));
        o->undo();
        QTest::mouseClick(o, Qt::LeftButton, Qt::NoModifier, QPoint(250, 150));
        QStringList numbers;
        for (const AnnotationShape& s : o->annotations())
            numbers << s.text;
        QCOMPARE(numbers, (QStringList{QStringLiteral("1"), QStringLiteral("3")}));
    }

    void tinyShapesAndEmptyTextsLeaveNothing()
    {
        CaptureOverlay* o = openWithSelection(QRect(100, 100, 300, 200));
        o->setTool(1);
        drag(o, QPoint(150, 150), QPoint(152, 152)); // under 4 px apart
        QVERIFY(o->annotations().isEmpty());

        o->setTool(9);
        QTest::mouseClick(o, Qt::LeftButton, Qt::NoModifier, QPoint(150, 150));
        QTest::keyClicks(o->inlineEdit(), QStringLiteral("   "));
        QTest::keyClick(o->inlineEdit(), Qt::Key_Return, Qt::ControlModifier);
        QVERIFY(o->annotations().isEmpty());

        QTest::mouseClick(o, Qt::LeftButton, Qt::NoModifier, QPoint(150, 150));
        QTest::keyClicks(o->inlineEdit(), QStringLiteral("hi"));
        QTest::keyClick(o->inlineEdit(), Qt::Key_Return, Qt::ControlModifier);
        QCOMPARE(o->annotations().size(), 1);
        QCOMPARE(o->annotations().first().text, QStringLiteral("hi"));
    }

    void cCopiesTheColourWithoutASelection()
    {
        CaptureOverlay* o = open();
        moveTo(o, QPoint(300, 40));
        QTest::keyClick(o, Qt::Key_C);
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("#2C2810"));
        QTest::keyClick(o, Qt::Key_Shift);
        QTest::keyClick(o, Qt::Key_C);
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("rgb(44, 40, 16)"));
    }

    // A tool key pressed mid-stroke picks the next tool; the shape in hand keeps its kind.
    void toolKeysMidStrokeLeaveTheShapeAlone_data()
    {
        QTest::addColumn<int>("tool");
        QTest::addColumn<QString>("key");
        QTest::addColumn<int>("points"); // of the committed shape; 0: the inline edit opens
        QTest::newRow("brush, r") << 5 << "r" << 3;
        QTest::newRow("rectangle, b") << 1 << "b" << 2;
        QTest::newRow("text, b") << 9 << "b" << 0;
        QTest::newRow("counter, b") << 10 << "b" << 1;
    }
    void toolKeysMidStrokeLeaveTheShapeAlone()
    {
        QFETCH(int, tool);
        QFETCH(QString, key);
        QFETCH(int, points);
        CaptureOverlay* o = openWithSelection(QRect(100, 100, 300, 200));
        o->setTool(tool);
        QTest::mousePress(o, Qt::LeftButton, {}, QPoint(150, 150));
        moveTo(o, QPoint(170, 160));
        QTest::keyClicks(o, key);
        moveTo(o, QPoint(190, 170));
        QTest::mouseRelease(o, Qt::LeftButton, {}, QPoint(190, 170));
        if (points == 0) {
            QVERIFY(o->inlineEdit() && o->inlineEdit()->isVisible());
            QVERIFY(o->annotations().isEmpty());
            return;
        }
        QCOMPARE(o->annotations().size(), 1);
        const AnnotationShape& shape = o->annotations().first();
        QCOMPARE(shape.kind, zelmor::service::capture::shapeKindForTool(tool));
        QCOMPARE(shape.points.size(), points);
        QCOMPARE(shape.points.last(), QPointF(90, 70));
    }

    // Handles are found within a diamond of 13, earlier ones first; the centres of the far
    // edges use right() and bottom(); an edge dragged past the opposite one flips the rectangle.
    void handlesAndResizing()
    {
        const QRect r(100, 100, 201, 101); // right 300, bottom 200, centre (200, 150)
        QCOMPARE(handleAt(r, QPoint(106, 106)), 0);
        QCOMPARE(handleAt(r, QPoint(107, 106)), -1);
        QCOMPARE(handleAt(r, QPoint(300, 150)), 3);
        QCOMPARE(handleAt(QRect(10, 10, 4, 4), QPoint(12, 12)), 0);
        // QRect::normalized() of a flipped rectangle gives up one pixel on each side.
        QCOMPARE(resizedByHandle(QRect(100, 100, 100, 100), 3, QPoint(50, 0)),
                 QRect(QPoint(51, 100), QPoint(99, 199)));
    }

    // Against a window at x 500 to 699: an edge 8 px away snaps, 9 px not; top and bottom
    // compare with x values. Hovering takes the smallest window, the earlier of equal ones.
    void snappingAndHover()
    {
        const QList<QRect> window{QRect(500, 300, 200, 100)};
        QCOMPARE(snapRect(QRect(QPoint(491, 50), QPoint(707, 99)), window),
                 QRect(QPoint(491, 50), QPoint(699, 99)));
        QCOMPARE(snapRect(QRect(QPoint(10, 503), QPoint(40, 520)), window),
                 QRect(QPoint(10, 500), QPoint(40, 520)));
        const QList<QRect> rects{{0, 0, 100, 100}, {10, 10, 50, 50}, {20, 20, 50, 50}};
        QCOMPARE(smallestContaining(rects, QPoint(30, 30)), QRect(10, 10, 50, 50));
        QCOMPARE(smallestContaining(rects, QPoint(5, 5)), QRect(0, 0, 100, 100));
        QVERIFY(smallestContaining(rects, QPoint(500, 5)).isNull());
    }

    // Overlay 1920x1080, action bar 400x38, annotation bar 600x38; centred on QRect::center(),
    // which rounds down.
    void toolbarPlacement()
    {
        const auto place = [](const QRect& selection, bool annotationBar) {
            const ToolbarPlacement p = placeToolbars(selection, QSize(1920, 1080), QSize(400, 38),
                                                     annotationBar ? QSize(600, 38) : QSize());
            return QList<QPoint>{p.actionBar, annotationBar ? p.annotationBar : QPoint()};
        };
        QCOMPARE(place(QRect(700, 900, 400, 150), true), // above
                 (QList<QPoint>{{699, 852}, {599, 808}}));
        QCOMPARE(place(QRect(0, 0, 1920, 1080), false), (QList<QPoint>{{759, 1031}, {}}));
        QCOMPARE(place(QRect(1800, 100, 100, 100), true), // clamped to the right margin
                 (QList<QPoint>{{1512, 209}, {1312, 253}}));
    }

    void toolbarIconsRenderAtToolbarSize_data()
    {
        QTest::addColumn<QString>("path");
        // The toolbars' own icons; switches and the like keep shapes of their own.
        for (const char* folder : {":/icons/overlay", ":/icons/annotate", ":/icons/nav"})
            for (QDirIterator it(QLatin1String(folder), {QStringLiteral("*.svg")}, QDir::Files);
                 it.hasNext();)
                QTest::newRow(qPrintable(it.next())) << it.filePath();
    }
    void toolbarIconsRenderAtToolbarSize()
    {
        QFETCH(QString, path);
        QSvgRenderer renderer(path);
        QCOMPARE(renderer.viewBoxF(), QRectF(0, 0, 24, 24));
        QImage image(18, 18, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        renderer.render(&painter);
        painter.end();
        int inked = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                inked += qAlpha(image.pixel(x, y)) > 64;
        // A drawn line icon covers some of the square but never most of it.
        QVERIFY2(inked >= 15 && inked <= 18 * 18 * 2 / 3, qPrintable(QString::number(inked)));
    }

    // Side panel, magnifier and size label turn away from the screen's edges.
    void boxesStayOnTheScreen()
    {
        const QSize overlay(1920, 1080), panel(140, 190);
        QCOMPARE(placeSidePanel(QRect(1700, 100, 220, 300), overlay, panel), QPoint(1550, 100));
        QCOMPARE(placeSidePanel(QRect(100, 1000, 300, 80), overlay, panel), QPoint(409, 882));
        QCOMPARE(magnifierBox(QPoint(1900, 1070), overlay), QRect(1740, 910, 140, 140));
        QCOMPARE(sizeLabelRect(QRect(50, 10, 200, 100)), QRect(50, 113, 84, 20));
    }

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
        QTEST(painted(canvas(), {shape}).pixelColor(at) != QColor(Qt::white), "marked");
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
        QTEST(image != before, "paints");
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

ZELMOR_TEST_MAIN(TestCaptureOverlay, QApplication)
#include "tst_captureoverlay.moc"
