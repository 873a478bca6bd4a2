#include "TestMain.h"
#include "TestSupport.h"

#include "manager/ThemeManager.h"
#include "widget/overlay/CaptureOverlay.h"
#include "widget/overlay/OverlayPanels.h"

#include <QAccessible>
#include <QClipboard>
#include <QComboBox>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTextEdit>
#include <QToolButton>

using zelmor::service::capture::AnnotationShape;
using zelmor::widget::CaptureOverlay;
using zelmor::widget::overlay::OverlayPanels;

namespace {

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

void press(QWidget* w, QPoint p)
{
    QTest::mousePress(w, Qt::LeftButton, Qt::NoModifier, p);
}
void release(QWidget* w, QPoint p)
{
    QTest::mouseRelease(w, Qt::LeftButton, Qt::NoModifier, p);
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
    press(w, from);
    moveTo(w, (from + to) / 2);
    moveTo(w, to);
    release(w, to);
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
        press(o, from);
        moveTo(o, to);
        moveTo(o, to); // a free drag follows the pointer from its second step
        release(o, to);
        QCOMPARE(o->hasSelection(), selection.isValid());
        QCOMPARE(o->panels()->actionBar()->isVisible(), selection.isValid());
        if (selection.isValid()) QCOMPARE(o->selection(), selection);
    }

    void everyControlHasAName()
    {
        CaptureOverlay* o = openWithSelection(QRect(300, 300, 400, 200));
        for (QWidget* w : o->findChildren<QWidget*>()) {
            if (!qobject_cast<QAbstractButton*>(w) && !qobject_cast<QComboBox*>(w) &&
                !qobject_cast<QAbstractSpinBox*>(w))
                continue;
            QVERIFY2(!QAccessible::queryAccessibleInterface(w)->text(QAccessible::Name).isEmpty(),
                     qPrintable(w->objectName()));
        }
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
        press(o, QPoint(150, 150));
        moveTo(o, QPoint(200, 200));
        QTest::keyClick(o, Qt::Key_Escape);
        QCOMPARE(cancelled.count(), 0);
        release(o, QPoint(200, 200));
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
        QTest::newRow("stamp, b") << 11 << "b" << 0;
    }
    void toolKeysMidStrokeLeaveTheShapeAlone()
    {
        QFETCH(int, tool);
        QFETCH(QString, key);
        QFETCH(int, points);
        CaptureOverlay* o = openWithSelection(QRect(100, 100, 300, 200));
        o->setTool(tool);
        press(o, QPoint(150, 150));
        moveTo(o, QPoint(170, 160));
        QTest::keyClicks(o, key);
        moveTo(o, QPoint(190, 170));
        release(o, QPoint(190, 170));
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
};

ZELMOR_TEST_MAIN(TestCaptureOverlay, QApplication)
#include "tst_captureoverlay.moc"
