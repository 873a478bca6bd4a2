#pragma once

#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QString>
#include <QVariantMap>

#include <atomic>

namespace zelmor::service::mcp {

using McpToolArgs = QVariantMap;
using McpToolResult = QVariantMap;
using McpToolSchemaFn = QJsonObject (*)();
using McpToolHandler = McpToolResult (*)(const McpToolArgs&);

// One desktop tool, the same for outside clients and for the in-process chat loop.
struct McpTool
{
    QString name;
    QString description;
    McpToolSchemaFn schema = nullptr; // null: the tool announces no arguments
    McpToolHandler handler = nullptr; // null: called, it answers as an unknown tool
    bool needsDisplay = false;        // without one it answers the no-display failure
};

// The 32 tools in their fixed order; built once, never changed.
const QList<McpTool>& mcpTools();

// Runs the first tool of that exact name that has a handler; otherwise the unknown-tool
// failure, or the no-display one for a tool that needs the screen when there is none. Blocks
// the caller for as long as the tool runs.
McpToolResult callMcpTool(const QString& name, const McpToolArgs& args);

// An integer argument as clients send it, a number or a numeric text: fractions dropped,
// held to +-2^30 so that no later arithmetic overflows, `fallback` when absent. `ok`, when
// given, tells whether a number was there.
int mcpIntArg(const McpToolArgs& args, const QString& key, int fallback = 0, bool* ok = nullptr);

// The failure result: exactly `isError` = true and `text` = message.
McpToolResult mcpToolError(const QString& message);

// The key under which a capture hands its picture, a QImage, to a client that can show it to
// a model.
QString mcpModelImageKey();

// A result as JSON for a model that reads text only: the picture left out.
QJsonObject mcpResultJson(const McpToolResult& result);

// Told by whoever runs a tool that its caller gave up on it; a tool that waits, as recognition
// does, stops at once. One per process, on the thread that runs tools.
class McpToolCancellation : public QObject
{
    Q_OBJECT
public:
    static McpToolCancellation& instance();

    // Whether the tool running now should stop: its request was cancelled or input ended. Set
    // from any thread, even while the tools' thread is busy; tools that loop ask it between
    // steps.
    bool isRequested() const { return m_requested; }
    void setRequested(bool requested) { m_requested = requested; }

signals:
    void requested();

private:
    std::atomic<bool> m_requested{false};
};

// Sleeps `ms`, waking early when the tool is to stop; false then.
bool mcpToolPause(int ms);

// The failure of a tool that stopped part way because McpToolCancellation asked it to.
McpToolResult mcpToolStoppedError();

} // namespace zelmor::service::mcp
