#include "McpServer.h"

#include "McpMethods.h"
#include "McpTool.h"
#include "StdinReader.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace zelmor::service::mcp {

namespace {

// Past this a line without its end is dropped, so a runaway client cannot exhaust memory;
// the largest legitimate message, an inline PNG, stays far below.
constexpr qsizetype kMaxMessageBytes = 64 * 1024 * 1024;

// One line read as JSON, with what the transport itself needs of it.
struct Incoming
{
    QByteArray line;
    QJsonDocument document;
    bool parsed = false;
    QJsonValue id;  // undefined for a notification
    QString method; // empty when there is none
};

Incoming readLine(const QByteArray& line)
{
    QJsonParseError error;
    Incoming in;
    in.line = line;
    in.document = QJsonDocument::fromJson(line, &error);
    in.parsed = error.error == QJsonParseError::NoError;
    const QJsonObject object = in.document.object();
    in.id = object.value(QLatin1String("id"));
    in.method = object.value(QLatin1String("method")).toString();
    return in;
}

// Halves of surrogate pairs become U+FFFD.
QString wellFormed(QString text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate())
            ++i;
        else if (text[i].isSurrogate())
            text[i] = QChar::ReplacementCharacter;
    }
    return text;
}

QJsonValue wellFormed(const QJsonValue& value)
{
    if (value.isString()) return wellFormed(value.toString());
    if (value.isArray()) {
        QJsonArray array;
        for (const QJsonValue& item : value.toArray())
            array.append(wellFormed(item));
        return array;
    }
    if (!value.isObject()) return value;
    QJsonObject object = value.toObject();
    for (auto it = object.begin(); it != object.end(); ++it)
        *it = wellFormed(it.value());
    return object;
}

QByteArray reply(const QJsonValue& id, const QString& key, const QJsonObject& body)
{
    const QJsonObject message{{QStringLiteral("jsonrpc"), QStringLiteral("2.0")},
                              {QStringLiteral("id"), id},
                              {key, body}};
    const QByteArray json = QJsonDocument(message).toJson(QJsonDocument::Compact);
    // Text a client sent comes back in answers, and half of a surrogate pair in it is no text to
    // any decoder. Qt escapes only such halves, and writes a whole pair as UTF-8.
    if (!json.contains("\\ud") && !json.contains("\\uD")) return json;
    return QJsonDocument(wellFormed(message).toObject()).toJson(QJsonDocument::Compact);
}

QByteArray errorReply(const QJsonValue& id, int code, const QString& message)
{
    return reply(id, QStringLiteral("error"), mcpErrorObject(code, message));
}

QByteArray replyTo(const Incoming& in)
{
    if (!in.parsed) {
        // A bare number or string is readable JSON, only not a request.
        if (QJsonDocument::fromJson('[' + in.line + ']').isArray())
            return errorReply(QJsonValue::Null, InvalidRequest, QStringLiteral("Invalid Request"));
        return errorReply(QJsonValue::Null, ParseError, QStringLiteral("Parse error"));
    }
    if (!in.document.isObject())
        return errorReply(QJsonValue::Null, InvalidRequest, QStringLiteral("Invalid Request"));

    const QJsonObject request = in.document.object();
    const bool hasId = !in.id.isUndefined();
    const bool idValid = in.id.isString() || in.id.isDouble();
    const QJsonValue replyId = idValid ? in.id : QJsonValue(QJsonValue::Null);
    const QJsonValue method = request.value(QLatin1String("method"));

    // This server sends no requests, so a response of the client answers nothing.
    if (method.isUndefined() && hasId &&
        (request.contains(QLatin1String("result")) || request.contains(QLatin1String("error"))))
        return {};
    if (request.value(QLatin1String("jsonrpc")) != QLatin1String("2.0") || !method.isString() ||
        (hasId && !idValid))
        return errorReply(replyId, InvalidRequest, QStringLiteral("Invalid Request"));
    // Notifications, known or not, are never answered; a cancellation acts on arrival.
    if (!hasId) return {};

    const QJsonValue params = request.value(QLatin1String("params"));
    if (!params.isUndefined() && !params.isObject())
        return errorReply(in.id, InvalidParams, QStringLiteral("params must be an object"));

    const McpAnswer answer = answerMcpRequest(method.toString(), params.toObject());
    return answer.error.isEmpty() ? reply(in.id, QStringLiteral("result"), answer.result)
                                  : reply(in.id, QStringLiteral("error"), answer.error);
}

} // namespace

