#include "AiDialect.h"

#include "core/Utilities.h"
#include "service/mcp/McpTool.h"

#include <QJsonDocument>
#include <QNetworkRequest>
#include <QUrl>

namespace zelmor::service::ai {

namespace {

const QString kOpenAi = QStringLiteral("openai");
const QString kAnthropic = QStringLiteral("anthropic");
const QString kOllama = QStringLiteral("ollama");

const QString kAgentPrompt = QStringLiteral(
    "You are an autonomous Windows Computer Use Agent. Prefer using UIAutomation tools "
    "(click_ui_element, set_ui_element_text, find_ui_elements) or direct hotkeys for high "
    "efficiency.");

QString systemText(const ChatRequest& request)
{
    if (!request.enableTools) return request.systemPrompt;
    if (request.systemPrompt.isEmpty()) return kAgentPrompt;
    return request.systemPrompt + QStringLiteral("\n\n") + kAgentPrompt;
}

QString imageBase64(const QPixmap& image)
{
    return QString::fromLatin1(core::imageToBase64(image.toImage()));
}

QJsonObject textPart(const QString& text)
{
    return {{QStringLiteral("type"), QStringLiteral("text")}, {QStringLiteral("text"), text}};
}

// An image goes first: models read the text after the picture it refers to.
QJsonObject userMessage(const ChatRequest& request, const QString& protocol)
{
    QJsonObject message{{QStringLiteral("role"), QStringLiteral("user")},
                        {QStringLiteral("content"), request.text}};
    if (request.image.isNull()) return message;

    const QString data = imageBase64(request.image);
    if (protocol == kOllama) {
        message.insert(QStringLiteral("images"), QJsonArray{data});
    } else if (protocol == kAnthropic) {
        const QJsonObject source{{QStringLiteral("type"), QStringLiteral("base64")},
                                 {QStringLiteral("media_type"), QStringLiteral("image/png")},
                                 {QStringLiteral("data"), data}};
        const QJsonObject image{{QStringLiteral("type"), QStringLiteral("image")},
                                {QStringLiteral("source"), source}};
        message.insert(QStringLiteral("content"), QJsonArray{image, textPart(request.text)});
    } else {
        const QJsonObject url{
            {QStringLiteral("url"), QString(QStringLiteral("data:image/png;base64,") + data)}};
        const QJsonObject image{{QStringLiteral("type"), QStringLiteral("image_url")},
                                {QStringLiteral("image_url"), url}};
        message.insert(QStringLiteral("content"), QJsonArray{image, textPart(request.text)});
    }
    return message;
}

// The "text" of every part typed "text", in order.
QString joinedTextParts(const QJsonArray& parts)
{
    QString text;
    for (const QJsonValue& part : parts) {
        const QJsonObject object = part.toObject();
        if (object.value(QStringLiteral("type")).toString() == QLatin1String("text"))
            text += object.value(QStringLiteral("text")).toString();
    }
    return text;
}

} // namespace

QString effectiveProtocol(const QString& protocol)
{
    return protocol == QLatin1String("openai-compat") ? kOpenAi : protocol;
}

QString endpointUrl(const QString& effectiveProtocol, const QString& baseUrl)
{
    QString url = baseUrl.trimmed();
    if (url.isEmpty()) return url;
    if (!url.startsWith(QLatin1String("http://")) && !url.startsWith(QLatin1String("https://")))
        url.prepend(QStringLiteral("https://"));
    while (url.endsWith(QLatin1Char('/')))
        url.chop(1);

    if (effectiveProtocol == kOpenAi) {
        if (url.endsWith(QLatin1String("/chat/completions"))) return url;
        if (url.endsWith(QLatin1String("/v1"))) return url + QStringLiteral("/chat/completions");
        return url + QStringLiteral("/v1/chat/completions");
    }
    if (effectiveProtocol == kAnthropic) {
        if (url.endsWith(QLatin1String("/messages"))) return url;
        if (url.endsWith(QLatin1String("/v1"))) return url + QStringLiteral("/messages");
        return url + QStringLiteral("/v1/messages");
    }
    if (url.endsWith(QLatin1String("/api/chat"))) return url;
    return url + QStringLiteral("/api/chat");
}

QNetworkRequest makeRequest(const QString& url, const QString& effectiveProtocol,
                            const QString& apiKey)
{
    QNetworkRequest request{QUrl(url)};
    request.setHeader(QNetworkRequest::ContentTypeHeader, QByteArrayLiteral("application/json"));
    // Uncompressed, so that an answer broken off short of its length fails: a body that the
    // network layer unpacks itself loses its length, and its cut reads as a shorter answer.
    request.setRawHeader(QByteArrayLiteral("Accept-Encoding"), QByteArrayLiteral("identity"));
    if (effectiveProtocol == kAnthropic) {
        request.setRawHeader(QByteArrayLiteral("anthropic-version"),
                             QByteArrayLiteral("2023-06-01"));
        request.setRawHeader(QByteArrayLiteral("x-api-key"), apiKey.toUtf8());
    } else if (effectiveProtocol == kOpenAi) {
        // Sent with an empty key as well: local relays accept any bearer.
        request.setRawHeader(QByteArrayLiteral("Authorization"),
                             QByteArrayLiteral("Bearer ") + apiKey.toUtf8());
    }
    return request;
}

QJsonObject requestBody(const ChatRequest& request, const QString& effectiveProtocol,
                        const QString& model, const QJsonArray& messages, const QJsonArray& tools)
{
    QJsonObject body{{QStringLiteral("model"), model},
                     {QStringLiteral("max_tokens"), request.maxTokens}};
    // Providers refuse an empty "tools" array, so a missing list leaves the key out.
    const bool withTools = request.enableTools && effectiveProtocol == kOpenAi && !tools.isEmpty();
    if (!messages.isEmpty()) {
        body.insert(QStringLiteral("messages"), messages);
        if (withTools) body.insert(QStringLiteral("tools"), tools);
        return body;
    }

    const QString system = systemText(request);
    if (effectiveProtocol == kOpenAi) {
        QJsonArray conversation;
        if (!system.isEmpty())
            conversation.append(QJsonObject{{QStringLiteral("role"), QStringLiteral("system")},
                                            {QStringLiteral("content"), system}});
        conversation.append(userMessage(request, effectiveProtocol));
        body.insert(QStringLiteral("messages"), conversation);
        if (withTools) body.insert(QStringLiteral("tools"), tools);
    } else if (effectiveProtocol == kAnthropic) {
        body.insert(QStringLiteral("messages"),
                    QJsonArray{userMessage(request, effectiveProtocol)});
        if (!system.isEmpty()) body.insert(QStringLiteral("system"), system);
    } else if (effectiveProtocol == kOllama) {
        // No system text at all in this dialect, the agent prompt included.
        body.insert(QStringLiteral("messages"),
                    QJsonArray{userMessage(request, effectiveProtocol)});
        body.insert(QStringLiteral("stream"), false);
    }
    return body;
}

QJsonArray toolDefinitions()
{
    QJsonArray tools;
    for (const mcp::McpTool& tool : mcp::mcpTools()) {
        QJsonObject function{{QStringLiteral("name"), tool.name},
                             {QStringLiteral("description"), tool.description}};
        if (tool.schema) function.insert(QStringLiteral("parameters"), tool.schema());
        tools.append(QJsonObject{{QStringLiteral("type"), QStringLiteral("function")},
                                 {QStringLiteral("function"), function}});
    }
    return tools;
}

QJsonObject toolCallTurn(const QByteArray& reply)
{
    const QJsonArray choices =
        QJsonDocument::fromJson(reply).object().value(QStringLiteral("choices")).toArray();
    if (choices.isEmpty()) return {};
    const QJsonObject message =
        choices.at(0).toObject().value(QStringLiteral("message")).toObject();
    if (message.value(QStringLiteral("tool_calls")).toArray().isEmpty()) return {};
    return message;
}

QVariantMap toolArguments(const QJsonValue& arguments)
{
    // The dialect sends a string of JSON; some relays pass the object itself.
    if (arguments.isObject()) return arguments.toObject().toVariantMap();
    return QJsonDocument::fromJson(arguments.toString().toUtf8()).object().toVariantMap();
}

QString replyText(const QByteArray& reply)
{
    const QJsonDocument document = QJsonDocument::fromJson(reply);
    if (!document.isObject()) return QString();
    const QJsonObject root = document.object();

    const QJsonArray choices = root.value(QStringLiteral("choices")).toArray();
    if (!choices.isEmpty()) {
        const QJsonObject first = choices.at(0).toObject();
        if (first.contains(QStringLiteral("message"))) {
            const QJsonValue content =
                first.value(QStringLiteral("message")).toObject().value(QStringLiteral("content"));
            if (content.isString()) return content.toString();
            if (content.isArray()) return joinedTextParts(content.toArray());
        } else if (first.contains(QStringLiteral("text"))) {
            return first.value(QStringLiteral("text")).toString();
        }
    }

    const QJsonValue content = root.value(QStringLiteral("content"));
    if (content.isString()) return content.toString();
    if (content.isArray()) {
        const QString text = joinedTextParts(content.toArray());
        if (!text.isEmpty()) return text;
    }

    const QJsonValue message = root.value(QStringLiteral("message"));
    if (message.isObject() && message.toObject().contains(QStringLiteral("content")))
        return message.toObject().value(QStringLiteral("content")).toString();

    const QJsonArray candidates = root.value(QStringLiteral("candidates")).toArray();
    if (!candidates.isEmpty()) {
        const QJsonArray parts = candidates.at(0)
                                     .toObject()
                                     .value(QStringLiteral("content"))
                                     .toObject()
                                     .value(QStringLiteral("parts"))
                                     .toArray();
        if (!parts.isEmpty())
            return parts.at(0).toObject().value(QStringLiteral("text")).toString();
    }
    return QString();
}

QString failureReason(const QString& networkError, const QByteArray& reply)
{
    if (reply.isEmpty()) return networkError;
    const QJsonValue error = QJsonDocument::fromJson(reply).object().value(QStringLiteral("error"));
    const QJsonValue message = error.toObject().value(QStringLiteral("message"));
    if (message.isString() && !message.toString().isEmpty()) return message.toString();
    return networkError;
}

} // namespace zelmor::service::ai
