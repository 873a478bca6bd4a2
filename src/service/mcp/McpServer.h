#pragma once

#include "CancellationWatch.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QJsonValue>
#include <QObject>

class QIODevice;

namespace zelmor::service::mcp {

class StdinReader;

// The server side of the Model Context Protocol over a byte stream: newline-delimited
// JSON-RPC 2.0 messages in, one reply line per request out, in either era of the protocol.
class McpServer : public QObject
{
    Q_OBJECT
public:
    explicit McpServer(QObject* parent = nullptr);
    ~McpServer() override;

    // Where reply lines go; standard output when never set. Not owned.
    void setOutput(QIODevice* output);

    // Feeds the reader's chunks into receive(), and lets a running tool learn of its
    // cancellation or of the end of input while it keeps this thread busy. The reader stays
    // the caller's and must not outlive the server.
    void attach(StdinReader* reader);

    // Appends bytes and answers every whole line among them. A cancellation takes effect
    // as it arrives, even while a tool runs.
    void receive(const QByteArray& chunk);

    // End of input: a last line without its newline is still answered.
    void finish();

    // While held, a tool call and every line after it wait: the protocol's own requests are
    // answered before the process has made what tools need. Releasing answers what waits.
    void holdToolCalls(bool hold);
    bool toolCallWaiting() const;

    // One message in, its reply out without the newline; empty for notifications and for
    // responses of the client.
    QByteArray answer(const QByteArray& message);

private:
    void takeLines();
    void answerWaitingLines();
    void noteCancellation(const QByteArray& line);
    void write(const QByteArray& line);

    QByteArray m_buffer;
    qsizetype m_scanned = 0; // leading bytes of m_buffer known to hold no newline
    QByteArrayList m_lines;  // whole lines not yet answered, in order
    QJsonValue m_running;    // id of the request being answered
    bool m_runningCancelled = false;
    CancellationWatch m_watch;
    StdinReader* m_reader = nullptr;
    QIODevice* m_output = nullptr;
    bool m_skippingLine = false; // the rest of an oversized line is being dropped
    bool m_answering = false;    // a tool runs; lines that come meanwhile wait their turn
    bool m_holdToolCalls = false;
    bool m_toolCallWaiting = false;
};

} // namespace zelmor::service::mcp
