#include "TestMain.h"
#include "TestSupport.h"

#include "service/record/GifEncoder.h"

#include <QImageReader>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QThreadPool>

#include <csignal>

#include <sys/resource.h>

using namespace zelmor::service::record;
using zelmor::test::readFile;
using zelmor::test::writeFile;

namespace {

// What one independent reader makes of a GIF file.
struct GifInfo
{
    int frames = 0;
    QSize size;
    bool loopForever = false;
    QList<int> delaysCs;
};

// `colours` distinct colours, each present; the other pixels pick among them at random.
QImage colouredFrame(int width, int height, int colours, quint32 seed = 7)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int i = 0; i < width * height; ++i) {
        seed ^= seed << 13, seed ^= seed >> 17, seed ^= seed << 5;
        const int k = i < colours ? i : int(seed % quint32(colours));
        image.setPixel(i % width, i / width, qRgb(k % 256, 3 + 40 * (k / 256), (k * 13) % 256));
    }
    return image;
}

// A window-like picture: a gradient, a flat panel with dark strokes, a moving white block.
QImage screenFrame(int width, int height, int t)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            QRgb c = y < height / 3 ? qRgb(x * 255 / width, y * 255 / height, 200)
                     : (x / 3 + y / 5) % 7 == 0 && y % 10 < 7 ? qRgb(30, 30, 40)
                                                              : qRgb(240, 240, 240);
            if (qAbs(x - 5 * t) < 4 && qAbs(y - 3 * t) < 6) c = qRgb(255, 255, 255);
            image.setPixel(x, y, c);
        }
    return image;
}

// 254 indices in a row, then two repeated: the last code lands on a change of code width,
// where the end code is written one bit narrower than a reader expects.
QImage widthEdgeFrame()
{
    QImage image(16, 16, QImage::Format_RGB32);
    for (int i = 0; i < 256; ++i) {
        const int k = i < 254 ? i : i - 254;
        image.setPixel(i % 16, i / 16, qRgb(k, 255 - k, (k * 5) % 256));
    }
    return image;
}

} // namespace

class TestGifEncoder : public QObject
{
    Q_OBJECT

    QTemporaryDir m_work;
    QString m_stubDir, m_cwd; // the stub folder is all of PATH: only stand-ins are found
    QHash<QString, QString> m_tools;

    QString file(const QString& name) const { return m_work.filePath(name); }

    static GifInfo readWithQt(const QString& path)
    {
        GifInfo info;
        QImageReader reader(path, "gif");
        info.loopForever = reader.loopCount() == -1;
        for (QImage image = reader.read(); !image.isNull(); image = reader.read())
            ++info.frames, info.size = image.size();
        // Qt reads short delays as 100 ms: the delays come from the control blocks themselves.
        const QByteArray bytes = readFile(path);
        for (qsizetype at = bytes.indexOf("\x21\xF9\x04"); at >= 0;
             at = bytes.indexOf("\x21\xF9\x04", at + 1))
            info.delaysCs << (uchar(bytes[at + 4]) | uchar(bytes[at + 5]) << 8);
        return info;
    }

    QImage firstFrameByFfmpeg(const QString& path)
    {
        QProcess ffmpeg;
        ffmpeg.start(m_tools["ffmpeg"], {"-v", "error", "-i", path, "-frames:v", "1", "-f",
                                         "image2pipe", "-c:v", "png", "-"});
        ffmpeg.waitForFinished(60000);
        return QImage::fromData(ffmpeg.readAllStandardOutput())
            .convertToFormat(QImage::Format_RGB32);
    }

