#pragma once

#include <QObject>

class QLocalServer;
class QLocalSocket;

namespace zelmor::app {

// Keeps one Zelmor per user: the first process listens on a local socket in the user's
// private runtime folder; a connection asks that process to come forward, to perform a hotkey's
// action, or to quit.
class SingleInstance : public QObject
{
    Q_OBJECT
public:
    // True when no other instance answered; this process then holds the guard.
    static bool tryAcquire();
    enum class Request { Raise, Quit, Run };
    // Passes the request to the running instance; true when it could be reached. Run names the
    // hotkey action by its setting's name ("region"). A quit waits until that instance has
    // ended, for at most ten seconds.
    static bool notifyRunningInstance(Request request, const char* action = nullptr);
    // The socket's full path.
    static QString serverName();

private:
    SingleInstance();
    static SingleInstance& instance();
    void onNewConnection();
    void serve(QLocalSocket* socket);

    QLocalServer* m_server;
};

} // namespace zelmor::app
