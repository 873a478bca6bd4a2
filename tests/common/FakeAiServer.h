#pragma once

// An HTTP/1.1 server on 127.0.0.1 standing in for an AI provider or the release feed: it
// records every request and answers each with the next queued reply. A request's body needs a
// Content-Length (Qt's network layer always sends one); every answer closes its connection.

#include "service/ai/AiProviderService.h"

#include <QByteArray>
#include <QHostAddress>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QPointer>
#include <QQueue>
#include <QTcpServer>
#include <QTcpSocket>

#include <memory>

namespace zelmor::test {

struct HttpRequest
{
    QByteArray method;
    QByteArray path;                      // with the query, as on the request line
    QMap<QByteArray, QByteArray> headers; // names in lower case
    QByteArray body;

    QJsonObject json() const { return QJsonDocument::fromJson(body).object(); }
};

class FakeAiServer
{
public:
    FakeAiServer()
    {
        m_server.listen(QHostAddress::LocalHost);
        QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] {
            while (QTcpSocket* socket = m_server.nextPendingConnection())
                watch(socket);
        });
    }

    QString baseUrl() const
    {
        return QStringLiteral("http://127.0.0.1:%1").arg(m_server.serverPort());
    }

    void enqueue(int status, const QByteArray& body,
                 const QByteArray& contentType = "application/json")
    {
        m_replies.enqueue(response(status, body, contentType));
    }
    // A whole response as it goes on the wire, whatever it says.
    void enqueueRaw(const QByteArray& response) { m_replies.enqueue(response); }
    // Not answered until answerHeld: the client has to wait, give up or cancel.
    void enqueueHold() { m_replies.enqueue(QByteArray()); }
    void answerHeld(int status, const QByteArray& body)
    {
        sendHeld(response(status, body, "application/json"), true);
    }

    // Sends part of the held answer; a reply can so be streamed or broken off.
    void sendHeld(const QByteArray& bytes, bool close)
    {
        if (!m_held) return;
        m_held->write(bytes);
        m_held->flush();
        if (close) m_held->disconnectFromHost();
    }
    // The status line and headers of an answer whose body follows in parts.
    static QByteArray head(int status, qint64 length, const QByteArray& type)
    {
        QByteArray whole = response(status, QByteArray(length, ' '), type);
        whole.chop(length);
        return whole;
    }

    // Registers this server as the provider the AI requests go to.
    bool becomeActiveProvider() const
    {
        service::ai::AiProvider p;
        p.name = QStringLiteral("local");
        p.protocol = QStringLiteral("openai");
        p.baseUrl = baseUrl();
        p.model = QStringLiteral("m");
        return service::ai::AiProviderService::instance().insert(p) > 0;
    }

    const QList<HttpRequest>& requests() const { return m_requests; }
    void clear()
    {
        m_requests.clear();
        m_replies.clear();
    }

private:
    void watch(QTcpSocket* socket)
    {
        auto buffer = std::make_shared<QByteArray>();
        QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket, buffer] {
            buffer->append(socket->readAll());
            HttpRequest request;
            if (!parse(*buffer, request)) return;
            buffer->clear();
            m_requests.append(request);
            // A request nobody prepared for gets a reply that no test mistakes for success.
            const QByteArray reply = m_replies.isEmpty()
                                         ? response(500, "no reply queued", "text/plain")
                                         : m_replies.dequeue();
            if (reply.isEmpty()) {
                m_held = socket;
                return;
            }
            socket->write(reply);
            socket->disconnectFromHost();
        });
    }

    // False while the request is still incomplete.
    static bool parse(const QByteArray& data, HttpRequest& request)
    {
        const int headerEnd = data.indexOf("\r\n\r\n");
        if (headerEnd < 0) return false;
        const QList<QByteArray> lines = data.left(headerEnd).split('\n');
        const QList<QByteArray> requestLine = lines.value(0).trimmed().split(' ');
        request.method = requestLine.value(0);
        request.path = requestLine.value(1);
        for (const QByteArray& line : lines.mid(1))
            if (const int colon = line.indexOf(':'); colon > 0)
                request.headers.insert(line.left(colon).trimmed().toLower(),
                                       line.mid(colon + 1).trimmed());
        request.body =
            data.mid(headerEnd + 4, request.headers.value("content-length").toLongLong());
        return request.body.size() == request.headers.value("content-length").toLongLong();
    }

    static QByteArray response(int status, const QByteArray& body, const QByteArray& type)
    {
        // Qt quotes the reason phrase in the errors it reports.
        static const QMap<int, QByteArray> reasons{
            {200, "OK"}, {400, "Bad Request"}, {401, "Unauthorized"}, {404, "Not Found"}};
        return "HTTP/1.1 " + QByteArray::number(status) + ' ' + reasons.value(status, "Status") +
               "\r\nContent-Type: " + type +
               "\r\nContent-Length: " + QByteArray::number(body.size()) +
               "\r\nConnection: close\r\n\r\n" + body;
    }

    QTcpServer m_server;          // owns the sockets
    QQueue<QByteArray> m_replies; // whole responses; empty: hold
    QList<HttpRequest> m_requests;
    QPointer<QTcpSocket> m_held;
};

// The body of an OpenAI-style answer with `message` as its one choice.
inline QByteArray openAiAnswer(const QJsonObject& message)
{
    const QJsonArray choices{QJsonObject{{"message", message}}};
    return QJsonDocument(QJsonObject{{"choices", choices}}).toJson();
}

inline QByteArray openAiReply(const QString& text)
{
    return openAiAnswer({{"content", text}});
}

// The assistant turn that asks for tools: pairs of name and arguments, an object or its text.
inline QJsonObject openAiToolTurn(const QList<QPair<QString, QJsonValue>>& calls)
{
    QJsonArray list;
    for (const auto& [name, arguments] : calls)
        list.append(
            QJsonObject{{"id", QStringLiteral("call_%1").arg(list.size())},
                        {"type", "function"},
                        {"function", QJsonObject{{"name", name}, {"arguments", arguments}}}});
    return {{"role", "assistant"}, {"content", QJsonValue::Null}, {"tool_calls", list}};
}

inline QByteArray openAiToolReply(const QList<QPair<QString, QJsonValue>>& calls)
{
    return openAiAnswer(openAiToolTurn(calls));
}

} // namespace zelmor::test
