#include "TestMain.h"

#include "service/capture/ScrollStitcher.h"

#include <QRandomGenerator>

using namespace zelmor::service::capture;
using Ints = QList<int>;

class TestScrollStitcher : public QObject
{
    Q_OBJECT

    static constexpr int kWidth = 64; // of the first frame; later ones may differ

    // Seeded noise above row 1600 (no row repeats), one flat colour below; wider than frames.
    static QImage content()
    {
        QImage image(96, 2000, QImage::Format_ARGB32_Premultiplied);
        QRandomGenerator random(7);
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                image.setPixel(x, y, y >= 1600 ? 0xff336699 : random.generate() | 0xff000000);
        return image;
    }

private Q_SLOTS:
    // Frames cut from the content at `tops` (-1: null); idle limit 1 stops on any still frame.
    void framesAreStitched_data()
    {
        QTest::addColumn<Ints>("tops");
        QTest::addColumn<Ints>("results");
        for (const char* column : {"height", "stitched", "idleLimit", "boundRows", "laterWidth"})
            QTest::addColumn<int>(column);
        auto row = [](const char* name, int height, Ints tops, Ints results, int stitched,
                      int idleLimit = 1, int boundRows = 0, int laterWidth = kWidth) {
            QTest::newRow(name) << tops << results << height << stitched << idleLimit << boundRows
                                << laterWidth;
        };
        row("identical tall frames", 800, {0, 0, 740}, {0, 1, 0}, 1540);
        row("uniform region", 100, {1600, 1600, 1600}, {0, 0, 0}, 236);
        row("offset 64 is searched", 200, {0, 104}, {0, 0}, 304);
        row("offset 65 is not", 200, {0, 103}, {0, 1}, 200);
        row("height 40 matches at 8", 40, {0, 0}, {0, 0}, 40);
        row("lower than the overlap", 20, {0, 0}, {0, 0}, 20);
        row("several steps", 100, {0, 60, 100, 160, 215}, {0, 0, 0, 0, 0}, 315);
        row("null first frame", 100, {-1, 0, 60}, {1, 0, 0}, 160);
        row("still frames stop", 64, {0, 0, 0, 0}, {0, 0, 0, 2}, 64, 3);
        row("a step resets the still count", 64, {0, 0, 10, 10, 10}, {0, 0, 0, 0, 2}, 74, 2);
        row("memory bound", 100, {0, 60, 120, 180, 240}, {0, 0, 0, 0, 2}, 280, 1, 280);
        row("narrower frame", 100, {0, 60}, {0, 0}, 160, 1, 0, 40);
        row("wider frame", 100, {0, 60}, {0, 0}, 160, 1, 0, 96);
    }
    void framesAreStitched()
    {
        QFETCH(int, height);
        QFETCH(int, idleLimit);
        QFETCH(int, boundRows);
        QFETCH(int, laterWidth);
        QFETCH(Ints, tops);
        QFETCH(int, stitched);
        const QImage source = content();
        ScrollStitcher stitcher(32, 8, idleLimit, nullptr, qint64(boundRows) * kWidth * 4);
        Ints results;
        for (int i = 0; i < tops.size(); ++i)
            results << stitcher.addFrame(
                tops[i] < 0 ? QImage() : source.copy(0, tops[i], i ? laterWidth : kWidth, height));
        QTEST(results, "results");
        QCOMPARE(stitcher.memoryLimitReached(), boundRows > 0);
        QImage expected = source.copy(0, std::max(0, tops[0]), kWidth, stitched);
        for (int y = height; y < stitched && laterWidth < kWidth; ++y)
            memset(expected.scanLine(y) + laterWidth * 4, 0, (kWidth - laterWidth) * 4);
        QCOMPARE(stitcher.canvasHeight(), stitched);
        QCOMPARE(stitcher.canvas(), expected);
    }

    // A gray's luma is its level: 8 apart everywhere; the strip's extra columns are skipped.
    void scoreAtTheThresholdMatches()
    {
        QImage frame(50, 100, QImage::Format_ARGB32_Premultiplied), strip(60, 32, frame.format());
        frame.fill(qRgb(100, 100, 100));
        strip.fill(qRgb(108, 108, 108));
        const auto overlap = ScrollStitcher(32, 8, 6).findOverlap(frame, strip);
        QVERIFY(overlap.match && !ScrollStitcher(32, 7, 6).findOverlap(frame, strip).match);
        QCOMPARE(overlap.score, 8.0);
    }
};

ZELMOR_TEST_MAIN(TestScrollStitcher, QApplication)
#include "tst_scrollstitcher.moc"
