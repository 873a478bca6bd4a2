#pragma once

#include <QObject>

class QLocalServer;

namespace zelmor::app {

// Keeps one Zelmor per user: the first process listens on a local socket in the user's
// private runtime folder, and any connection to it asks that process to come forward.
class SingleInstance : public QObject
{
    Q_OBJECT
public:
    // True when no other instance answered; this process then holds the guard.
    static bool tryAcquire();
    // Asks the running instance to raise itself; true when it could be reached.
    static bool notifyRunningInstance();
    // The socket's full path.
    static QString serverName();

private:
    SingleInstance();
    static SingleInstance& instance();
    void onNewConnection();

    QLocalServer* m_server;
};

} // namespace zelmor::app
