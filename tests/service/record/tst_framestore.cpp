#include "TestMain.h"

#include "service/record/FrameStore.h"
#include "service/record/GifEncoder.h"

#include <QTemporaryDir>
#include <QTest>

#include <numeric>

using namespace zelmor::service::record;

namespace {

enum class Change { None, FewPixels, Everything };

// Frame i of a recording of `size`: a noisy background, changed from frame to frame as told.
// The few pixels that change lie on the right and bottom edges too, where tiles are cut short.
QList<QImage> recording(const QSize& size, Change change, int count)
{
    QImage frame(size, QImage::Format_RGB32);
    quint32 seed = 99;
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x) {
            seed ^= seed << 13, seed ^= seed >> 17, seed ^= seed << 5;
            frame.setPixel(x, y, seed | 0xff000000u);
        }
    QList<QImage> frames;
    for (int i = 0; i < count; ++i) {
        if (change == Change::Everything) {
            frame.fill(QColor::fromHsv(i * 37 % 360, 200, 200));
            frame.setPixel(i % size.width(), 0, qRgb(i, 0, 0));
        } else if (change == Change::FewPixels) {
            frame.setPixel(size.width() - 1, size.height() - 1, qRgb(i, 1, 2));
            frame.setPixel((i * 29) % size.width(), (i * 13) % size.height(), qRgb(0, i, 3));
        }
        frames << frame.copy();
    }
    return frames;
}

} // namespace

// Recorded frames kept compressed, and what comes back out of them.
class TestFrameStore : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Reading in the editor's orders: playing, stepping back, the rows left after deletes,
    // and all of them again after a restore, across whole frames and differences.
    void framesComeBackAsTheyWentIn_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<int>("change");
        QTest::addColumn<QList<int>>("reads");
        const QList<int> forward{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
        const QList<int> backward{10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0};
        const QList<int> deletedThenRestored{1, 4, 5, 9, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
        QTest::newRow("still") << QSize(128, 64) << int(Change::None) << forward;
        QTest::newRow("few pixels, forward")
            << QSize(200, 150) << int(Change::FewPixels) << forward;
        QTest::newRow("few pixels, backward")
            << QSize(200, 150) << int(Change::FewPixels) << backward;
        QTest::newRow("whole frames, backward")
            << QSize(96, 80) << int(Change::Everything) << backward;
        QTest::newRow("odd size, deleted and restored")
            << QSize(131, 67) << int(Change::FewPixels) << deletedThenRestored;
        QTest::newRow("one pixel wide") << QSize(1, 70) << int(Change::FewPixels) << backward;
    }
    void framesComeBackAsTheyWentIn()
    {
        QFETCH(QSize, size);
        QFETCH(int, change);
        QFETCH(QList<int>, reads);
        const QList<QImage> frames = recording(size, Change(change), 11);
        auto store = std::make_shared<FrameStore>(size, 4);
        for (const QImage& frame : frames)
            store->append(frame);
        store->close();
        // A small cache, so that reads walk from whole frames as well as hit the cache.
        FrameReader reader(store, qint64(size.width()) * size.height() * 4 * 2);
        for (int row : reads)
            QVERIFY2(reader.frame(row) == frames.at(row), qPrintable(QString::number(row)));
        QVERIFY(reader.frame(11).isNull());
    }

    // The export from the store, on every core, writes the very bytes that the encoder wrote
    // frame by frame from the images, also for rows left after deletes and an odd size.
    void exportMatchesTheSingleThreadEncoder_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QList<int>>("rows");
        QList<int> all(40);
        std::iota(all.begin(), all.end(), 0);
        QTest::newRow("all frames") << QSize(120, 90) << all;
        QTest::newRow("rows left, odd size") << QSize(121, 77) << QList<int>{0, 3, 4, 17, 38, 39};
    }
    void exportMatchesTheSingleThreadEncoder()
    {
        QFETCH(QSize, size);
        QFETCH(QList<int>, rows);
        const QList<QImage> frames = recording(size, Change::FewPixels, 40);
        QList<QImage> kept;
        for (int row : rows)
            kept << frames.at(row);
        QTemporaryDir dir;
        const QString reference = dir.filePath("reference.gif"), parallel = dir.filePath("new.gif");
        QString error;
        const int width = size.width() & ~1, height = size.height() & ~1;
        QVERIFY(writeGifMedianCut(error, reference, kept, 70, width, height));
        QList<int> written;
        QVERIFY(writeGifParallel(error, parallel, {FrameStore::fromImages(frames), rows}, 70, width,
                                 height, nullptr, [&](int count) { written << count; }));
        QFile a(reference), b(parallel);
        QVERIFY(a.open(QIODevice::ReadOnly) && b.open(QIODevice::ReadOnly));
        QCOMPARE(b.readAll(), a.readAll());
        QCOMPARE(written.last(), rows.size());
    }
};

ZELMOR_TEST_MAIN(TestFrameStore, QCoreApplication)
#include "tst_framestore.moc"
