#pragma once

#include "McpTool.h"

#include <QByteArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QObject>
#include <QStringList>

class QIODevice;

namespace zelmor::service::mcp {

class StdinReader;

// The server side of the Model Context Protocol over a byte stream: newline-delimited
// JSON-RPC 2.0 messages in, one reply line per request out.
class McpServer : public QObject
{
    Q_OBJECT
public:
    explicit McpServer(QObject* parent = nullptr);
    ~McpServer() override;

    // Where reply lines go; standard output when never set. Not owned.
    void setOutput(QIODevice* output);

    // Feeds the reader's chunks into receive(); the reader stays the caller's.
    void attach(StdinReader* reader);

    // Appends bytes and answers every whole line among them.
    void receive(const QByteArray& chunk);

    // End of input: a last line without its newline is still answered.
    void finish();

    // One message in, its reply out without the newline; empty for notifications and for
    // responses of the client.
    QByteArray answer(const QByteArray& message);

    // A tool's result map as the protocol's call result: `isError`, `text` as the first text
    // block, every other key as JSON text.
    static QJsonObject callResult(const McpToolResult& result);

    // Newest first; the first is offered to clients asking for a version not listed.
    static const QStringList& supportedProtocolVersions();

private:
    void write(const QByteArray& line);
    QJsonObject handleRequest(const QString& method, const QJsonObject& params, QJsonObject* error);

    QByteArray m_buffer;
    qsizetype m_scanned = 0; // leading bytes of m_buffer known to hold no newline
    StdinReader* m_reader = nullptr;
    QIODevice* m_output = nullptr;
    bool m_skippingLine = false; // the rest of an oversized line is being dropped
    bool m_answering = false;    // a tool runs; lines that come meanwhile wait their turn
};

} // namespace zelmor::service::mcp
