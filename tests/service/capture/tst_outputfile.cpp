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

    static void touch(const QString& path) { QVERIFY(QFile(path).open(QIODevice::WriteOnly)); }

private Q_SLOTS:
    void init()
    {
        QDir(m_dir.path()).removeRecursively();
        QDir().mkpath(m_dir.path());
    }

    // Only the lower-case placeholders are known.
    void placeholdersAreFilled()
    {
        const QString path =
            makeOutputPath(m_dir.path(), "Zelmor_{date}_{time}_{DATE}{seq}", "png");
        QCOMPARE(QFileInfo(path).absolutePath(), m_dir.path());
        QVERIFY2(QRegularExpression("^Zelmor_\\d{4}-\\d\\d-\\d\\d_\\d\\d-\\d\\d-\\d\\d-\\d{3}_\\{"
                                    "DATE\\}\\{seq\\}\\.png$")
                     .match(QFileInfo(path).fileName())
                     .hasMatch(),
                 qPrintable(path));
    }

    void collisionsCountOnToFourDigits()
    {
        QStringList names;
        for (int i = 0; i < 3; ++i) {
            names << QFileInfo(makeOutputPath(m_dir.path(), "x", "png")).fileName();
            touch(m_dir.filePath(names.last()));
        }
        QCOMPARE(names, (QStringList{"x.png", "x_001.png", "x_002.png"}));
        for (int n = 3; n <= 999; ++n)
            touch(m_dir.filePath(QStringLiteral("x_%1.png").arg(n, 3, 10, QLatin1Char('0'))));
        QCOMPARE(makeOutputPath(m_dir.path(), "x", "png"), m_dir.filePath("x_1000.png"));
    }

    // A missing folder is made; no folder means the working one.
    void folders()
    {
        const QString dir = m_dir.filePath("a/b/c");
        QCOMPARE(makeOutputPath(dir, "n", "png"), dir + "/n.png");
        QVERIFY(QFileInfo(dir).isDir());
        const QString saved = QDir::currentPath();
        QDir::setCurrent(m_dir.path());
        const QString path = makeOutputPath(QString(), "here", "png");
        QDir::setCurrent(saved);
        QCOMPARE(path, m_dir.filePath("here.png"));
    }

    void failedSaveLeavesNoFile_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("pattern");
        QTest::newRow("folder below a file") << "file/sub"
                                             << "n";
        QTest::newRow("slash in the pattern") << ""
                                              << "sub/n";
        QTest::newRow("null pixmap") << ""
                                     << "null";
    }
    void failedSaveLeavesNoFile()
    {
        QFETCH(QString, folder);
        QFETCH(QString, pattern);
        touch(m_dir.filePath("file"));
        QPixmap pixmap(pattern == "null" ? 0 : 8, 8);
        pixmap.fill(Qt::red);
        const QString path = makeOutputPath(m_dir.filePath(folder), pattern, "png");
        QVERIFY(!savePixmapFile(pixmap, path));
        QVERIFY(!QFile::exists(path));
    }
};

ZELMOR_TEST_MAIN(TestOutputFile, QApplication)
#include "tst_outputfile.moc"
