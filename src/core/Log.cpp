#include "Log.h"

#include "platform/FileLock.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QMutex>
#include <QStandardPaths>
#include <QTextStream>

namespace zelmor::core {

namespace {
constexpr int kLogLockWaitMs = 2000;
}

QString dataDirectory()
{
    const QString dir = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    if (!QFileInfo::exists(dir) && QDir().mkpath(dir))
        QFile::setPermissions(dir, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return dir;
}

QString logFilePath()
{
    return dataDirectory() + QStringLiteral("/zelmor.log");
}

void rotateLogFile(const QString& path)
{
    QFile file(path);
    if (!file.exists() || file.size() <= kLogRotateAbove) return;
    if (!file.open(QIODevice::ReadOnly)) return;
    QByteArray kept = file.readAll().right(kLogKeepTail);
    file.close();
    const qsizetype newline = kept.indexOf('\n');
    if (newline >= 0) kept.remove(0, newline + 1);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) return;
    file.write(kept);
    file.write("\n");
}

void writeLogLine(const QString& line)
{
    static QMutex mutex;
    QMutexLocker lock(&mutex);
    const QString path = logFilePath();
    // Both executables append to this file: a rotation in one must not drop the lines that
    // the other appends meanwhile. Without the lock the line is still appended, unrotated.
    const platform::FileLock crossProcess((path + QStringLiteral(".lock")).toUtf8().toStdString(),
                                          kLogLockWaitMs);
    if (crossProcess.locked()) rotateLogFile(path);
    QFile file(path);
    if (!file.open(QIODevice::Append | QIODevice::Text)) return;
    QTextStream out(&file);
    out.setEncoding(QStringConverter::Utf8);
    out << QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz"))
        << QStringLiteral("  ") << line << '\n';
}

void startupTrace(const char* stage)
{
    static QElapsedTimer timer;
    if (!timer.isValid()) timer.start();
    writeLogLine(
        QStringLiteral("[startup] %1 t=%2ms").arg(QLatin1String(stage)).arg(timer.elapsed()));
}

} // namespace zelmor::core
