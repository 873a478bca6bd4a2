#include "CancellationWatch.h"

#include "McpTool.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QMutexLocker>

namespace zelmor::service::mcp {

namespace {

// A cancellation is a short line; anything longer is some other message, passed over unread.
constexpr qsizetype kMaxCancellationBytes = 64 * 1024;
// Cancellations of requests that never ran are kept this many at most.
constexpr qsizetype kMaxRemembered = 256;

QJsonValue cancelledRequest(const QByteArray& line)
{
    const QJsonObject message = QJsonDocument::fromJson(line).object();
    if (message.value(QLatin1String("method")) != QLatin1String("notifications/cancelled") ||
        message.contains(QLatin1String("id")))
        return QJsonValue::Undefined;
    return message.value(QLatin1String("params")).toObject().value(QLatin1String("requestId"));
}

} // namespace

void CancellationWatch::scan(const QByteArray& chunk)
{
    qsizetype from = 0;
    for (qsizetype newline; (newline = chunk.indexOf('\n', from)) >= 0; from = newline + 1) {
        const QByteArray line = m_partial + chunk.mid(from, newline - from);
        if (!m_skipping && line.contains("notifications/cancelled")) cancel(cancelledRequest(line));
        m_partial.clear();
        m_skipping = false;
    }
    if (!m_skipping) m_partial += chunk.mid(from);
    if (m_partial.size() > kMaxCancellationBytes) {
        m_partial.clear();
        m_skipping = true;
    }
}

void CancellationWatch::endOfInput()
{
    QMutexLocker lock(&m_mutex);
    m_ended = true;
    McpToolCancellation::instance().setRequested(true);
}

void CancellationWatch::begin(const QJsonValue& id)
{
    QMutexLocker lock(&m_mutex);
    m_running = id;
    m_runningCancelled = m_cancelled.removeAll(id) > 0;
    McpToolCancellation::instance().setRequested(m_ended || m_runningCancelled);
}

bool CancellationWatch::end()
{
    QMutexLocker lock(&m_mutex);
    m_running = QJsonValue::Undefined;
    return m_runningCancelled;
}

void CancellationWatch::cancel(const QJsonValue& id)
{
    if (!id.isString() && !id.isDouble()) return;
    QMutexLocker lock(&m_mutex);
    if (id == m_running) {
        m_runningCancelled = true;
        McpToolCancellation::instance().setRequested(true);
        return;
    }
    if (m_cancelled.size() >= kMaxRemembered) m_cancelled.removeFirst();
    m_cancelled.append(id);
}

} // namespace zelmor::service::mcp
