#include "ClientConfig.h"

#include "core/ConfigManager.h"
#include "core/Utilities.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QStandardPaths>

namespace zelmor::service::mcp {

namespace {

const QString kServersKey = QStringLiteral("mcpServers");

// Where Windows keeps roaming application data, the XDG configuration folder keeps it on Linux.
QString roamingBase()
{
#ifdef Q_OS_WIN
    return QDir::fromNativeSeparators(qEnvironmentVariable("APPDATA"));
#else
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
#endif
}

QString mcpFileName()
{
    return core::executableFileName(QStringLiteral("zelmor-mcp"));
}

McpClientEntry entry(const char* id, const char* name, const QString& base, const char* relative)
{
    const QString path = QDir::toNativeSeparators(QDir(base).filePath(QLatin1String(relative)));
    return {QLatin1String(id), QLatin1String(name), path, QFileInfo::exists(path)};
}

// The file's object, or the message why it cannot be used.
QString readConfig(const QString& path, QJsonObject* root)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return QStringLiteral("Cannot open: %1").arg(path);
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return QStringLiteral("Parse error in %1: %2").arg(path, error.errorString());
    *root = document.object();
    return QString();
}

QString writeConfig(const QString& path, const QJsonObject& root)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) ||
        file.write(QJsonDocument(root).toJson(QJsonDocument::Indented)) < 0 || !file.commit())
        return QStringLiteral("Cannot write: %1").arg(path);
    return QString();
}

} // namespace

QString mcpExecutablePath()
{
    return QDir::toNativeSeparators(QCoreApplication::applicationDirPath() + QLatin1Char('/') +
                                    mcpFileName());
}

QList<McpClientEntry> mcpClientEntries()
{
    const QString roaming = roamingBase();
    const QString home = QDir::homePath();
    QList<McpClientEntry> entries{
        entry("claude_desktop", "Claude Desktop", roaming, "Claude/claude_desktop_config.json"),
        // Where Cursor reads its servers, on every system.
        entry("cursor", "Cursor", home, ".cursor/mcp.json"),
        entry("claude_code", "Claude Code", home, ".claude.json"),
        entry("windsurf", "Windsurf", home, ".codeium/windsurf/mcp_config.json"),
        entry("cline", "Cline (VS Code)", roaming,
              "Code/User/globalStorage/saoudrizwan.claude-dev/settings/cline_mcp_settings.json"),
        entry("roo_code", "Roo Code (VS Code)", roaming,
              "Code/User/globalStorage/rooveterinaryinc.roo-cline/settings/mcp_settings.json"),
        entry("ai_workstation", "AI Workstation", home, ".aiworkstation/mcp_config.json"),
        entry("aistation", "AI Station", home, ".aistation/mcp_config.json"),
    };
    int counter = 0;
    for (const QString& path : core::ConfigManager::instance().mcpCustomPaths()) {
        if (path.isEmpty()) continue;
        ++counter;
        entries.append({QStringLiteral("custom_%1").arg(counter),
                        QStringLiteral("自定义实例 (%1)").arg(QFileInfo(path).fileName()), path,
                        QFileInfo::exists(path)});
    }
    return entries;
}

QString injectClientConfig(const QString& configPath, const QString& serverName)
{
    if (!QFileInfo::exists(mcpExecutablePath()))
        return mcpFileName() + QStringLiteral(" not found next to the app");
    QJsonObject root;
    if (QFileInfo::exists(configPath)) {
        const QString failure = readConfig(configPath, &root);
        if (!failure.isEmpty()) return failure;
    } else {
        QDir().mkpath(QFileInfo(configPath).absolutePath());
    }
    QJsonObject servers = root.value(kServersKey).toObject();
    servers.insert(serverName, QJsonObject{{QStringLiteral("command"), mcpExecutablePath()},
                                           {QStringLiteral("args"), QJsonArray()}});
    root.insert(kServersKey, servers);
    return writeConfig(configPath, root);
}

QString removeClientConfig(const QString& configPath, const QString& serverName)
{
    if (!QFileInfo::exists(configPath)) return QString();
    QJsonObject root;
    const QString failure = readConfig(configPath, &root);
    if (!failure.isEmpty()) return failure;
    if (!root.contains(kServersKey)) return QString();
    QJsonObject servers = root.value(kServersKey).toObject();
    if (!servers.contains(serverName)) return QString();
    servers.remove(serverName);
    // The key goes with the last server; the file and its other keys stay.
    if (servers.isEmpty())
        root.remove(kServersKey);
    else
        root.insert(kServersKey, servers);
    return writeConfig(configPath, root);
}

bool isClientConfigured(const QString& configPath, const QString& serverName)
{
    QJsonObject root;
    return readConfig(configPath, &root).isEmpty() &&
           root.value(kServersKey).toObject().contains(serverName);
}

QString clientConfigSnippet(const QString& serverName)
{
    QString path = mcpExecutablePath();
    path.replace(QLatin1Char('\\'), QStringLiteral("\\\\"));
    path.replace(QLatin1Char('"'), QStringLiteral("\\\""));
    return QStringLiteral(
               "{\n  \"mcpServers\": {\n    \"%1\": {\n      \"command\": \"%2\",\n      "
               "\"args\": []\n    }\n  }\n}")
        .arg(serverName, path);
}

} // namespace zelmor::service::mcp
