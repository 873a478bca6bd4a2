#include "McpMethods.h"

#include "ModelImage.h"
#include "core/Log.h"

#include <QCoreApplication>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>

namespace zelmor::service::mcp {

namespace {

const QLatin1String kProtocolVersionKey("io.modelcontextprotocol/protocolVersion");
const QLatin1String kServerInfoKey("io.modelcontextprotocol/serverInfo");
// The table is fixed for a build, and the same for every user.
constexpr int kToolListTtlMs = 60 * 60 * 1000;

QString key(const char* name)
{
    return QLatin1String(name);
}

QJsonObject serverInfo()
{
    const QString version = QCoreApplication::applicationVersion();
    return {{key("name"), key("zelmor")},
            {key("title"), key("Zelmor")},
            {key("version"), version.isEmpty() ? key("0") : version}};
}

QJsonObject methodNotFound(const QString& method)
{
    return mcpErrorObject(MethodNotFound, QStringLiteral("Method not found: %1").arg(method));
}

QJsonObject textBlock(const QString& text)
{
    return {{key("type"), key("text")}, {key("text"), text}};
}

QJsonObject toolList()
{
    QJsonArray tools;
    for (const McpTool& tool : mcpTools()) {
        // Clients require an object schema even of a tool that takes no arguments.
        const QJsonObject schema = tool.schema ? tool.schema()
                                               : QJsonObject{{key("type"), key("object")},
                                                             {key("properties"), QJsonObject()}};
        tools.append(QJsonObject{{key("name"), tool.name},
                                 {key("description"), tool.description},
                                 {key("inputSchema"), schema}});
    }
    return {{key("tools"), tools}};
}

QJsonObject toolCall(const QJsonObject& params, QJsonObject* error)
{
    const QJsonValue name = params.value(QLatin1String("name"));
    const QJsonValue arguments = params.value(QLatin1String("arguments"));
    if (!name.isString()) {
        *error = mcpErrorObject(InvalidParams, QStringLiteral("tools/call needs a tool name"));
        return {};
    }
    if (!arguments.isUndefined() && !arguments.isNull() && !arguments.isObject()) {
        *error = mcpErrorObject(InvalidParams, QStringLiteral("arguments must be an object"));
        return {};
    }
    return mcpCallResult(callMcpTool(name.toString(), arguments.toObject().toVariantMap()));
}

QJsonObject initializeResult(const QJsonObject& params, QJsonObject* error)
{
    const QJsonValue requested = params.value(QLatin1String("protocolVersion"));
    const QStringList& supported = handshakeProtocolVersions();
    if (!requested.isString()) {
        *error = mcpErrorObject(
            InvalidParams, QStringLiteral("Unsupported protocol version"),
            QJsonObject{{key("supported"), QJsonArray::fromStringList(supported)},
                        {key("requested"),
                         requested.isUndefined() ? QJsonValue(QJsonValue::Null) : requested}});
        return {};
    }
    // A version this server does not speak is answered with its newest; the client decides
    // whether it can go on.
    const QString version =
        supported.contains(requested.toString()) ? requested.toString() : supported.first();
    const QJsonObject client = params.value(QLatin1String("clientInfo")).toObject();
    core::writeLogLine(QStringLiteral("[mcp] initialize from %1 %2, protocol %3 (asked %4)")
                           .arg(client.value(QLatin1String("name")).toString(),
                                client.value(QLatin1String("version")).toString(), version,
                                requested.toString()));
    return {{key("protocolVersion"), version},
            {key("capabilities"),
             QJsonObject{{key("tools"), QJsonObject{{key("listChanged"), false}}}}},
            {key("serverInfo"), serverInfo()}};
}

McpAnswer answerHandshakeEra(const QString& method, const QJsonObject& params)
{
    McpAnswer answer;
    if (method == QLatin1String("ping")) return answer;
    if (method == QLatin1String("initialize"))
        answer.result = initializeResult(params, &answer.error);
    else if (method == QLatin1String("tools/list"))
        answer.result = toolList();
    else if (method == QLatin1String("tools/call"))
        answer.result = toolCall(params, &answer.error);
    else
        answer.error = methodNotFound(method);
    return answer;
}

// Every stateless result says that it is complete and who gave it.
QJsonObject stamped(QJsonObject result)
{
    QJsonObject meta = result.value(QLatin1String("_meta")).toObject();
    meta.insert(kServerInfoKey, serverInfo());
    result.insert(key("_meta"), meta);
    result.insert(key("resultType"), key("complete"));
    return result;
}

McpAnswer answerStateless(const QString& method, const QJsonObject& params,
                          const QJsonValue& revision)
{
    const QStringList& supported = statelessProtocolVersions();
    if (!revision.isUndefined() && !supported.contains(revision.toString()))
        return {{},
                mcpErrorObject(
                    UnsupportedProtocolVersion, QStringLiteral("Unsupported protocol version"),
                    QJsonObject{{key("supported"), QJsonArray::fromStringList(supported)},
                                {key("requested"), revision}})};
    McpAnswer answer;
    if (method == QLatin1String("server/discover")) {
        answer.result = {{key("supportedVersions"), QJsonArray::fromStringList(supported)},
                         {key("capabilities"), QJsonObject{{key("tools"), QJsonObject()}}},
                         {key("ttlMs"), kToolListTtlMs},
                         {key("cacheScope"), key("public")}};
    } else if (method == QLatin1String("tools/list")) {
        answer.result = toolList();
        answer.result.insert(key("ttlMs"), kToolListTtlMs);
        answer.result.insert(key("cacheScope"), key("public"));
    } else if (method == QLatin1String("tools/call")) {
        answer.result = toolCall(params, &answer.error);
    } else {
        answer.error = methodNotFound(method);
    }
    if (answer.error.isEmpty()) answer.result = stamped(answer.result);
    return answer;
}

} // namespace

const QStringList& handshakeProtocolVersions()
{
    static const QStringList versions{QStringLiteral("2025-11-25"), QStringLiteral("2025-06-18"),
                                      QStringLiteral("2025-03-26"), QStringLiteral("2024-11-05")};
    return versions;
}

const QStringList& statelessProtocolVersions()
{
    static const QStringList versions{QStringLiteral("2026-07-28")};
    return versions;
}

McpAnswer answerMcpRequest(const QString& method, const QJsonObject& params)
{
    const QJsonValue revision =
        params.value(QLatin1String("_meta")).toObject().value(kProtocolVersionKey);
    // `initialize` opens the handshake era whatever came before; a discovery probe is
    // stateless even without the version a client would send with it.
    if (method != QLatin1String("initialize") &&
        (!revision.isUndefined() || method == QLatin1String("server/discover")))
        return answerStateless(method, params, revision);
    return answerHandshakeEra(method, params);
}

QJsonObject mcpErrorObject(int code, const QString& message, const QJsonValue& data)
{
    QJsonObject error{{key("code"), code}, {key("message"), message}};
    if (!data.isUndefined()) error.insert(key("data"), data);
    return error;
}

QJsonObject mcpCallResult(const McpToolResult& result)
{
    QVariantMap data = result;
    const bool isError = data.take(key("isError")).toBool();
    const McpModelImage picture = makeModelImage(data.take(mcpModelImageKey()).value<QImage>());
    if (!picture.png.isEmpty()) {
        // A model maps what it sees back to the screen by this.
        data.insert(key("imageScale"), picture.scale);
        data.insert(key("imageWidth"), picture.size.width());
        data.insert(key("imageHeight"), picture.size.height());
    }
    const bool hasText = data.contains(key("text"));
    const QString text = data.take(key("text")).toString();
    const QString dataJson = QString::fromUtf8(
        QJsonDocument(QJsonObject::fromVariantMap(data)).toJson(QJsonDocument::Compact));

    QJsonArray content;
    // Clients pass the content on to their model, so the data travels there too.
    if (hasText) content.append(textBlock(text));
    if (!hasText || !data.isEmpty()) content.append(textBlock(dataJson));
    if (!picture.png.isEmpty())
        content.append(QJsonObject{{key("type"), key("image")},
                                   {key("data"), QString::fromLatin1(picture.png.toBase64())},
                                   {key("mimeType"), key("image/png")}});
    QJsonObject out{{key("content"), content}};
    if (isError) out.insert(key("isError"), true);
    return out;
}

} // namespace zelmor::service::mcp
