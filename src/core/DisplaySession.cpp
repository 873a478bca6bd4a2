#include "DisplaySession.h"

#include "Log.h"
#include "platform/Session.h"

#include <QFile>
#include <QGuiApplication>
#include <QSaveFile>

namespace zelmor::core {

namespace {

const char* const kVariables[] = {"DISPLAY", "XAUTHORITY"};

QString sessionFilePath()
{
    return dataDirectory() + QStringLiteral("/display-session");
}

} // namespace

void recordDisplaySession()
{
    QSaveFile file(sessionFilePath());
    if (!file.open(QIODevice::WriteOnly)) return;
    for (const char* name : kVariables)
        if (qEnvironmentVariableIsSet(name))
            file.write(QByteArray(name) + '=' + qgetenv(name) + '\n');
    file.commit();
}

bool adoptRecordedDisplaySession()
{
    QFile file(sessionFilePath());
    if (!file.open(QIODevice::ReadOnly)) return false;
    bool adopted = false;
    for (const QByteArray& line : file.readAll().split('\n')) {
        const qsizetype equals = line.indexOf('=');
        if (equals <= 0) continue;
        const QByteArray name = line.left(equals);
        for (const char* known : kVariables)
            if (name == known) adopted |= qputenv(known, line.mid(equals + 1));
    }
    if (adopted) writeLogLine(QStringLiteral("[mcp] using the display the Zelmor window recorded"));
    return adopted;
}

void tellDisplayServer()
{
    const bool wayland = QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
    platform::setDisplayServer(wayland ? platform::DisplayServer::Wayland
                                       : platform::DisplayServer::Usual);
}

} // namespace zelmor::core
