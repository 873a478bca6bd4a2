#include "TestMain.h"
#include "TestSupport.h"

#include "app/SingleInstance.h"
#include "core/EventBus.h"
#include "service/capture/WindowList.h"
#include "service/history/HistoryService.h"

#include <QClipboard>
#include <QLocalServer>
#include <QLocalSocket>
#include <QMimeData>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QWidget>

#include <memory>
#include <unistd.h>

namespace {

const QColor kMarker(0xe6, 0x7e, 0x22);

// One user's world for a started zelmor: its own home, XDG folders and runtime folder.
struct Home
{
    QTemporaryDir dir;
    Home()
    {
        for (const char* sub : {"config/Zelmor", "data", "run"})
            QDir().mkpath(dir.filePath(QLatin1String(sub)));
        QFile::setPermissions(runtime(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    QString runtime() const { return dir.filePath(QStringLiteral("run")); }
    QString outputDir() const { return dir.filePath(QStringLiteral("Pictures/Zelmor")); }
    QString iniPath() const { return dir.filePath(QStringLiteral("config/Zelmor/Zelmor.ini")); }
    QString historyPath() const
    {
        return dir.filePath(QStringLiteral("data/Zelmor/Zelmor/history.db"));
    }
    QString logPath() const
    {
        return dir.filePath(QStringLiteral("data/Zelmor/Zelmor/zelmor.log"));
    }
    QProcessEnvironment environment() const
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("HOME"), dir.path());
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), dir.filePath(QStringLiteral("config")));
        env.insert(QStringLiteral("XDG_DATA_HOME"), dir.filePath(QStringLiteral("data")));
        env.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime());
        env.remove(QStringLiteral("XDG_PICTURES_DIR"));
        return env;
    }
    QString log() const { return QString::fromUtf8(zelmor::test::readFile(logPath())); }
    QStringList outputs() const { return QDir(outputDir()).entryList(QDir::Files); }
};

QString zelmorPath()
{
    return qEnvironmentVariable("ZELMOR_BIN_DIR") + QStringLiteral("/zelmor");
}

std::unique_ptr<QProcess> start(const QProcessEnvironment& env, const QStringList& args)
{
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(env);
    process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process->start(zelmorPath(), args);
    return process;
}

// The first instance answers a raise request with its main window.
bool mainWindowShown(const QString& title = QStringLiteral("Zelmor"))
{
    for (const zelmor::service::capture::WindowInfo& w :
         zelmor::service::capture::listTopLevelWindows())
        if (w.title == title) return true;
    return false;
}

// A capture copies to the clipboard and then saves; the clipboard answers once both are done.
bool clipboardHoldsImage()
{
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    return data && data->hasImage();
}

using zelmor::test::readFile;
using zelmor::test::writeFile;

qint64 activeWindowPid()
{
    QProcess xdo;
    xdo.start(QStringLiteral("xdotool"),
              {QStringLiteral("getactivewindow"), QStringLiteral("getwindowpid")});
    xdo.waitForFinished(3000);
    return xdo.readAllStandardOutput().trimmed().toLongLong();
}

void xdotool(const QStringList& args)
{
    QProcess::execute(QStringLiteral("xdotool"), args);
}

void stop(QProcess& process)
{
    process.terminate();
    if (!process.waitForFinished(3000)) process.kill();
    process.waitForFinished(3000);
}

} // namespace

class TestZelmorProcess : public QObject
{
    Q_OBJECT

