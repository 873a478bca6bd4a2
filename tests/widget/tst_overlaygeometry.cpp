#include "TestMain.h"

#include "widget/overlay/OverlayGeometry.h"

#include <QDirIterator>
#include <QPainter>
#include <QSvgRenderer>

using namespace zelmor::widget::overlay;

class TestOverlayGeometry : public QObject
{
    Q_OBJECT
private Q_SLOTS:
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

    void snapping_data()
    {
        QTest::addColumn<QRect>("raw");
        QTest::addColumn<QRect>("snapped");
        // Against QRect(500, 300, 200, 100): left 500, right 699.
        QTest::newRow("8 away snaps, 9 not")
            << QRect(QPoint(491, 50), QPoint(707, 99)) << QRect(QPoint(491, 50), QPoint(699, 99));
        // Top and bottom compare with x values: a top 3 away from a vertical edge's x snaps.
        QTest::newRow("top to an x value")
            << QRect(QPoint(10, 503), QPoint(40, 520)) << QRect(QPoint(10, 500), QPoint(40, 520));
    }
    void snapping()
    {
        QFETCH(QRect, raw);
        QFETCH(QRect, snapped);
        QCOMPARE(snapRect(raw, {QRect(500, 300, 200, 100)}), snapped);
        QCOMPARE(snapRect(raw, {}), raw);
    }

    void hoverTakesTheSmallestWindow()
    {
        const QList<QRect> rects{QRect(0, 0, 100, 100), QRect(10, 10, 50, 50),
                                 QRect(20, 20, 50, 50)};
        QCOMPARE(smallestContaining(rects, QPoint(30, 30)),
                 QRect(10, 10, 50, 50)); // equal areas: earlier
        QCOMPARE(smallestContaining(rects, QPoint(5, 5)), QRect(0, 0, 100, 100));
        QVERIFY(smallestContaining(rects, QPoint(500, 5)).isNull());
    }

    void toolbarPlacement_data()
    {
        QTest::addColumn<QRect>("selection");
        QTest::addColumn<bool>("annotationBar");
        QTest::addColumn<QPoint>("action");
        QTest::addColumn<QPoint>("annotation");
        // Overlay 1920x1080, action bar 400x38, annotation bar 600x38.
        // Centred on QRect::center(), which rounds down.
        QTest::newRow("above") << QRect(700, 900, 400, 150) << true << QPoint(699, 852)
                               << QPoint(599, 808);
        QTest::newRow("full screen, no annotation bar")
            << QRect(0, 0, 1920, 1080) << false << QPoint(759, 1031) << QPoint();
        QTest::newRow("clamped to the right margin")
            << QRect(1800, 100, 100, 100) << true << QPoint(1512, 209) << QPoint(1312, 253);
    }
    void toolbarPlacement()
    {
        QFETCH(QRect, selection);
        QFETCH(bool, annotationBar);
        QFETCH(QPoint, action);
        QFETCH(QPoint, annotation);
        const ToolbarPlacement p = placeToolbars(selection, QSize(1920, 1080), QSize(400, 38),
                                                 annotationBar ? QSize(600, 38) : QSize());
        QCOMPARE(p.actionBar, action);
        if (annotationBar) QCOMPARE(p.annotationBar, annotation);
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
};

ZELMOR_TEST_MAIN(TestOverlayGeometry, QGuiApplication)
#include "tst_overlaygeometry.moc"
