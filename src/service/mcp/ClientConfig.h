#pragma once

#include <QList>
#include <QString>

// Entering zelmor-mcp into the configuration files of AI desktop clients, so that they start
// it as a stdio server. Plain functions without state.
namespace zelmor::service::mcp {

struct McpClientEntry
{
    QString id;
    QString displayName;
    QString configPath; // absolute, native separators
    bool detected = false;
};

// zelmor-mcp beside the running executable.
QString mcpExecutablePath();

// The known clients, always all of them, then one row per stored custom path.
QList<McpClientEntry> mcpClientEntries();

// Empty on success, else the message for the user. The file is replaced atomically, so a
// crash or a full disk never leaves it half written.
QString injectClientConfig(const QString& configPath, const QString& serverName);
QString removeClientConfig(const QString& configPath, const QString& serverName);
bool isClientConfigured(const QString& configPath, const QString& serverName);

// The entry as JSON text to paste by hand.
QString clientConfigSnippet(const QString& serverName);

} // namespace zelmor::service::mcp
