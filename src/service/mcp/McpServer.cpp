#include "McpServer.h"

#include "StdinReader.h"
#include "core/Log.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <cstdio>

namespace zelmor::service::mcp {

namespace {

enum ErrorCode {
    ParseError = -32700,
    InvalidRequest = -32600,
    MethodNotFound = -32601,
    InvalidParams = -32602,
};

// Past this a line without its end is dropped, so a runaway client cannot exhaust memory;
// the largest legitimate message, an inline PNG, stays far below.
constexpr qsizetype kMaxMessageBytes = 64 * 1024 * 1024;

QByteArray reply(const QJsonValue& id, const QString& key, const QJsonObject& body)
{
    const QJsonObject message{{QStringLiteral("jsonrpc"), QStringLiteral("2.0")},
                              {QStringLiteral("id"), id},
                              {key, body}};
    return QJsonDocument(message).toJson(QJsonDocument::Compact);
}

QJsonObject errorObject(int code, const QString& message, const QJsonValue& data = {})
{
    QJsonObject error{{QStringLiteral("code"), code}, {QStringLiteral("message"), message}};
    if (!data.isUndefined()) error.insert(QStringLiteral("data"), data);
    return error;
}

QByteArray errorReply(const QJsonValue& id, int code, const QString& message)
{
    return reply(id, QStringLiteral("error"), errorObject(code, message));
}

QJsonObject textBlock(const QString& text)
{
    return {{QStringLiteral("type"), QStringLiteral("text")}, {QStringLiteral("text"), text}};
}

QJsonObject toolList()
{
    QJsonArray tools;
    for (const McpTool& tool : mcpTools()) {
        // Clients require an object schema even of a tool that takes no arguments.
        const QJsonObject schema =
            tool.schema ? tool.schema()
                        : QJsonObject{{QStringLiteral("type"), QStringLiteral("object")},
                                      {QStringLiteral("properties"), QJsonObject()}};
        tools.append(QJsonObject{{QStringLiteral("name"), tool.name},
                                 {QStringLiteral("description"), tool.description},
                                 {QStringLiteral("inputSchema"), schema}});
    }
    return {{QStringLiteral("tools"), tools}};
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
}

const QStringList& McpServer::supportedProtocolVersions()
{
    static const QStringList versions{QStringLiteral("2025-11-25"), QStringLiteral("2025-06-18"),
                                      QStringLiteral("2025-03-26"), QStringLiteral("2024-11-05")};
    return versions;
}

void McpServer::receive(const QByteArray& chunk)
{
    m_buffer.append(chunk);
    // A tool that waits in a nested event loop lets chunks in; they are answered after it.
    if (m_answering) return;
    m_answering = true;
    qsizetype newline;
    while ((newline = m_buffer.indexOf('\n', m_scanned)) >= 0) {
        const QByteArray line = m_buffer.left(newline).trimmed();
        m_buffer.remove(0, newline + 1);
        m_scanned = 0;
        if (m_skippingLine) {
            m_skippingLine = false;
            continue;
        }
        if (line.isEmpty()) continue;
        const QByteArray answered = answer(line);
        if (!answered.isEmpty()) write(answered);
    }
    m_scanned = m_buffer.size();
    if (m_buffer.size() > kMaxMessageBytes) {
        m_buffer.clear();
        m_scanned = 0;
        if (!m_skippingLine)
            write(errorReply(QJsonValue::Null, ParseError, QStringLiteral("Message too large")));
        m_skippingLine = true;
    }
    m_answering = false;
}

void McpServer::finish()
{
    if (!m_buffer.trimmed().isEmpty()) receive(QByteArrayLiteral("\n"));
}

QByteArray McpServer::answer(const QByteArray& message)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(message, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        // A bare number or string is readable JSON, only not a request.
        if (QJsonDocument::fromJson('[' + message + ']').isArray())
            return errorReply(QJsonValue::Null, InvalidRequest, QStringLiteral("Invalid Request"));
        return errorReply(QJsonValue::Null, ParseError, QStringLiteral("Parse error"));
    }
    if (!document.isObject())
        return errorReply(QJsonValue::Null, InvalidRequest, QStringLiteral("Invalid Request"));

    const QJsonObject request = document.object();
    const bool hasId = request.contains(QLatin1String("id"));
    const QJsonValue id = request.value(QLatin1String("id"));
    const bool idValid = id.isString() || id.isDouble();
    const QJsonValue replyId = idValid ? id : QJsonValue(QJsonValue::Null);
    const QJsonValue method = request.value(QLatin1String("method"));

