#pragma once

// A small HTTP/1.1 server on 127.0.0.1 standing in for an AI provider: it records every
// request and answers each with the next queued reply, so a suite sees exactly what went
// over the wire and controls what comes back. Requests need a Content-Length body (Qt's
// network layer always sends one); every answer closes its connection.

#include <QByteArray>
#include <QHostAddress>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QList>
#include <QMap>
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

struct HttpReply
{
    int status = 200;
    QByteArray body;
    QByteArray contentType = "application/json";
    bool hold = false; // never answered: the client has to give up or cancel
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
        m_replies.enqueue(HttpReply{status, body, contentType, false});
    }
    void enqueueHold() { m_replies.enqueue(HttpReply{200, {}, {}, true}); }

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
            const HttpReply reply = m_replies.isEmpty()
                                        ? HttpReply{500, "no reply queued", "text/plain", false}
                                        : m_replies.dequeue();
            if (reply.hold) return;
            socket->write(response(reply));
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
        for (qsizetype i = 1; i < lines.size(); ++i) {
            const int colon = lines[i].indexOf(':');
            if (colon > 0)
                request.headers.insert(lines[i].left(colon).trimmed().toLower(),
                                       lines[i].mid(colon + 1).trimmed());
        }
        const qsizetype length = request.headers.value("content-length").toLongLong();
        if (data.size() < headerEnd + 4 + length) return false;
        request.body = data.mid(headerEnd + 4, length);
        return true;
    }

    static QByteArray response(const HttpReply& reply)
    {
        // Qt quotes the reason phrase in the errors it reports.
        static const QMap<int, QByteArray> reasons{
            {200, "OK"}, {400, "Bad Request"}, {401, "Unauthorized"}, {404, "Not Found"}};
        return "HTTP/1.1 " + QByteArray::number(reply.status) + ' ' +
               reasons.value(reply.status, "Status") + "\r\nContent-Type: " + reply.contentType +
               "\r\nContent-Length: " + QByteArray::number(reply.body.size()) +
               "\r\nConnection: close\r\n\r\n" + reply.body;
    }

    QTcpServer m_server; // owns the sockets
    QQueue<HttpReply> m_replies;
    QList<HttpRequest> m_requests;
};

// The body of an OpenAI-style chat answer holding `text`.
inline QByteArray openAiReply(const QString& text)
{
    const QJsonObject message{{QStringLiteral("content"), text}};
    const QJsonArray choices{QJsonObject{{QStringLiteral("message"), message}}};
    return QJsonDocument(QJsonObject{{QStringLiteral("choices"), choices}}).toJson();
}

} // namespace zelmor::test
