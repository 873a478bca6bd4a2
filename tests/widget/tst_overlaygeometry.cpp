#include "TestMain.h"

#include "widget/overlay/OverlayGeometry.h"

using namespace zelmor::widget::overlay;

class TestOverlayGeometry : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void handles_data()
    {
        QTest::addColumn<QPoint>("pos");
        QTest::addColumn<int>("handle");
        // The selection is QRect(100, 100, 201, 101): right 300, bottom 200, centre (200, 150).
        QTest::newRow("top left") << QPoint(100, 100) << 0;
        QTest::newRow("diamond edge, 12 away") << QPoint(106, 106) << 0;
        QTest::newRow("diamond corner, 13 away") << QPoint(107, 106) << -1;
        QTest::newRow("top centre") << QPoint(200, 95) << 1;
        QTest::newRow("right centre uses right()") << QPoint(300, 150) << 3;
        QTest::newRow("bottom right") << QPoint(301, 201) << 4;
        QTest::newRow("left centre") << QPoint(96, 150) << 7;
        QTest::newRow("inside, no handle") << QPoint(150, 130) << -1;
    }
    void handles()
    {
        QFETCH(QPoint, pos);
        QFETCH(int, handle);
        QCOMPARE(handleAt(QRect(100, 100, 201, 101), pos), handle);
    }

    void earlierHandlesWinOnATinySelection()
    {
        QCOMPARE(handleAt(QRect(10, 10, 4, 4), QPoint(12, 12)), 0);
        QCOMPARE(handleAt(QRect(), QPoint(0, 0)), -1);
    }

    void snapping_data()
    {
        QTest::addColumn<QRect>("raw");
        QTest::addColumn<QRect>("snapped");
        // Against QRect(500, 300, 200, 100): left 500, right 699.
        QTest::newRow("left edge pulled")
            << QRect(505, 50, 50, 50) << QRect(QPoint(500, 50), QPoint(554, 99));
        QTest::newRow("8 away snaps, 9 not")
            << QRect(QPoint(491, 50), QPoint(707, 99)) << QRect(QPoint(491, 50), QPoint(699, 99));
        // Top and bottom compare with x values: a top 3 away from a vertical edge's x snaps.
        QTest::newRow("top to an x value")
            << QRect(QPoint(10, 503), QPoint(40, 520)) << QRect(QPoint(10, 500), QPoint(40, 520));
        QTest::newRow("nothing near") << QRect(100, 100, 50, 50) << QRect(100, 100, 50, 50);
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

    void resizePastTheOppositeEdgeFlips()
    {
        // QRect::normalized() of a flipped rectangle gives up one pixel on each side.
        QCOMPARE(resizedByHandle(QRect(100, 100, 100, 100), 3, QPoint(50, 0)),
                 QRect(QPoint(51, 100), QPoint(99, 199)));
        QCOMPARE(resizedByHandle(QRect(100, 100, 100, 100), 0, QPoint(90, 80)),
                 QRect(QPoint(90, 80), QPoint(199, 199)));
    }

    void toolbarPlacement_data()
    {
        QTest::addColumn<QRect>("selection");
        QTest::addColumn<bool>("annotationBar");
        QTest::addColumn<QPoint>("action");
        QTest::addColumn<QPoint>("annotation");
        // Overlay 1920x1080, action bar 400x38, annotation bar 600x38.
        // Centred on QRect::center(), which rounds down.
        QTest::newRow("below") << QRect(100, 100, 400, 300) << true << QPoint(99, 409)
                               << QPoint(8, 453);
        QTest::newRow("above") << QRect(700, 900, 400, 150) << true << QPoint(699, 852)
                               << QPoint(599, 808);
        QTest::newRow("full screen: inside near the bottom")
            << QRect(0, 0, 1920, 1080) << true << QPoint(759, 1031) << QPoint(659, 987);
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

    void sidePanelGoesLeftAtTheRightEdge()
    {
        const QSize overlay(1920, 1080), panel(140, 190);
        QCOMPARE(placeSidePanel(QRect(100, 100, 300, 300), overlay, panel), QPoint(409, 100));
        QCOMPARE(placeSidePanel(QRect(1700, 100, 220, 300), overlay, panel), QPoint(1550, 100));
        QCOMPARE(placeSidePanel(QRect(100, 1000, 300, 80), overlay, panel), QPoint(409, 882));
    }

    void magnifierFlips_data()
    {
        QTest::addColumn<QPoint>("pointer");
        QTest::addColumn<QPoint>("topLeft");
        QTest::newRow("free") << QPoint(100, 100) << QPoint(120, 120);
        QTest::newRow("right edge") << QPoint(1800, 100) << QPoint(1640, 120);
        QTest::newRow("bottom right corner") << QPoint(1900, 1070) << QPoint(1740, 910);
    }
    void magnifierFlips()
    {
        QFETCH(QPoint, pointer);
        QFETCH(QPoint, topLeft);
        QCOMPARE(magnifierBox(pointer, QSize(1920, 1080)), QRect(topLeft, QSize(140, 140)));
    }

    void sizeLabelGoesBelowAtTheTopEdge()
    {
        QCOMPARE(sizeLabelRect(QRect(50, 100, 200, 100)), QRect(50, 76, 84, 20));
        QCOMPARE(sizeLabelRect(QRect(50, 10, 200, 100)), QRect(50, 113, 84, 20));
    }
};

ZELMOR_TEST_MAIN(TestOverlayGeometry, QCoreApplication)
#include "tst_overlaygeometry.moc"
