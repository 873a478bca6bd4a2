#include "TestMain.h"
#include "TestSupport.h"

#include "core/Log.h"

#include <QFile>
#include <QHash>
#include <QRegularExpression>

#include <numeric>

#include <sys/wait.h>
#include <unistd.h>

using namespace zelmor::core;

class TestLog : public QObject
{
    Q_OBJECT

    static QByteArray read(const QString& path) { return zelmor::test::readFile(path); }
    static void write(const QString& path, const QByteArray& bytes)
    {
        QVERIFY(zelmor::test::writeFile(path, bytes));
    }
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
    void init() { QFile::remove(logFilePath()); }

    void startupTraceCountsFromFirstCall()
    {
        startupTrace("first");
        startupTrace("second");
        const QString text = QString::fromUtf8(read(logFilePath()));
        QVERIFY(text.contains(QStringLiteral("[startup] first t=0ms\n")));
        QVERIFY(QRegularExpression(QStringLiteral("\\[startup\\] second t=\\d+ms\\n"))
                    .match(text)
                    .hasMatch());
    }

    void lineFormat()
    {
        writeLogLine(QStringLiteral("[tag] hello 中文"));
        const QString text = QString::fromUtf8(read(logFilePath()));
        QVERIFY2(
            QRegularExpression(QStringLiteral("^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} "
                                              " \\[tag\\] hello 中文\\n$"))
                .match(text)
                .hasMatch(),
            qPrintable(text));
    }

    void rotationThreshold_data()
    {
        QTest::addColumn<qint64>("size");
        QTest::addColumn<bool>("rotated");
        QTest::newRow("exactly 262144") << qint64(262144) << false;
        QTest::newRow("262145") << qint64(262145) << true;
    }
    void rotationThreshold()
    {
        QFETCH(qint64, size);
        QFETCH(bool, rotated);
        const QString path = logFilePath();
        const QByteArray original = numberedLines(size);
        write(path, original);
        rotateLogFile(path);
        const QByteArray after = read(path);
        if (!rotated) {
            QCOMPARE(after, original);
            return;
        }
        // The newer half from its first whole line, plus one "\n": the file ends in an empty line.
        QByteArray tail = original.right(kLogKeepTail);
        tail.remove(0, tail.indexOf('\n') + 1);
        QCOMPARE(after, tail + '\n');
        QVERIFY(after.endsWith("\n\n"));
        QVERIFY(after.size() <= kLogKeepTail + 1);
    }

    void rotationOfOneLongLineKeepsAllOfTheTail()
    {
        const QString path = logFilePath();
        write(path, QByteArray(kLogRotateAbove + 10, 'x'));
        rotateLogFile(path);
        QCOMPARE(read(path), QByteArray(kLogKeepTail, 'x') + '\n');
    }

    void writeRotatesBeforeAppending()
    {
        const QString path = logFilePath();
        write(path, numberedLines(kLogRotateAbove + 1));
        writeLogLine(QStringLiteral("after rotation"));
        const QByteArray text = read(path);
        QVERIFY(text.size() < kLogKeepTail + 100);
        QVERIFY(text.endsWith("  after rotation\n"));
        QVERIFY(text.contains("\n\n")); // the empty line behind the kept text
    }

    // Two processes write while the log rotates under them: every line written after the
    // rotation point must survive, in order. Several rounds, each with a rotation.
    void writersInTwoProcessesLoseNoLineToARotation()
    {
        constexpr int kLines = 400;
        const auto writeLines = [](const char* writer) {
            for (int i = 0; i < kLines; ++i)
                writeLogLine(QStringLiteral("%1 %2 %3").arg(QLatin1String(writer)).arg(i).arg(
                    QString(60, QLatin1Char('.'))));
        };
        for (int round = 0; round < 10; ++round) {
            write(logFilePath(), numberedLines(kLogRotateAbove - 4096));
            const pid_t child = fork();
            if (child == 0) {
                writeLines("child");
                _exit(0);
            }
            writeLines("parent");
            int status = 0;
            QCOMPARE(waitpid(child, &status, 0), child);
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

    void unwritableFolderDropsTheLine()
    {
        // The data folder cannot be created below a regular file.
        const QByteArray saved = qgetenv("XDG_DATA_HOME");
        const QString blocker = sandboxRoot().filePath(QStringLiteral("not-a-folder"));
        write(blocker, "x");
        qputenv("XDG_DATA_HOME", blocker.toUtf8());
        writeLogLine(QStringLiteral("nowhere to go"));
        startupTrace("still fine");
        qputenv("XDG_DATA_HOME", saved);
        QCOMPARE(read(blocker), QByteArray("x"));
    }

    void dataFolderIsPrivate()
    {
        QDir(dataDirectory()).removeRecursively();
        const QFileInfo info(dataDirectory());
        QVERIFY(info.isDir());
        QCOMPARE(info.permissions() & (QFile::ReadGroup | QFile::ReadOther | QFile::ExeOther),
                 QFile::Permissions());
    }

private:
    static QTemporaryDir& sandboxRoot() { return zelmor::test::sandboxRoot(); }
};

ZELMOR_TEST_MAIN(TestLog, QCoreApplication)
#include "tst_log.moc"