McpServer::McpServer(QObject* parent) : QObject(parent) {}

McpServer::~McpServer() = default;

void McpServer::setOutput(QIODevice* output)
{
    m_output = output;
}

void McpServer::attach(StdinReader* reader)
{
    m_reader = reader;
    connect(reader, &StdinReader::dataReady, this, &McpServer::receive);
    // Direct: these run on the reader's thread as the bytes come.
    connect(
        reader, &StdinReader::dataRead, this,
        [this](const QByteArray& chunk) { m_watch.scan(chunk); }, Qt::DirectConnection);
    connect(
        reader, &StdinReader::inputEnded, this, [this] { m_watch.endOfInput(); },
        Qt::DirectConnection);
}

void McpServer::receive(const QByteArray& chunk)
{
    m_buffer.append(chunk);
    takeLines();
    answerWaitingLines();
}

void McpServer::finish()
{
    if (!m_buffer.trimmed().isEmpty()) receive(QByteArrayLiteral("\n"));
}

void McpServer::holdToolCalls(bool hold)
{
    m_holdToolCalls = hold;
    if (hold) return;
    m_toolCallWaiting = false;
    answerWaitingLines();
}

bool McpServer::toolCallWaiting() const
{
    return m_toolCallWaiting;
}

QByteArray McpServer::answer(const QByteArray& message)
{
    return replyTo(readLine(message));
}

void McpServer::takeLines()
{
    qsizetype newline;
    while ((newline = m_buffer.indexOf('\n', m_scanned)) >= 0) {
        QByteArray line = m_buffer.left(newline).trimmed();
        m_buffer.remove(0, newline + 1);
        m_scanned = 0;
        if (m_skippingLine) {
            m_skippingLine = false;
        } else if (line.contains("notifications/cancelled")) {
            noteCancellation(line);
        } else if (!line.isEmpty()) {
            m_lines.append(line);
        }
    }
    m_scanned = m_buffer.size();
    if (m_buffer.size() > kMaxMessageBytes) {
        m_buffer.clear();
        m_scanned = 0;
        if (!m_skippingLine)
            write(errorReply(QJsonValue::Null, ParseError, QStringLiteral("Message too large")));
        m_skippingLine = true;
    }
}

void McpServer::answerWaitingLines()
{
    // A tool that waits in a nested event loop lets chunks in; they are answered after it.
    if (m_answering) return;
    m_answering = true;
    while (!m_lines.isEmpty()) {
        const Incoming in = readLine(m_lines.first());
        if (m_holdToolCalls && in.method == QLatin1String("tools/call")) {
            m_toolCallWaiting = true;
            break;
        }
        m_lines.removeFirst();
        m_running = in.id;
        m_runningCancelled = false;
        m_watch.begin(in.id);
        const QByteArray answered = replyTo(in);
        if (m_watch.end()) m_runningCancelled = true;
        if (!answered.isEmpty() && !m_runningCancelled) write(answered);
    }
    m_running = QJsonValue(QJsonValue::Undefined);
    m_answering = false;
}

// A cancelled request gets no message at all: the running one is told to stop and its answer
// dropped, a waiting one is dropped unanswered.
void McpServer::noteCancellation(const QByteArray& line)
{
    const Incoming in = readLine(line);
    if (in.method != QLatin1String("notifications/cancelled") || !in.id.isUndefined()) {
        m_lines.append(line);
        return;
    }
    const QJsonValue target = in.document.object()
                                  .value(QLatin1String("params"))
                                  .toObject()
                                  .value(QLatin1String("requestId"));
    if (target.isUndefined()) return;
    if (m_answering && m_running == target) {
        m_runningCancelled = true;
        McpToolCancellation::instance().setRequested(true);
        emit McpToolCancellation::instance().requested();
        return;
    }
    m_lines.removeIf([&target](const QByteArray& waiting) {
        const Incoming request = readLine(waiting);
        return !request.method.isEmpty() && request.id == target;
    });
}

void McpServer::write(const QByteArray& line)
{
    if (!m_output) {
        auto* standardOutput = new QFile(this);
        standardOutput->open(stdout, QIODevice::WriteOnly | QIODevice::Unbuffered);
        m_output = standardOutput;
    }
    m_output->write(line + '\n');
    if (auto* file = qobject_cast<QFileDevice*>(m_output)) file->flush();
}

} // namespace zelmor::service::mcp