    // A gifski stand-in; $dir is where it may keep what it was given.
    void installStandIn(const QByteArray& body)
    {
        const QString path = m_stubDir + "/gifski";
        QVERIFY(writeFile(path, "#!/bin/sh\ndir='" + m_stubDir.toUtf8() + "'\ncat='" +
                                    m_tools["cat"].toUtf8() + "'\nffmpeg='" +
                                    m_tools["ffmpeg"].toUtf8() + "'\n" + body + "\n"));
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

private Q_SLOTS:
    void initTestCase()
    {
        for (const char* tool : {"ffmpeg", "cat"}) {
            m_tools[tool] = QStandardPaths::findExecutable(tool);
            QVERIFY2(!m_tools[tool].isEmpty(), tool); // scripts/install-deps.sh installs it
        }
        m_stubDir = file("bin");
        m_cwd = file("cwd");
        QVERIFY(QDir().mkpath(m_stubDir));
        qputenv("PATH", m_stubDir.toUtf8());
        cleanup();
        QVERIFY(findGifski().isEmpty());
    }

    void cleanup()
    {
        QFile::remove(m_stubDir + "/gifski");
        QDir(m_cwd).removeRecursively();
        QVERIFY(QDir().mkpath(m_cwd) && QDir::setCurrent(m_cwd));
    }

    void readersAgree_data()
    {
        QTest::addColumn<QList<QImage>>("frames");
        QTest::addColumn<int>("interval");
        QTest::addColumn<QSize>("requested");
        QTest::addColumn<QSize>("written");
        QTest::addColumn<int>("delayCs");
        const QImage a = screenFrame(101, 60, 0), b = screenFrame(101, 60, 5);
        QImage translucent(50, 10, QImage::Format_ARGB32);
        translucent.fill(qRgba(200, 10, 10, 90));
        QTest::newRow("odd width")
            << QList<QImage>{a, b, a} << 100 << QSize(101, 60) << QSize(100, 60) << 10;
        QTest::newRow("mixed sizes and formats")
            << QList<QImage>{a, translucent, QImage(), a.scaled(5, 300)} << 40 << QSize(64, 48)
            << QSize(64, 48) << 4;
    }
    void readersAgree()
    {
        QFETCH(QList<QImage>, frames);
        QFETCH(int, interval);
        QFETCH(QSize, requested);
        QFETCH(int, delayCs);
        const QString path = file("readers.gif");
        QString error;
        QVERIFY(encodeGif(error, path, frames, interval, requested.width(), requested.height()));
        const GifInfo qt = readWithQt(path);
        QCOMPARE(qt.frames, frames.size());
        QTEST(qt.size, "written");
        QCOMPARE(qt.delaysCs, QList<int>(frames.size(), delayCs));
        QVERIFY(qt.loopForever);
    }

    void decodedPixelsEqualSource_data()
    {
        QTest::addColumn<QImage>("frame");
        QTest::newRow("256 colours") << colouredFrame(64, 40, 256);
        QTest::newRow("full dictionary") << colouredFrame(128, 128, 200, 99);
        QTest::newRow("end code at a width change") << widthEdgeFrame();
    }
    void decodedPixelsEqualSource()
    {
        QFETCH(QImage, frame);
        const QString path = file("pixels.gif");
        QString error;
        QVERIFY(encodeGif(error, path, {frame}, 100, frame.width(), frame.height()));
        QCOMPARE(QImage(path).convertToFormat(QImage::Format_RGB32), frame);
        QCOMPARE(firstFrameByFfmpeg(path), frame);
    }

    // Where the recorder calls it, on a pool thread; through ffmpeg's reading of the stream,
    // each block keeps its colour.
    void gifskiStandIn()
    {
        installStandIn("printf '%s\\n' \"$@\" > \"$dir/args\"\n"
                       "while [ $# -gt 1 ]; do [ \"$1\" = -o ] && out=$2; shift; done\n"
                       "exec \"$ffmpeg\" -v error -y -f yuv4mpegpipe -i - -f gif \"$out\"");
        // Red, blue and black bands, 9 wide to be cut to 8.
        QImage frame(8, 4, QImage::Format_RGB32);
        for (int i = 0; i < 32; ++i)
            frame.setPixel(i % 8, i / 8,
                           i % 8 < 2   ? qRgb(255, 0, 0)
                           : i % 8 < 4 ? qRgb(0, 0, 255)
                                       : 0);
        const QString path = file("gifski.gif");
        QString error;
        bool ok = false;
        QThreadPool::globalInstance()->start([&] {
            ok = encodeGif(error, path, {frame, frame, frame}, 40, 9, 4);
        });
        QThreadPool::globalInstance()->waitForDone();
        QVERIFY2(ok && error.isEmpty(), qPrintable(error));
        QCOMPARE(readWithQt(path).frames, 3);
        const QStringList args = QString(readFile(m_stubDir + "/args")).split('\n');
        QCOMPARE(args.mid(0, 6), (QStringList{"--fps", "25", "-W", "8", "-H", "4"}));
        const QImage decoded = QImage(path).convertToFormat(QImage::Format_RGB32);
        for (const QPoint& block : {QPoint(0, 2), QPoint(2, 2), QPoint(6, 2)})
            QVERIFY2(qAbs(qRed(decoded.pixel(block)) - qRed(frame.pixel(block))) < 40 &&
                         qAbs(qBlue(decoded.pixel(block)) - qBlue(frame.pixel(block))) < 40,
                     qPrintable(QString::number(decoded.pixel(block), 16)));
    }

    void gifskiFailureFallsBack_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("error");
        QTest::newRow("exit before reading")
            << QByteArray("exit 1") << "^gifski (exit 1|Y4M (header|frame) write failed)$";
        QTest::newRow("no output")
            << QByteArray("\"$cat\" > /dev/null") << "^gifski produced no output$";
    }
    void gifskiFailureFallsBack()
    {
        QFETCH(QByteArray, body);
        QFETCH(QString, error);
        installStandIn(body);
        const QString path = file("fallback.gif");
        QFile::remove(path);
        QString reason;
        QVERIFY(encodeGif(reason, path, {screenFrame(400, 300, 0), screenFrame(400, 300, 1)}, 100,
                          400, 300));
        QVERIFY2(QRegularExpression(error).match(reason).hasMatch(), qPrintable(reason));
        const GifInfo info = readWithQt(path);
        QCOMPARE(info.frames, 2);
        QVERIFY(info.loopForever);
    }

