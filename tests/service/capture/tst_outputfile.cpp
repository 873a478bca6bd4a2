#include "TestMain.h"

#include "service/capture/OutputFile.h"

#include <QFileInfo>
#include <QPixmap>
#include <QRegularExpression>

using namespace zelmor::service::capture;

class TestOutputFile : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    static void touch(const QString& path)
    {
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly));
    }

private Q_SLOTS:
    void init()
    {
        QDir(m_dir.path()).removeRecursively();
        QDir().mkpath(m_dir.path());
    }

    void placeholdersAreFilled()
    {
        const QString path = makeOutputPath(m_dir.path(), QStringLiteral("Zelmor_{date}_{time}"),
                                            QStringLiteral("png"));
        QCOMPARE(QFileInfo(path).absolutePath(), m_dir.path());
        QVERIFY2(
            QRegularExpression(
                QStringLiteral("^Zelmor_\\d{4}-\\d\\d-\\d\\d_\\d\\d-\\d\\d-\\d\\d-\\d{3}\\.png$"))
                .match(QFileInfo(path).fileName())
                .hasMatch(),
            qPrintable(path));
    }

    void onlyLowerCasePlaceholdersAreKnown_data()
    {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QString>("expected");
        QTest::newRow("upper case") << "{DATE}-{Time}"
                                    << "{DATE}-{Time}.jpg";
        QTest::newRow("promised but unknown") << "{seq}_{w}x{h}"
                                              << "{seq}_{w}x{h}.jpg";
    }
    void onlyLowerCasePlaceholdersAreKnown()
    {
        QFETCH(QString, pattern);
        QFETCH(QString, expected);
        QCOMPARE(QFileInfo(makeOutputPath(m_dir.path(), pattern, QStringLiteral("jpg"))).fileName(),
                 expected);
    }

    void collisionsCountFromOne()
    {
        const QString pattern = QStringLiteral("shot");
        QStringList names;
        for (int i = 0; i < 3; ++i) {
            const QString path = makeOutputPath(m_dir.path(), pattern, QStringLiteral("png"));
            names << QFileInfo(path).fileName();
            touch(path);
        }
        QCOMPARE(names, (QStringList{QStringLiteral("shot.png"), QStringLiteral("shot_001.png"),
                                     QStringLiteral("shot_002.png")}));
    }

    void collisionsGrowToFourDigits()
    {
        touch(m_dir.filePath(QStringLiteral("x.png")));
        for (int n = 1; n <= 999; ++n)
            touch(m_dir.filePath(QStringLiteral("x_%1.png").arg(n, 3, 10, QLatin1Char('0'))));
        QCOMPARE(QFileInfo(makeOutputPath(m_dir.path(), QStringLiteral("x"), QStringLiteral("png")))
                     .fileName(),
                 QStringLiteral("x_1000.png"));
    }

    void missingFolderIsCreated()
    {
        const QString dir = m_dir.filePath(QStringLiteral("a/b/c"));
        const QString path = makeOutputPath(dir, QStringLiteral("n"), QStringLiteral("png"));
        QVERIFY(QFileInfo(dir).isDir());
        QCOMPARE(path, dir + QStringLiteral("/n.png"));
    }

    void emptyFolderMeansCurrentDirectory()
    {
        const QString saved = QDir::currentPath();
        QDir::setCurrent(m_dir.path());
        const QString path =
            makeOutputPath(QString(), QStringLiteral("here"), QStringLiteral("png"));
        QDir::setCurrent(saved);
        QCOMPARE(path, m_dir.filePath(QStringLiteral("here.png")));
    }

    void folderThatCannotBeCreatedFailsTheSaveOnly()
    {
        touch(m_dir.filePath(QStringLiteral("file")));
        const QString path = makeOutputPath(m_dir.filePath(QStringLiteral("file/sub")),
                                            QStringLiteral("n"), QStringLiteral("png"));
        QPixmap pixmap(8, 8);
        pixmap.fill(Qt::red);
        QVERIFY(!savePixmapFile(pixmap, path));
    }

    void slashInPatternNeedsAnExistingSubfolder()
    {
        QPixmap pixmap(8, 8);
        pixmap.fill(Qt::red);
        QVERIFY(!savePixmapFile(
            pixmap, makeOutputPath(m_dir.path(), QStringLiteral("sub/n"), QStringLiteral("png"))));
    }

    void saveRoundTrips()
    {
        QPixmap pixmap(16, 9);
        pixmap.fill(QColor(1, 2, 3));
        const QString path = m_dir.filePath(QStringLiteral("p.png"));
        QVERIFY(savePixmapFile(pixmap, path));
        QCOMPARE(QImage(path).pixelColor(5, 5), QColor(1, 2, 3));
        QVERIFY(!savePixmapFile(QPixmap(), m_dir.filePath(QStringLiteral("null.png"))));
        QVERIFY(!QFile::exists(m_dir.filePath(QStringLiteral("null.png"))));
    }
};

ZELMOR_TEST_MAIN(TestOutputFile, QApplication)
#include "tst_outputfile.moc"
