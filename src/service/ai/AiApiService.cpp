#include "AiApiService.h"

#include "AiDialect.h"
#include "AiProviderService.h"
#include "core/Log.h"
#include "service/mcp/McpTool.h"
#include "service/ocr/LocalOcrJob.h"

#include <QFutureWatcher>
#include <QJsonArray>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTimer>
#include <QUrl>
#include <QtConcurrent>

#include <memory>

namespace zelmor::service::ai {

namespace {

constexpr int kChatLimitMs = 120000;
constexpr int kTestLimitMs = 30000;
// A model stuck asking for tools would otherwise drive the desktop without end.
constexpr int kMaxToolDepth = 100;
constexpr qsizetype kReadOnGuiThreadBytes = 256 * 1024;

// Neither the key nor the provider's words go to the log: some providers quote the key
// back in their error message, and a base URL may carry one in its query.
void logFailure(const QString& protocol, QNetworkReply* reply)
{
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    core::writeLogLine(QStringLiteral("[ai] %1 request to %2 failed: network error %3, HTTP %4")
                           .arg(protocol, reply->url().host())
                           .arg(int(reply->error()))
                           .arg(status));
}

} // namespace

AiApiService::AiApiService(QObject* parent)
    : QObject(parent), m_network(new QNetworkAccessManager(this))
{}

void AiApiService::chat(const ChatRequest& request)
{
    m_cancelled = false;
    const AiProvider provider = AiProviderService::instance().active();
    if (const QString reason = unusableReason(provider); !reason.isEmpty()) {
        Q_EMIT chatFailed(reason);
        return;
    }
    Step step;
    step.protocol = effectiveProtocol(provider.protocol);
    step.url = endpointUrl(step.protocol, provider.baseUrl);
    step.apiKey = provider.apiKey;
    step.body = requestBody(request, step.protocol, provider.model, {},
                            request.enableTools ? toolDefinitions() : QJsonArray());
    send(step);
}

QString AiApiService::unusableReason(const AiProvider& provider, bool recognitionOnly)
{
    if (isLocalOcr(provider))
        return recognitionOnly
                   ? QString()
                   : tr("Tesseract OCR (local) only recognises text. For translation, UI "
                        "marking and chat, add a provider with a language model in "
                        "Settings → AI and make it the default.");
    if (endpointUrl(effectiveProtocol(provider.protocol), provider.baseUrl).isEmpty())
        return tr("AI Base URL is not configured. Please open Zelmor Settings -> AI to set API "
                  "Base URL & Key.");
    return QString();
}

void AiApiService::send(const Step& step)
{
    if (step.depth > kMaxToolDepth) {
        core::writeLogLine(
            QStringLiteral("[ai] tool loop stopped after %1 rounds").arg(kMaxToolDepth));
        Q_EMIT chatFailed(tr("Max tool execution depth (%1 steps) exceeded").arg(kMaxToolDepth));
        return;
    }
    QNetworkReply* reply = m_network->post(makeRequest(step.url, step.protocol, step.apiKey),
                                           QJsonDocument(step.body).toJson(QJsonDocument::Compact));
    m_reply = reply;

    auto* limit = new QTimer(reply);
    limit->setSingleShot(true);
    connect(limit, &QTimer::timeout, reply, [reply] {
        if (reply->isRunning()) reply->abort();
    });
    limit->start(kChatLimitMs);

    connect(reply, &QNetworkReply::finished, this, [this, reply, step] { finish(reply, step); });
}

void AiApiService::finish(QNetworkReply* reply, const Step& step)
{
    // Only this pointer is compared: an older reply on the same object is still delivered.
    if (m_reply == reply) m_reply = nullptr;
    reply->deleteLater();
    // An aborted reply is closed and has nothing left to read.
    const QByteArray bytes = reply->isOpen() ? reply->readAll() : QByteArray();
    if (failIfCancelled()) return;

    if (reply->error() != QNetworkReply::NoError) {
        logFailure(step.protocol, reply);
        Q_EMIT chatFailed(failureReason(reply->errorString(), bytes));
        return;
    }
    const bool openAi = step.protocol == QLatin1String("openai");
    if (bytes.size() <= kReadOnGuiThreadBytes) {
        deliver(step, readAnswer(bytes, openAi));
        return;
    }
    // Reading megabytes of JSON takes the GUI thread away for a tenth of a second and more.
    auto* reading = new QFutureWatcher<Answer>(this);
    connect(reading, &QFutureWatcher<Answer>::finished, this, [this, reading, step] {
        reading->deleteLater();
        if (!failIfCancelled()) deliver(step, reading->result());
    });
    reading->setFuture(QtConcurrent::run([bytes, openAi] { return readAnswer(bytes, openAi); }));
}

AiApiService::Answer AiApiService::readAnswer(const QByteArray& bytes, bool openAi)
{
    if (openAi)
        if (QJsonObject turn = toolCallTurn(bytes); !turn.isEmpty()) return {turn, QString()};
    QString text = replyText(bytes);
    // An answer in no known shape, an HTML page say, is still what the user should see.
    if (text.isEmpty() && !bytes.isEmpty()) text = QString::fromUtf8(bytes);
    return {QJsonObject(), text};
}

void AiApiService::deliver(const Step& step, const Answer& answer)
{
    if (!answer.toolTurn.isEmpty())
        runTools(step, answer.toolTurn);
    else
        Q_EMIT chatFinished(answer.text);
}

void AiApiService::runTools(const Step& step, const QJsonObject& turn)
{
    QJsonArray messages = step.body.value(QStringLiteral("messages")).toArray();
    messages.append(turn);
    // A tool that waits in an event loop of its own, or a listener, may delete this object.
    const QPointer<AiApiService> alive(this);
    for (const QJsonValue& value : turn.value(QStringLiteral("tool_calls")).toArray()) {
        const QJsonObject call = value.toObject();
        const QJsonObject function = call.value(QStringLiteral("function")).toObject();
        const QString name = function.value(QStringLiteral("name")).toString();
        const QVariantMap args = toolArguments(function.value(QStringLiteral("arguments")));
        m_toolRunning = true;
        const QVariantMap result = mcp::callMcpTool(name, args);
        if (!alive) return;
        m_toolRunning = false;
        Q_EMIT chatToolExecuted(name, args, result);
        if (!alive || failIfCancelled()) return;
        const QByteArray content =
            QJsonDocument(mcp::mcpResultJson(result)).toJson(QJsonDocument::Compact);
        messages.append(
            QJsonObject{{QStringLiteral("role"), QStringLiteral("tool")},
                        {QStringLiteral("tool_call_id"), call.value(QStringLiteral("id"))},
                        {QStringLiteral("content"), QString::fromUtf8(content)}});
    }
    Step next = step;
    next.body.insert(QStringLiteral("messages"), messages);
    ++next.depth;
    send(next);
}

void AiApiService::cancel()
{
    m_cancelled = true;
    // Only a tool that waits in an event loop of its own can be running now.
    if (m_toolRunning) Q_EMIT mcp::McpToolCancellation::instance().requested();
    if (!m_reply) return;
    QNetworkReply* reply = m_reply;
    m_reply = nullptr;
    reply->abort();
}

bool AiApiService::failIfCancelled()
{
    if (!m_cancelled) return false;
    m_cancelled = false;
    Q_EMIT chatFailed(tr("Cancelled"));
    return true;
}

void AiApiService::testConnection(const AiProvider& provider,
                                  std::function<void(bool ok, const QString& message)> done)
{
    if (isLocalOcr(provider)) {
        auto* job = new ocr::LocalOcrJob(this);
        connect(job, &ocr::LocalOcrJob::finished, this,
                [job, done](const ocr::LocalOcrResult& result) {
                    job->deleteLater();
                    const bool ok = result.error.isEmpty();
                    done(ok, ok ? result.text : result.error);
                });
        job->describe(provider.model);
        return;
    }
    ChatRequest request;
    request.text = QStringLiteral("hi");
    request.maxTokens = 1;
    const QString protocol = effectiveProtocol(provider.protocol);
    const QString url = endpointUrl(protocol, provider.baseUrl);
    QNetworkReply* reply =
        m_network->post(makeRequest(url, protocol, provider.apiKey),
                        QJsonDocument(requestBody(request, protocol, provider.model))
                            .toJson(QJsonDocument::Compact));

    // The abort on time-out finishes the reply too; only the first outcome is reported.
    auto answered = std::make_shared<bool>(false);
    connect(reply, &QNetworkReply::finished, this, [reply, done, answered, protocol] {
        reply->deleteLater();
        if (*answered) return;
        *answered = true;
        if (reply->error() == QNetworkReply::NoError) {
            done(true, QString());
            return;
        }
        logFailure(protocol, reply);
        done(false, reply->errorString());
    });
    QTimer::singleShot(kTestLimitMs, reply, [reply, done, answered] {
        if (*answered) return;
        *answered = true;
        reply->abort();
        done(false, QStringLiteral("Timeout"));
    });
}

} // namespace zelmor::service::ai
