#include "TestMain.h"
#include "TestSupport.h"

#include "core/ConfigManager.h"
#include "core/Log.h"
#include "core/Utilities.h"
#include "service/capture/OutputFile.h"

#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHash>
#include <QPixmap>
#include <QRegularExpression>
#include <QSignalSpy>

#include <memory>
#include <numeric>

#include <sys/wait.h>
#include <unistd.h>

using namespace zelmor::core;
using zelmor::service::capture::makeOutputPath;

class TestCore : public QObject
{
    Q_OBJECT

    // A fresh folder per test: QSettings caches parsed files by path within a process.
    std::unique_ptr<QTemporaryDir> m_dir;
    QString iniPath() const { return m_dir->filePath(QStringLiteral("Zelmor.ini")); }
    // What another process would read from disk right now (a QSettings in this process
    // would share the unsynced cache).
    QVariant onDisk(const QString& key) const
    {
        static int serial = 0;
        const QString copy = m_dir->filePath(QStringLiteral("copy%1.ini").arg(++serial));
        QFile::copy(iniPath(), copy);
        return QSettings(copy, QSettings::IniFormat).value(key);
    }
    static QString logText() { return QString::fromUtf8(read(logFilePath())); }
    static void writeFile(const QString& path, const QByteArray& b)
    {
        QVERIFY(zelmor::test::writeFile(path, b));
    }

