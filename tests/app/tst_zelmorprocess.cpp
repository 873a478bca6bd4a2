#include "TestMain.h"
#include "TestSupport.h"

#include "service/capture/WindowList.h"

#include <QClipboard>
#include <QLocalServer>
#include <QMimeData>
#include <QProcess>

#include <memory>
#include <unistd.h>

using zelmor::test::readFile;
using zelmor::test::writeFile;

namespace {

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
    QString at(const char* path) const { return dir.filePath(QLatin1String(path)); }
    QString runtime() const { return at("run"); }
    QString outputDir() const { return at("Pictures/Zelmor"); }
    QString iniPath() const { return at("config/Zelmor/Zelmor.ini"); }
    QProcessEnvironment environment() const
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("HOME"), dir.path());
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), at("config"));
        env.insert(QStringLiteral("XDG_DATA_HOME"), at("data"));
        env.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime());
        env.remove(QStringLiteral("XDG_PICTURES_DIR"));
        return env;
    }
    QString log() const { return QString::fromUtf8(readFile(at("data/Zelmor/Zelmor/zelmor.log"))); }
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

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(QFileInfo(zelmorPath()).isExecutable(), qPrintable(zelmorPath()));
    }

    void informationNeedsNoDisplay_data()
    {
        QTest::addColumn<QString>("option");
        QTest::addColumn<QString>("printed");
        QTest::newRow("version") << "--version"
                                 << "zelmor 1.0.20\n";
        QTest::newRow("help") << "--help"
                              << "--show-shortcut-sheet";
    }
    void informationNeedsNoDisplay()
    {
        QFETCH(QString, option);
        QFETCH(QString, printed);
        Home home;
        QProcessEnvironment env = home.environment();
        env.remove(QStringLiteral("DISPLAY"));
        auto process = start(env, {option});
        QVERIFY(process->waitForFinished(10000));
        QCOMPARE(process->exitStatus(), QProcess::NormalExit);
        QCOMPARE(process->exitCode(), 0);
        QVERIFY(QString::fromUtf8(process->readAllStandardOutput()).contains(printed));
        QVERIFY(!QFile::exists(home.at("data/Zelmor/Zelmor/zelmor.log"))); // it never started
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
        QCOMPARE(readFile(home.at("data/Zelmor/Zelmor/display-session")),
                 "DISPLAY=" + qgetenv("DISPLAY") + '\n' +
                     (qEnvironmentVariableIsSet("XAUTHORITY")
                          ? "XAUTHORITY=" + qgetenv("XAUTHORITY") + '\n'
                          : QByteArray()));
        QVERIFY(home.outputs().isEmpty());
        stop(*process);
    }

    // What a capture holds is the action suite's matter; here: the switch, the locale and the
    // guard against a second instance, also where other users can plant sockets.
    void secondStartRaisesTheFirst_data()
    {
        QTest::addColumn<bool>("sharedTmp");
        QTest::newRow("private runtime folder") << false;
        QTest::newRow("sockets planted in a shared tmp") << true;
    }
    void secondStartRaisesTheFirst()
    {
        QFETCH(bool, sharedTmp);
        Home home;
        QProcessEnvironment env = home.environment();
        env.insert(QStringLiteral("LANG"), QStringLiteral("de_DE.UTF-8"));
        env.remove(QStringLiteral("LC_ALL"));
        env.remove(QStringLiteral("LC_MESSAGES"));
        std::vector<std::unique_ptr<QLocalServer>> planted;
        if (sharedTmp) {
            // No XDG_RUNTIME_DIR: Qt would fall back to <tmp>/runtime-<user>, and a naive guard
            // would use <tmp> itself. Both are planted, owned by someone else where possible.
            const QString shared = home.at("shared-tmp");
            const QString fallback = shared + QStringLiteral("/runtime-") +
                                     qEnvironmentVariable("USER", QStringLiteral("root"));
            QVERIFY(QDir().mkpath(fallback));
            QFile::setPermissions(shared, QFile::Permissions(0x7777));
            for (const QString& dir : {shared, fallback}) {
                planted.push_back(std::make_unique<QLocalServer>());
                planted.back()->setSocketOptions(QLocalServer::WorldAccessOption);
                const QString socket = dir + QStringLiteral("/Zelmor-Zelmor");
                QVERIFY(planted.back()->listen(socket));
                if (geteuid() == 0) QCOMPARE(::chown(qPrintable(socket), 65534, 65534), 0);
            }
            if (geteuid() == 0) QCOMPARE(::chown(qPrintable(fallback), 65534, 65534), 0);
            env.remove(QStringLiteral("XDG_RUNTIME_DIR"));
            env.insert(QStringLiteral("TMPDIR"), shared);
        }
        auto first = start(env, {QStringLiteral("--capture-fullscreen")});
        QTRY_VERIFY_WITH_TIMEOUT(home.outputs().size() == 1, 10000);
        QVERIFY(home.log().contains(QStringLiteral("actualLocale=de_DE")));
        for (const auto& server : planted)
            QVERIFY(!server->hasPendingConnections());

        // A second start passes its switch on to the first and leaves at once, with no display
        // of its own too; one without a switch raises the first.
        QProcessEnvironment noDisplay = env;
        noDisplay.remove(QStringLiteral("DISPLAY"));
        for (const QStringList& args : {QStringList{"--capture-fullscreen"}, QStringList{}}) {
            auto second = start(args.isEmpty() ? env : noDisplay, args);
            QVERIFY(second->waitForFinished(10000));
            QCOMPARE(second->exitCode(), 0);
        }
        QTRY_COMPARE(home.outputs().size(), 2);
        QTRY_VERIFY(zelmor::test::windowIndex("Zelmor") >= 0); // the first one raised
        QCOMPARE(first->state(), QProcess::Running);
        // The installer's way to close it: the asking process returns once the first has ended.
        auto quit = start(env, {QStringLiteral("--quit")});
        QVERIFY(quit->waitForFinished(15000));
        QTRY_COMPARE_WITH_TIMEOUT(first->state(), QProcess::NotRunning, 1000);
        QCOMPARE(first->exitCode(), 0);
    }

    // What a damaged settings or history file does is its store's own test; here the capture
    // goes on where the data or output folder cannot be made.
    void badSurroundingsDoNotStopTheProcess_data()
    {
        QTest::addColumn<bool>("dataFolder");
        QTest::addColumn<int>("captureFiles");
        QTest::newRow("unwritable data folder") << true << 1;
        QTest::newRow("output folder cannot be created") << false << 0;
    }
    void badSurroundingsDoNotStopTheProcess()
    {
        QFETCH(bool, dataFolder);
        QFETCH(int, captureFiles);
        Home home;
        QProcessEnvironment env = home.environment();
        writeFile(home.at("file"), "x");
        if (dataFolder)
            env.insert(QStringLiteral("XDG_DATA_HOME"), home.at("file"));
        else
            writeFile(home.iniPath(), "[%General]\noutputDir=" + home.at("file/shots").toUtf8());
        QGuiApplication::clipboard()->clear();
        auto process = start(env, {QStringLiteral("--capture-fullscreen")});
        // A capture copies to the clipboard and then saves: the clipboard tells when both are done.
        const QClipboard* clipboard = QGuiApplication::clipboard();
        QTRY_VERIFY_WITH_TIMEOUT(clipboard->mimeData() && clipboard->mimeData()->hasImage(), 10000);
        QCOMPARE(home.outputs().size(), captureFiles);
        QCOMPARE(process->state(), QProcess::Running);
        stop(*process);
    }
};

ZELMOR_TEST_MAIN(TestZelmorProcess, QApplication)
#include "tst_zelmorprocess.moc"
