#include "SingleInstance.h"

#include "core/EventBus.h"
#include "core/HotkeyActions.h"
#include "core/Log.h"

#include <QCoreApplication>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>

namespace zelmor::app {

QString SingleInstance::serverName()
{
    const QString name = QCoreApplication::organizationName() + QLatin1Char('-') +
                         QCoreApplication::applicationName();
    // Qt hands out the runtime folder only when it is owned by this user and private, so
    // nobody else can plant or reach the socket; a shared folder like /tmp is never used.
    QString dir = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (dir.isEmpty()) dir = core::dataDirectory();
    return dir + QLatin1Char('/') + name;
}

bool SingleInstance::tryAcquire()
{
    QLocalSocket probe;
    probe.connectToServer(serverName(), QIODevice::ReadWrite);
    if (probe.waitForConnected(200)) return false;
    instance();
    return true;
}

bool SingleInstance::notifyRunningInstance(Request request, const char* action)
{
    QLocalSocket socket;
    socket.connectToServer(serverName(), QIODevice::ReadWrite);
    if (!socket.waitForConnected(500)) return false;
    const bool quit = request == Request::Quit;
    if (request == Request::Run)
        socket.write(QByteArray("run ") + action + '\n');
    else
        socket.write(quit ? "quit\n" : "raise\n");
    socket.flush();
    socket.waitForBytesWritten(500);
    // The running instance holds the connection until it ends.
    if (quit && socket.state() == QLocalSocket::ConnectedState) socket.waitForDisconnected(10000);
    return true;
}

SingleInstance& SingleInstance::instance()
{
    static SingleInstance guard;
    return guard;
}

SingleInstance::SingleInstance() : m_server(new QLocalServer(this))
{
    const QString name = serverName();
    QLocalServer::removeServer(name); // a stale socket of a crashed instance
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!m_server->listen(name))
        core::writeLogLine(QStringLiteral("[instance] cannot listen on ") + name +
                           QStringLiteral(": ") + m_server->errorString());
    connect(m_server, &QLocalServer::newConnection, this, &SingleInstance::onNewConnection);
}

// Requests are single lines; a connection that ends without one, as tryAcquire's probe,
// asks nothing. Several connections may be waiting behind one signal.
void SingleInstance::onNewConnection()
{
    while (QLocalSocket* socket = m_server->nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] { serve(socket); });
        serve(socket);
    }
}

void SingleInstance::serve(QLocalSocket* socket)
{
    constexpr qint64 kLongestRequest = 64;
    if (!socket->canReadLine()) {
        if (socket->bytesAvailable() > kLongestRequest) socket->abort();
        return;
    }
    const QByteArray request = socket->readLine(kLongestRequest).trimmed();
    socket->disconnect(this); // one request a connection
    if (request == "quit") {
        // Left open, so the asking process sees this one end.
        core::writeLogLine(QStringLiteral("[instance] quitting, as another start asked"));
        Q_EMIT core::EventBus::instance().emitted(QStringLiteral("singleInstanceQuitRequested"),
                                                  {});
        return;
    }
    socket->disconnectFromServer();
    if (request.startsWith("run ")) {
        // Only the table's names get through, whatever another program wrote.
        const core::HotkeyAction* action = core::hotkeyActionNamed(request.mid(4).constData());
        if (!action) {
            core::writeLogLine(QStringLiteral("[instance] unknown request ignored: ") +
                               QString::fromUtf8(request));
            return;
        }
        Q_EMIT core::EventBus::instance().emitted(QStringLiteral("singleInstanceActionRequested"),
                                                  {{QStringLiteral("id"), action->id}});
        return;
    }
    Q_EMIT core::EventBus::instance().emitted(QStringLiteral("singleInstanceRaiseRequested"), {});
}

} // namespace zelmor::app