    std::unique_ptr<QWidget> m_marker;

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(QFileInfo(zelmorPath()).isExecutable(), qPrintable(zelmorPath()));
        m_marker = zelmor::test::makeSolidWindow(QStringLiteral("Zelmor capture marker"), kMarker,
                                                 QRect(1500, 700, 200, 120));
        QVERIFY(QTest::qWaitForWindowExposed(m_marker.get()));
        QTRY_VERIFY(mainWindowShown(m_marker->windowTitle()));
    }

    void plainStartShowsNoWindow()
    {
        Home home;
        const int windowsBefore = int(zelmor::service::capture::listTopLevelWindows().size());
        auto process = start(home.environment(), {});
        QTRY_VERIFY_WITH_TIMEOUT(
            home.log().contains(QStringLiteral("[startup] entering event loop")), 5000);
        QCOMPARE(int(zelmor::service::capture::listTopLevelWindows().size()), windowsBefore);
        // The display is recorded for the tool server, which may start without one.
        QCOMPARE(zelmor::test::readFile(
                     home.dir.filePath(QStringLiteral("data/Zelmor/Zelmor/display-session"))),
                 "DISPLAY=" + qgetenv("DISPLAY") + '\n' +
                     (qEnvironmentVariableIsSet("XAUTHORITY")
                          ? "XAUTHORITY=" + qgetenv("XAUTHORITY") + '\n'
                          : QByteArray()));
        QVERIFY(home.outputs().isEmpty());
        stop(*process);
    }

    void fullscreenCaptureAndSecondStart()
    {
        Home home;
        QProcessEnvironment env = home.environment();
        env.insert(QStringLiteral("LANG"), QStringLiteral("de_DE.UTF-8"));
        env.remove(QStringLiteral("LC_ALL"));
        env.remove(QStringLiteral("LC_MESSAGES"));
        auto first = start(env, {QStringLiteral("--capture-fullscreen")});
        QTRY_VERIFY_WITH_TIMEOUT(home.outputs().size() == 1, 10000);

        const QString name = home.outputs().first();
        QVERIFY2(
            QRegularExpression(
                QStringLiteral("^Zelmor_\\d{4}-\\d\\d-\\d\\d_\\d\\d-\\d\\d-\\d\\d-\\d{3}\\.png$"))
                .match(name)
                .hasMatch(),
            qPrintable(name));
        QImage image;
        QTRY_VERIFY(
            image.load(home.outputDir() + QLatin1Char('/') + name)); // the write may still run
        QCOMPARE(image.size(), QSize(1920, 1080));
        const QPoint inside = m_marker->mapToGlobal(QPoint(100, 60));
        QCOMPARE(image.pixelColor(inside), kMarker);
        QVERIFY(home.log().contains(QStringLiteral("actualLocale=de_DE")));
        QCOMPARE(first->state(), QProcess::Running);

        // A second start, whatever its switches, only raises the first and leaves at once.
        auto second = start(env, {QStringLiteral("--capture-fullscreen")});
        QVERIFY(second->waitForFinished(10000));
        QCOMPARE(second->exitStatus(), QProcess::NormalExit);
        QCOMPARE(second->exitCode(), 0);
        QTRY_VERIFY(mainWindowShown());
        QCOMPARE(home.outputs().size(), 1);
        QCOMPARE(first->state(), QProcess::Running);
        stop(*first);
        QTRY_VERIFY(!mainWindowShown());
    }

    void regionSwitchOpensTheOverlay()
    {
        Home home;
        auto process = start(home.environment(), {QStringLiteral("--capture-region")});
        QTRY_COMPARE_WITH_TIMEOUT(activeWindowPid(), process->processId(), 5000);
        const QPoint from = m_marker->mapToGlobal(QPoint(20, 20));
        const QPoint to = m_marker->mapToGlobal(QPoint(120, 80));
        // Paced like a hand: Qt folds motion events that queue up into the last one.
        xdotool({"mousemove",
                 QString::number(from.x()),
                 QString::number(from.y()),
                 "mousedown",
                 "1",
                 "sleep",
                 "0.1",
                 "mousemove",
                 QString::number(from.x() + 30),
                 QString::number(from.y() + 20),
                 "sleep",
                 "0.1",
                 "mousemove",
                 QString::number(to.x()),
                 QString::number(to.y()),
                 "sleep",
                 "0.1",
                 "mouseup",
                 "1",
                 "key",
                 "Return"});
        QTRY_VERIFY_WITH_TIMEOUT(home.outputs().size() == 1, 5000);
        QImage saved;
        QTRY_VERIFY(saved.load(home.outputDir() + QLatin1Char('/') + home.outputs().first()));
        QCOMPARE(saved.size(), QSize(101, 61));
        QCOMPARE(saved.pixelColor(50, 30), kMarker);
        QTRY_COMPARE(QGuiApplication::clipboard()->image().size(), saved.size());
        stop(*process);
        zelmor::service::history::HistoryService reader(home.historyPath(),
                                                        QStringLiteral("region"));
        QCOMPARE(reader.recent(10).size(), 1);
    }

    void socketsPlantedInSharedFoldersAreIgnored()
    {
        Home home;
        // No XDG_RUNTIME_DIR: Qt would fall back to <tmp>/runtime-<user>, and a naive guard
        // would use <tmp> itself. Both are planted, owned by someone else where possible.
        const QString shared = home.dir.filePath(QStringLiteral("shared-tmp"));
        const QString runtimeFallback = shared + QStringLiteral("/runtime-") +
                                        qEnvironmentVariable("USER", QStringLiteral("root"));
        QVERIFY(QDir().mkpath(runtimeFallback));
        QFile::setPermissions(shared, QFile::Permissions(0x7777));
        QList<QLocalServer*> planted;
        for (const QString& dir : {shared, runtimeFallback}) {
            auto* server = new QLocalServer(this);
            server->setSocketOptions(QLocalServer::WorldAccessOption);
            QVERIFY(server->listen(dir + QStringLiteral("/Zelmor-Zelmor")));
            planted << server;
        }
        if (geteuid() == 0) {
            const uid_t nobody = 65534;
            QCOMPARE(::chown(qPrintable(runtimeFallback), nobody, nobody), 0);
            for (const QString& dir : {shared, runtimeFallback})
                QCOMPARE(
                    ::chown(qPrintable(dir + QStringLiteral("/Zelmor-Zelmor")), nobody, nobody), 0);
        }

        QProcessEnvironment env = home.environment();
        env.remove(QStringLiteral("XDG_RUNTIME_DIR"));
        env.insert(QStringLiteral("TMPDIR"), shared);
        auto first = start(env, {QStringLiteral("--capture-fullscreen")});
        QTRY_VERIFY_WITH_TIMEOUT(home.outputs().size() == 1, 10000);
        for (QLocalServer* server : planted)
            QVERIFY(!server->hasPendingConnections());

        // The guard still works among this user's own processes.
        auto second = start(env, {});
        QVERIFY(second->waitForFinished(10000));
        QCOMPARE(second->exitCode(), 0);
        QTRY_VERIFY(mainWindowShown());
        stop(*first);
        QTRY_VERIFY(!mainWindowShown());
        qDeleteAll(planted);
    }

    void badSurroundingsDoNotStopTheProcess_data()
    {
        QTest::addColumn<QString>("what");
        QTest::addColumn<int>("captureFiles");
        QTest::newRow("corrupt Zelmor.ini") << "ini" << 1;
        QTest::newRow("Zelmor.ini is a folder") << "iniFolder" << 1;
        QTest::newRow("unwritable log folder") << "log" << 1;
        QTest::newRow("output folder cannot be created") << "output" << 0;
        QTest::newRow("history.db is garbage") << "historyGarbage" << 1;
        QTest::newRow("history.db is a folder") << "historyFolder" << 1;
    }
    void badSurroundingsDoNotStopTheProcess()
    {
        QFETCH(QString, what);
        QFETCH(int, captureFiles);
        Home home;
        QProcessEnvironment env = home.environment();
        static const char kGarbage[] = "\x00\xff[gen\n=\n\x01 not a database";
        const QByteArray garbage(kGarbage, sizeof(kGarbage) - 1);
        if (what == QLatin1String("ini")) writeFile(home.iniPath(), garbage);
        if (what == QLatin1String("iniFolder")) QDir().mkpath(home.iniPath());
        if (what == QLatin1String("log")) {
            const QString blocker = home.dir.filePath(QStringLiteral("file"));
            writeFile(blocker, "x");
            env.insert(QStringLiteral("XDG_DATA_HOME"), blocker);
        }
        if (what == QLatin1String("output")) {
            writeFile(home.dir.filePath(QStringLiteral("file")), "x");
            writeFile(home.iniPath(), "[%General]\noutputDir=" +
                                          home.dir.filePath(QStringLiteral("file/shots")).toUtf8() +
                                          "\n");
        }
        QDir().mkpath(QFileInfo(home.historyPath()).absolutePath());
        if (what == QLatin1String("historyGarbage")) writeFile(home.historyPath(), garbage);
        if (what == QLatin1String("historyFolder")) QDir().mkpath(home.historyPath());

        QGuiApplication::clipboard()->clear();
        auto process = start(env, {QStringLiteral("--capture-fullscreen")});
        QVERIFY(process->waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(clipboardHoldsImage(), 10000);
        QCOMPARE(home.outputs().size(), captureFiles);
        QCOMPARE(process->state(), QProcess::Running);
        if (what == QLatin1String("historyGarbage"))
            QCOMPARE(readFile(home.historyPath()), garbage);
        stop(*process);
    }

    void lockedHistoryLosesNothing()
    {
        Home home;
        QDir().mkpath(QFileInfo(home.historyPath()).absolutePath());
        {
            // Another process's store, holding an exclusive lock while zelmor starts.
            zelmor::service::history::HistoryService other(home.historyPath(),
                                                           QStringLiteral("other"));
            QVERIFY(other.insert(QPixmap(4, 3), QStringLiteral("/kept.png"),
                                 zelmor::core::HistoryCategory::Screenshot) > 0);
            QSqlDatabase db = QSqlDatabase::database(QStringLiteral("other"));
            QSqlQuery(db).exec(QStringLiteral("PRAGMA locking_mode=EXCLUSIVE"));
            QVERIFY(QSqlQuery(db).exec(QStringLiteral("BEGIN EXCLUSIVE")));

            auto locked = start(home.environment(), {QStringLiteral("--capture-fullscreen")});
            QTRY_VERIFY_WITH_TIMEOUT(home.outputs().size() == 1, 10000);
            // The row is given up after the store's busy wait.
            QTRY_VERIFY_WITH_TIMEOUT(home.log().contains(QStringLiteral("[history] cannot open")),
                                     10000);
            QCOMPARE(locked->state(), QProcess::Running);
            stop(*locked);
            QVERIFY(QSqlQuery(db).exec(QStringLiteral("COMMIT")));
        }
        QCOMPARE(QFileInfo(home.historyPath()).permissions() & 0x0077, QFile::Permissions());

        // Readable again: the old row is there and the next capture adds its own.
        QGuiApplication::clipboard()->clear();
        auto next = start(home.environment(), {QStringLiteral("--capture-fullscreen")});
        QTRY_VERIFY_WITH_TIMEOUT(clipboardHoldsImage(), 10000);
        QCOMPARE(home.outputs().size(), 2);
        stop(*next);
        zelmor::service::history::HistoryService reader(home.historyPath(),
                                                        QStringLiteral("reader"));
        const QList<zelmor::core::HistoryItem> rows = reader.recent(10);
        QCOMPARE(rows.last().path, QStringLiteral("/kept.png"));
        QCOMPARE(QFileInfo(rows.first().path).dir(), QDir(home.outputDir()));
    }

    // Last: the guard this process takes lives until the process ends.
    void firstInstanceHearsTheRaiseOnItsBus()
    {
        Home home;
        qputenv("XDG_RUNTIME_DIR", home.runtime().toUtf8());
        QSignalSpy bus(&zelmor::core::EventBus::instance(), &zelmor::core::EventBus::emitted);
        QVERIFY(zelmor::app::SingleInstance::tryAcquire());
        QVERIFY(!zelmor::app::SingleInstance::tryAcquire());

        auto second = start(home.environment(), {QStringLiteral("--capture-region")});
        QVERIFY(second->waitForFinished(10000));
        QCOMPARE(second->exitCode(), 0);
        // Every connection counts: our own second probe, its probe, its "raise" message.
        QTRY_COMPARE(bus.count(), 3);
        QCOMPARE(bus.last().at(0).toString(), QStringLiteral("singleInstanceRaiseRequested"));
        QVERIFY(bus.last().at(1).toMap().isEmpty());

        // A connection that sends nothing raises too, after the short read wait.
        const qsizetype before = bus.count();
        QLocalSocket silent;
        silent.connectToServer(zelmor::app::SingleInstance::serverName());
        QVERIFY(silent.waitForConnected(1000));
        QTRY_COMPARE(bus.count(), before + 1);
        QVERIFY(home.outputs().isEmpty());
    }
};

ZELMOR_TEST_MAIN(TestZelmorProcess, QApplication)
#include "tst_zelmorprocess.moc"