    static QByteArray read(const QString& path) { return zelmor::test::readFile(path); }
    QString dir(const QString& sub = {}) const { return m_dir->filePath(sub); }
    // Lines of 64 bytes, numbered, so that where a cut falls can be checked.
    static QByteArray numberedLines(qint64 size)
    {
        QByteArray text;
        for (int i = 0; text.size() < size; ++i)
            text += QByteArray::number(i).rightJustified(8, '0') + QByteArray(55, '.') + '\n';
        text.truncate(size);
        text[size - 1] = '\n'; // a log always ends with a whole line
        return text;
    }

private Q_SLOTS:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QFile::remove(zelmor::core::logFilePath());
    }

    // A default cleared before it was ever stored stays cleared, also after a restart.
    void hotkeyClearing()
    {
        ConfigManager config(iniPath());
        QSignalSpy changed(&config, &ConfigManager::hotkeysChanged);
        config.setHotkey("region", QString());
        config.setHotkey("region", QString());
        QCOMPARE(changed.count(), 1);
        QCOMPARE(ConfigManager(iniPath()).hotkeyRegion(), QString());
        config.setHotkey("region", "F6");
        QCOMPARE(onDisk("hotkeys/region").toString(), "F6");
    }

    void generalGroupSurvivesARestart()
    {
        {
            ConfigManager config(iniPath());
            QVERIFY(!QFile::exists(iniPath())); // reading writes nothing
            config.setOutputDir(QString());     // empty means unset
            QVERIFY(config.outputDir().endsWith("/Zelmor"));
            config.setOutputDir("/shots");
            config.setTheme("dark");
        }
        ConfigManager reopened(iniPath());
        QCOMPARE(reopened.outputDir(), "/shots");
        QCOMPARE(reopened.theme(), "dark");
    }

    void customPaths()
    {
        ConfigManager config(iniPath());
        for (const char* path : {"  ", " a ", " a ", " A "})
            config.addMcpCustomPath(path);
        QCOMPARE(config.mcpCustomPaths(), (QStringList{" a ", " A "}));
        // A hand-edited file may hold duplicates; removal takes them all.
        writeFile(iniPath(), "[mcp]\ncustomPaths=/x, /y, /x\n");
        ConfigManager edited(iniPath());
        edited.removeMcpCustomPath("/x");
        QCOMPARE(onDisk("mcp/customPaths").toStringList(), QStringList{"/y"});
    }

    void migratesOlderFileOnce()
    {
        const QString older = m_dir->filePath("Zelmor-Qt.ini");
        writeFile(older, "[%General]\nlanguage=zh_CN\ntheme=dark\n[hotkeys]\nregion=F2\n");
        {
            ConfigManager config(iniPath());
            QCOMPARE(config.hotkeyRegion(), "F2");
            QVERIFY(QFile::exists(older));
            QVERIFY2(logText().contains("[config] migrated prefs from " + older),
                     qPrintable(logText()));
            config.setHotkey("region", "F3");
        }
        QFile::remove(older);
        ConfigManager again(iniPath()); // the current file exists now: no second copy
        QCOMPARE(again.hotkeyRegion(), "F3");
    }

    void unreadableFileKeepsDefaults_data()
    {
        QTest::addColumn<bool>("asDirectory");
        QTest::newRow("garbage") << false;
        QTest::newRow("a directory") << true;
    }
    void unreadableFileKeepsDefaults()
    {
        QFETCH(bool, asDirectory);
        if (asDirectory) {
            QVERIFY(QDir().mkpath(iniPath()));
        } else {
            writeFile(iniPath(),
                      QByteArray("[general\n\xff\xfe\x00 =\n[[[\n", 13) + QByteArray(64, '\0'));
        }
        ConfigManager config(iniPath());
        QCOMPARE(config.hotkeyRegion(), "F6");
        config.setLanguage("en_US"); // must not crash, whatever the file is
        QCOMPARE(config.language(), "en_US");
        if (asDirectory) QVERIFY(logText().contains("using defaults"));
    }

    void rotation_data()
    {
        QTest::addColumn<QByteArray>("log");
        QTest::addColumn<QByteArray>("kept");
        const QByteArray full = numberedLines(kLogRotateAbove);
        QTest::newRow("at the limit") << full << full;
        const QByteArray over = numberedLines(kLogRotateAbove + 1);
        QByteArray tail = over.right(kLogKeepTail);
        // The newer half from its first whole line, and an empty line behind it.
        QTest::newRow("one byte over") << over << tail.mid(tail.indexOf('\n') + 1) + '\n';
        QTest::newRow("one long line")
            << QByteArray(kLogRotateAbove + 10, 'x') << QByteArray(kLogKeepTail, 'x') + '\n';
    }
    void rotation()
    {
        QFETCH(QByteArray, log);
        writeFile(logFilePath(), log);
        rotateLogFile(logFilePath());
        QTEST(read(logFilePath()), "kept");
    }

    // Two processes write while the log rotates under them: every line written after the
    // rotation point must survive, in order. Several rounds, each with a rotation.
    void writersInTwoProcessesLoseNoLineToARotation()
    {
        constexpr int kLines = 400;
        const auto writeLines = [](const char* writer) {
            for (int i = 0; i < kLines; ++i)
                writeLogLine(QStringLiteral("%1 %2 %3")
                                 .arg(QLatin1String(writer))
                                 .arg(i)
                                 .arg(QString(60, QLatin1Char('.'))));
        };
        for (int round = 0; round < 10; ++round) {
            writeFile(logFilePath(), numberedLines(kLogRotateAbove - 4096));
            const pid_t child = fork();
            if (child == 0) {
                writeLines("child");
                _exit(0);
            }
            writeLines("parent");
            int status = 0;
            QCOMPARE(waitpid(child, &status, 0), child);
            QVERIFY(QFileInfo(logFilePath()).size() < kLogRotateAbove);
            QHash<QByteArray, QList<int>> seen;
            for (const QByteArray& line : read(logFilePath()).split('\n')) {
                const QList<QByteArray> words = line.mid(25).split(' ');
                if (words.size() == 3) seen[words[0]] << words[1].toInt();
            }
            for (const char* writer : {"child", "parent"}) {
                QList<int> expected(kLines);
                std::iota(expected.begin(), expected.end(), 0);
                QCOMPARE(seen.value(writer), expected);
            }
        }
    }

    void dataFolderIsPrivate()
    {
        QDir(dataDirectory()).removeRecursively();
        const QFileInfo info(dataDirectory());
        QVERIFY(info.isDir());
        QCOMPARE(info.permissions() & (QFile::ReadGroup | QFile::ReadOther | QFile::ExeOther),
                 QFile::Permissions());
    }

    void fileSize_data()
    {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("1024") << qint64(1024) << "1.0 KB";
        QTest::newRow("10199 rounds up but keeps a decimal") << qint64(10199) << "10.0 KB";
        QTest::newRow("10240") << qint64(10240) << "10 KB";
        QTest::newRow("3 TB stays in GB") << qint64(3) * 1024 * 1073741824 << "3072 GB";
    }
    void fileSize()
    {
        QFETCH(qint64, bytes);
        QTEST(formatFileSize(bytes), "text");
    }

    // Only the lower-case placeholders of an output name are known.
    void outputPlaceholdersAreFilled()
    {
        const QString path = makeOutputPath(dir(), "Zelmor_{date}_{time}_{DATE}{seq}", "png");
        QCOMPARE(QFileInfo(path).absolutePath(), m_dir->path());
        QVERIFY2(QRegularExpression("^Zelmor_\\d{4}-\\d\\d-\\d\\d_\\d\\d-\\d\\d-\\d\\d-\\d{3}_\\{"
                                    "DATE\\}\\{seq\\}\\.png$")
                     .match(QFileInfo(path).fileName())
                     .hasMatch(),
                 qPrintable(path));
    }

    void outputCollisionsCountOnToFourDigits()
    {
        QStringList names;
        for (int i = 0; i < 3; ++i) {
            names << QFileInfo(makeOutputPath(dir(), "x", "png")).fileName();
            writeFile(dir(names.last()), {});
        }
        QCOMPARE(names, (QStringList{"x.png", "x_001.png", "x_002.png"}));
        for (int n = 3; n <= 999; ++n)
            writeFile(dir(QStringLiteral("x_%1.png").arg(n, 3, 10, QLatin1Char('0'))), {});
        QCOMPARE(makeOutputPath(dir(), "x", "png"), dir("x_1000.png"));
    }

    // A missing output folder is made; no folder means the working one.
    void outputFolders()
    {
        QCOMPARE(makeOutputPath(dir("a/b/c"), "n", "png"), dir("a/b/c/n.png"));
        QVERIFY(QFileInfo(dir("a/b/c")).isDir());
        const QString saved = QDir::currentPath();
        QDir::setCurrent(dir());
        const QString path = makeOutputPath(QString(), "here", "png");
        QDir::setCurrent(saved);
        QCOMPARE(path, dir("here.png"));
    }

    void failedSaveLeavesNoFile_data()
    {
        QTest::addColumn<QStringList>("folderAndPattern");
        QTest::newRow("folder below a file") << QStringList{"file/sub", "n"};
        QTest::newRow("slash in the pattern") << QStringList{"", "sub/n"};
        QTest::newRow("null pixmap") << QStringList{"", "null"};
    }
    void failedSaveLeavesNoFile()
    {
        QFETCH(QStringList, folderAndPattern);
        const QString &folder = folderAndPattern[0], &pattern = folderAndPattern[1];
        writeFile(dir("file"), {});
        QPixmap pixmap(pattern == "null" ? 0 : 8, 8);
        pixmap.fill(Qt::red);
        const QString path = makeOutputPath(dir(folder), pattern, "png");
        QVERIFY(!zelmor::service::capture::savePixmapFile(pixmap, path));
        QVERIFY(!QFile::exists(path));
    }
};

ZELMOR_TEST_MAIN(TestCore, QGuiApplication)
#include "tst_core.moc"