    // Only an executable file counts, say not a folder or a source file named gifski.
    void findGifskiTakesOnlyPrograms()
    {
        QDir().mkpath(file("cwd/build"));
        QVERIFY(writeFile(file("cwd/gifski"), "#!/bin/sh\n"));
        QVERIFY(writeFile(file("cwd/build/gifski"), "#!/bin/sh\n"));
        QFile::setPermissions(file("cwd/build/gifski"), QFile::ReadOwner | QFile::ExeOwner);
        QCOMPARE(findGifski(), file("cwd/build/gifski"));
    }

    void failures_data()
    {
        QTest::addColumn<int>("frames");
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("error");
        QTest::newRow("no frames") << 0 << "none.gif"
                                   << "no frames";
        QTest::newRow("folder is a file") << 1 << "blocker/x.gif"
                                          << "cannot open output: %1";
    }
    void failures()
    {
        QFETCH(int, frames);
        QFETCH(QString, path);
        QFETCH(QString, error);
        QVERIFY(writeFile(file("blocker"), "x"));
        path = file(path);
        QString reason;
        QVERIFY(
            !encodeGif(reason, path, QList<QImage>(frames, screenFrame(20, 20, 0)), 100, 20, 20));
        QCOMPARE(reason, error.replace("%1", path));
    }

    // A write that fails half-way, as on a full disk, leaves the old file as it was, whichever
    // encoder wrote.
    void failedWriteKeepsTheOldFile_data()
    {
        QTest::addColumn<bool>("gifski");
        QTest::newRow("own encoder") << false;
        QTest::newRow("gifski") << true;
    }
    void failedWriteKeepsTheOldFile()
    {
        QFETCH(bool, gifski);
        if (gifski)
            installStandIn("while [ $# -gt 1 ]; do [ \"$1\" = -o ] && out=$2; shift; done\n"
                           "exec \"$cat\" > \"$out\"");
        const QString path = file("kept.gif");
        QVERIFY(writeFile(path, "old"));
        QString reason;
        bool written = true;
        {
            // No file of this process, or of what it starts, grows past 4 KiB: a full disk.
            rlimit saved{}, full{};
            getrlimit(RLIMIT_FSIZE, &saved);
            full = {4096, saved.rlim_max};
            const auto signal = std::signal(SIGXFSZ, SIG_IGN); // the write fails instead
            setrlimit(RLIMIT_FSIZE, &full);
            written = encodeGif(reason, path, {screenFrame(400, 300, 0), screenFrame(400, 300, 1)},
                                100, 400, 300);
            setrlimit(RLIMIT_FSIZE, &saved);
            std::signal(SIGXFSZ, signal);
        }
        QVERIFY(!written);
        QCOMPARE(readFile(path), QByteArray("old"));
        QCOMPARE(
            QDir(m_work.path()).entryList({"kept.gif*", ".gifski-*"}, QDir::Files | QDir::Hidden),
            QStringList{"kept.gif"}); // nor anything of the new one
    }
};

ZELMOR_TEST_MAIN(TestGifEncoder, QCoreApplication)
#include "tst_gifencoder.moc"
