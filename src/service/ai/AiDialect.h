#pragma once

#include "ChatRequest.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QVariantMap>

class QNetworkRequest;

namespace zelmor::service::ai {

// The wire forms of the three dialects: "openai" (chat completions), "anthropic"
// (messages) and "ollama" (chat). Any other protocol gets a bare body and no credentials.

// "openai-compat" speaks "openai"; every other protocol is kept as it is, case and all.
QString effectiveProtocol(const QString& protocol);

// The URL a request goes to, from the base URL as the user typed it; empty for a blank base.
QString endpointUrl(const QString& effectiveProtocol, const QString& baseUrl);

QNetworkRequest makeRequest(const QString& url, const QString& effectiveProtocol,
                            const QString& apiKey);

// The request body. A non-empty `messages` replaces the conversation built from `request`;
// `tools` goes out only in the OpenAI dialect and only when the request enables tools.
QJsonObject requestBody(const ChatRequest& request, const QString& effectiveProtocol,
                        const QString& model, const QJsonArray& messages = {},
                        const QJsonArray& tools = {});

// The registry's tools as OpenAI function definitions, in table order.
QJsonArray toolDefinitions();

// The assistant turn of an OpenAI answer that asks for tools, whole and unchanged; empty
// when the answer asks for none.
QJsonObject toolCallTurn(const QByteArray& reply);

// A call's "arguments" as a map; anything but a JSON object gives an empty map.
QVariantMap toolArguments(const QJsonValue& arguments);

// The answer's text, found by the shape of the reply whatever dialect it came in; empty
// when no known shape holds any.
QString replyText(const QByteArray& reply);

// The provider's own "error"."message" when the reply holds one, else `networkError`.
QString failureReason(const QString& networkError, const QByteArray& reply);

} // namespace zelmor::service::ai
