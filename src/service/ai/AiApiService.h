#pragma once

#include "AiProvider.h"
#include "ChatRequest.h"

#include <QJsonObject>
#include <QObject>
#include <QPointer>
#include <QVariantMap>

#include <functional>

class QNetworkAccessManager;
class QNetworkReply;

namespace zelmor::service::ai {

// One POST to the active provider and its answer as plain text. Make one object per job:
// a second chat on the same object does not end the first, and both answers arrive.
class AiApiService : public QObject
{
    Q_OBJECT
public:
    explicit AiApiService(QObject* parent = nullptr);

    // Ends in exactly one of chatFinished or chatFailed. With tools on, an OpenAI-dialect
    // provider may ask for tools: they run here, and their results go back in a further POST,
    // up to 100 such rounds.
    void chat(const ChatRequest& request);
    // Ends the chat in chatFailed: the request in flight is aborted, a running tool is told to
    // stop, and no further request goes out.
    void cancel();
    // Sends "hi" for one token to the given provider; any HTTP success counts. A local OCR
    // provider loads its engine instead, and succeeds with the engine's version and languages
    // as the message. `done` runs once, unless this object is destroyed first.
    void testConnection(const AiProvider& provider,
                        std::function<void(bool ok, const QString& message)> done);

    // Why `provider` cannot answer a request, in words for the user; empty when it can.
    // `recognitionOnly`: the job is text recognition, which the local recogniser also does.
    static QString unusableReason(const AiProvider& provider, bool recognitionOnly = false);

Q_SIGNALS:
    void chatFinished(const QString& text);
    void chatFailed(const QString& reason);
    // Never emitted: every request asks for the whole answer at once.
    void chatStreamChunk(const QString& chunk);
    // Once per tool the provider asked for, in its order, before the next POST goes out.
    void chatToolExecuted(const QString& toolName, const QVariantMap& args,
                          const QVariantMap& result);

private:
    // One POST, captured whole by its reply's handler.
    struct Step
    {
        QString url;
        QString protocol; // effective
        QString apiKey;
        QJsonObject body; // carries the whole conversation so far
        int depth = 0;    // rounds of tool calls before this POST
    };

    // A reply read: the tool turn it asks for, else its text.
    struct Answer
    {
        QJsonObject toolTurn;
        QString text;
    };

    void send(const Step& step);
    void finish(QNetworkReply* reply, const Step& step);
    static Answer readAnswer(const QByteArray& bytes, bool openAi);
    void deliver(const Step& step, const Answer& answer);
    void runTools(const Step& step, const QJsonObject& turn);
    bool failIfCancelled();

    QNetworkAccessManager* m_network;
    QPointer<QNetworkReply> m_reply;
    bool m_cancelled = false;
    bool m_toolRunning = false;
};

} // namespace zelmor::service::ai
