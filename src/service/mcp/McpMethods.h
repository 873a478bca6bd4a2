#pragma once

#include "McpTool.h"

#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <QStringList>

// The answers of the protocol's methods in both of its eras: the handshake era, where
// `initialize` opens a session, and the stateless one, where every request names its
// protocol version in `_meta` and `server/discover` tells what the server speaks.
namespace zelmor::service::mcp {

enum McpErrorCode {
    ParseError = -32700,
    InvalidRequest = -32600,
    MethodNotFound = -32601,
    InvalidParams = -32602,
    UnsupportedProtocolVersion = -32022,
};

// A request's result, or its error when `error` is not empty.
struct McpAnswer
{
    QJsonObject result;
    QJsonObject error;
};

McpAnswer answerMcpRequest(const QString& method, const QJsonObject& params);

// `data` is left out unless given; a null given is sent as null.
QJsonObject mcpErrorObject(int code, const QString& message,
                           const QJsonValue& data = QJsonValue(QJsonValue::Undefined));

// Newest first; the first is offered to handshake clients asking for a version not listed.
const QStringList& handshakeProtocolVersions();
const QStringList& statelessProtocolVersions();

// A tool's result map as the protocol's call result: `isError`, `text` as the first text
// block, every other key as JSON text, and the tool's picture as an image block.
QJsonObject mcpCallResult(const McpToolResult& result);

} // namespace zelmor::service::mcp
