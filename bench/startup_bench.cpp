// Median time from process start to the event loop, as the start-up log tells it.
//   scripts/x-session.sh build/bench/zelmor-bench-startup [runs]

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

// Milliseconds from spawning zelmor to its "entering event loop" line, or -1.
qint64 oneStart(const QString& zelmor)
{
    QTemporaryDir home;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("HOME"), home.path());
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    env.insert(QStringLiteral("XDG_DATA_HOME"), home.filePath(QStringLiteral("data")));
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), home.path());
    const QString log = home.filePath(QStringLiteral("data/Zelmor/Zelmor/zelmor.log"));

    QProcess process;
    process.setProcessEnvironment(env);
    const QDateTime spawned = QDateTime::currentDateTime();
    process.start(zelmor, {});
    const QRegularExpression line(QStringLiteral("^(\\S+ \\S+)  \\[startup\\] entering event loop"),
                                  QRegularExpression::MultilineOption);
    qint64 elapsed = -1;
    for (int i = 0; i < 500 && elapsed < 0; ++i) {
        QThread::msleep(10);
        QFile file(log);
        if (!file.open(QIODevice::ReadOnly)) continue;
        const QRegularExpressionMatch m = line.match(QString::fromUtf8(file.readAll()));
        if (m.hasMatch())
            elapsed = spawned.msecsTo(
                QDateTime::fromString(m.captured(1), QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz")));
    }
    process.terminate();
    process.waitForFinished(3000);
    return elapsed;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const int runs = argc > 1 ? std::max(1, atoi(argv[1])) : 9;
    const QString zelmor =
        QCoreApplication::applicationDirPath() + QStringLiteral("/../bin/zelmor");
    std::vector<qint64> times;
    for (int i = 0; i < runs; ++i)
        times.push_back(oneStart(zelmor));
    std::sort(times.begin(), times.end());
    std::printf("process start to event loop, median of %d runs: %lld ms (min %lld, max %lld)\n",
                runs, static_cast<long long>(times[times.size() / 2]),
                static_cast<long long>(times.front()), static_cast<long long>(times.back()));
    return 0;
}
