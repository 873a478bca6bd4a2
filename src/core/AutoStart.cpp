#include "AutoStart.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

namespace zelmor::core {

namespace {

// A quoted Exec argument: inside quotes `"`, `` ` ``, `$` and `\` take a backslash, and the
// desktop file's own string escaping doubles every backslash once more.
QString quotedExecArgument(const QString& path)
{
    QString quoted;
    for (const QChar c : path) {
        if (c == QLatin1Char('"') || c == QLatin1Char('`') || c == QLatin1Char('$'))
            quoted += QLatin1String("\\\\");
        else if (c == QLatin1Char('\\'))
            quoted += QLatin1String("\\\\\\");
        quoted += c;
    }
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

} // namespace

QString autoStartEntryPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/autostart/zelmor.desktop");
}

bool setAutoStartEntry(bool enabled)
{
    const QString path = autoStartEntryPath();
    if (!enabled) return !QFileInfo::exists(path) || QFile::remove(path);
    if (!QDir().mkpath(QFileInfo(path).absolutePath())) return false;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return false;
    const QString entry = QStringLiteral("[Desktop Entry]\n"
                                         "Type=Application\n"
                                         "Name=Zelmor\n"
                                         "Exec=%1\n"
                                         "Terminal=false\n"
                                         "X-GNOME-Autostart-enabled=true\n")
                              .arg(quotedExecArgument(QCoreApplication::applicationFilePath()));
    file.write(entry.toUtf8());
    return file.commit();
}

} // namespace zelmor::core