    // This server sends no requests, so a response of the client answers nothing.
    if (method.isUndefined() && hasId &&
        (request.contains(QLatin1String("result")) || request.contains(QLatin1String("error"))))
        return {};
    if (request.value(QLatin1String("jsonrpc")) != QLatin1String("2.0") || !method.isString() ||
        (hasId && !idValid))
        return errorReply(replyId, InvalidRequest, QStringLiteral("Invalid Request"));
    // Notifications, known or not, are never answered; none of them needs an action here.
    if (!hasId) return {};

    const QJsonValue params = request.value(QLatin1String("params"));
    if (!params.isUndefined() && !params.isObject())
        return errorReply(id, InvalidParams, QStringLiteral("params must be an object"));

    QJsonObject error;
    const QJsonObject result = handleRequest(method.toString(), params.toObject(), &error);
    return error.isEmpty() ? reply(id, QStringLiteral("result"), result)
                           : reply(id, QStringLiteral("error"), error);
}

QJsonObject McpServer::handleRequest(const QString& method, const QJsonObject& params,
                                     QJsonObject* error)
{
    if (method == QLatin1String("ping")) return {};
    if (method == QLatin1String("initialize")) {
        const QJsonValue requested = params.value(QLatin1String("protocolVersion"));
        const QStringList& supported = supportedProtocolVersions();
        if (!requested.isString()) {
            *error = errorObject(
                InvalidParams, QStringLiteral("Unsupported protocol version"),
                QJsonObject{{QStringLiteral("supported"), QJsonArray::fromStringList(supported)},
                            {QStringLiteral("requested"),
                             requested.isUndefined() ? QJsonValue(QJsonValue::Null) : requested}});
            return {};
        }
        // A version this server does not speak is answered with its newest; the client
        // decides whether it can go on.
        const QString version =
            supported.contains(requested.toString()) ? requested.toString() : supported.first();
        const QJsonObject client = params.value(QLatin1String("clientInfo")).toObject();
        core::writeLogLine(QStringLiteral("[mcp] initialize from %1 %2, protocol %3 (asked %4)")
                               .arg(client.value(QLatin1String("name")).toString(),
                                    client.value(QLatin1String("version")).toString(), version,
                                    requested.toString()));
        const QString serverVersion = QCoreApplication::applicationVersion();
        return {{QStringLiteral("protocolVersion"), version},
                {QStringLiteral("capabilities"),
                 QJsonObject{{QStringLiteral("tools"),
                              QJsonObject{{QStringLiteral("listChanged"), false}}}}},
                {QStringLiteral("serverInfo"),
                 QJsonObject{{QStringLiteral("name"), QStringLiteral("zelmor")},
                             {QStringLiteral("title"), QStringLiteral("Zelmor")},
                             {QStringLiteral("version"),
                              serverVersion.isEmpty() ? QStringLiteral("0") : serverVersion}}}};
    }
    if (method == QLatin1String("tools/list")) return toolList();
    if (method == QLatin1String("tools/call")) {
        const QJsonValue name = params.value(QLatin1String("name"));
        const QJsonValue arguments = params.value(QLatin1String("arguments"));
        if (!name.isString()) {
            *error = errorObject(InvalidParams, QStringLiteral("tools/call needs a tool name"));
            return {};
        }
        if (!arguments.isUndefined() && !arguments.isNull() && !arguments.isObject()) {
            *error = errorObject(InvalidParams, QStringLiteral("arguments must be an object"));
            return {};
        }
        return callResult(callMcpTool(name.toString(), arguments.toObject().toVariantMap()));
    }
    *error = errorObject(MethodNotFound, QStringLiteral("Method not found: %1").arg(method));
    return {};
}

QJsonObject McpServer::callResult(const McpToolResult& result)
{
    QVariantMap data = result;
    const bool isError = data.take(QStringLiteral("isError")).toBool();
    const bool hasText = data.contains(QStringLiteral("text"));
    const QString text = data.take(QStringLiteral("text")).toString();
    const QString dataJson = QString::fromUtf8(
        QJsonDocument(QJsonObject::fromVariantMap(data)).toJson(QJsonDocument::Compact));

    QJsonArray content;
    if (hasText) {
        content.append(textBlock(text));
        // Clients pass the content on to their model, so the data travels there too.
        if (!data.isEmpty()) content.append(textBlock(dataJson));
    } else {
        content.append(textBlock(dataJson));
    }
    QJsonObject out{{QStringLiteral("content"), content}};
    if (isError) out.insert(QStringLiteral("isError"), true);
    return out;
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
