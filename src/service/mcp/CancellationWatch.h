#pragma once

#include <QByteArray>
#include <QJsonValue>
#include <QList>
#include <QMutex>

namespace zelmor::service::mcp {

// Looks at the input as it is read, on the reader's thread, so that a tool that keeps the
// server's thread busy learns at once that its request was cancelled or that input ended:
// it finds out through McpToolCancellation, which it asks between its steps.
class CancellationWatch
{
public:
    // Reader's thread: the bytes just read, and the end of input.
    void scan(const QByteArray& chunk);
    void endOfInput();

    // Server's thread: the request of this id starts running, and has ended; true when it was
    // cancelled meanwhile, so that its answer is dropped.
    void begin(const QJsonValue& id);
    bool end();

private:
    void cancel(const QJsonValue& id);

    QByteArray m_partial; // reader's thread only: a line whose end has not come
    bool m_skipping = false;

    QMutex m_mutex;
    QJsonValue m_running{QJsonValue::Undefined};
    bool m_runningCancelled = false;
    QList<QJsonValue> m_cancelled; // ids cancelled before they ran
    bool m_ended = false;
};

} // namespace zelmor::service::mcp
