#include "TestMain.h"

#include "core/CaptureResult.h"
#include "core/Utilities.h"

#include <QFileInfo>
#include <QImage>
#include <QPixmap>

using namespace zelmor::core;

class TestUtilities : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void fileSize_data()
    {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("negative") << qint64(-5) << "-5 bytes";
        QTest::newRow("zero") << qint64(0) << "0 bytes";
        QTest::newRow("1023") << qint64(1023) << "1023 bytes";
        QTest::newRow("1024") << qint64(1024) << "1.0 KB";
        QTest::newRow("1536") << qint64(1536) << "1.5 KB";
        QTest::newRow("10199 rounds up but keeps a decimal") << qint64(10199) << "10.0 KB";
        QTest::newRow("10240") << qint64(10240) << "10 KB";
        QTest::newRow("just below 1 MB") << qint64(1048575) << "1024 KB";
        QTest::newRow("1 MB") << qint64(1048576) << "1.0 MB";
        QTest::newRow("500 MB") << qint64(524288000) << "500 MB";
        QTest::newRow("1 GB") << qint64(1073741824) << "1.0 GB";
        QTest::newRow("3 TB stays in GB") << qint64(3) * 1024 * 1073741824 << "3072 GB";
    }
    void fileSize()
    {
        QFETCH(qint64, bytes);
        QFETCH(QString, text);
        QCOMPARE(formatFileSize(bytes), text);
    }

    void tempFileStaysEmptyAndUnique()
    {
        const QString a = makeTempFilePath(QStringLiteral("png"));
        const QString b = makeTempFilePath(QStringLiteral("png"));
        QVERIFY(a != b);
        for (const QString& path : {a, b}) {
            QFileInfo info(path);
            QVERIFY(info.exists());
            QCOMPARE(info.size(), 0);
            QVERIFY(info.fileName().startsWith(QStringLiteral("zelmor-")));
            QCOMPARE(info.suffix(), QStringLiteral("png"));
            QFile::remove(path);
        }
    }

    void base64IsPngOfTheImage()
    {
        QImage image(3, 2, QImage::Format_ARGB32);
        image.fill(QColor(10, 20, 30, 128));
        const QByteArray png = QByteArray::fromBase64(imageToBase64(image));
        QVERIFY(png.startsWith("\x89PNG"));
        QCOMPARE(QImage::fromData(png, "PNG").convertToFormat(QImage::Format_ARGB32), image);
        QVERIFY(imageToBase64(QImage()).isEmpty());
    }

    void captureKinds_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<int>("kind");
        QTest::newRow("gif") << "gif" << int(Gif);
        QTest::newRow("scroll") << "scroll" << int(Scroll);
        QTest::newRow("screenshot") << "screenshot" << int(Image);
        QTest::newRow("empty") << "" << int(Image);
    }
    void captureKinds()
    {
        QFETCH(QString, type);
        QFETCH(int, kind);
        QCOMPARE(int(captureKindFromText(type)), kind);
    }

    void captureResultCopiesSize()
    {
        QPixmap pixmap(40, 30);
        const CaptureResult r = makeCaptureResult(pixmap);
        QCOMPARE(r.width, 40);
        QCOMPARE(r.height, 30);
        QCOMPARE(r.kind, Image);
        QVERIFY(r.filePath.isEmpty());
        QVERIFY(makeCaptureResult(QPixmap()).pixmap.isNull());
    }
};

ZELMOR_TEST_MAIN(TestUtilities, QApplication)
#include "tst_utilities.moc"
