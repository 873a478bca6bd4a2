#pragma once

#include <QByteArray>
#include <QObject>
#include <QThread>

namespace zelmor::service::mcp {

// The blocking read loop; lives on the reader's thread.
class ReaderWorker : public QObject
{
    Q_OBJECT
public:
    explicit ReaderWorker(QObject* parent = nullptr);

signals:
    void dataReady(QByteArray chunk);
    void eof();

public slots:
    // Reads standard input in chunks of up to 8192 bytes until it ends, fails or is
    // interrupted, then emits eof() once.
    void run();
};

// Standard input as a stream of chunks, delivered on the thread that owns the reader.
class StdinReader : public QObject
{
    Q_OBJECT
public:
    explicit StdinReader(QObject* parent = nullptr);
    // Wakes a read still blocked and waits for the thread at most 500 ms.
    ~StdinReader() override;

    // Puts a worker on the reader's thread and starts reading; a second call does nothing.
    void start();

signals:
    void dataReady(QByteArray chunk);
    void eof();
    // The same two, emitted at once on the reading thread, for whoever must hear of them
    // while the owner's thread is busy; receivers connect directly and are thread-safe.
    void dataRead(QByteArray chunk);
    void inputEnded();

private:
    QThread m_thread;
};

} // namespace zelmor::service::mcp
