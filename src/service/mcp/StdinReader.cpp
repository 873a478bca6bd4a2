#include "StdinReader.h"

#include "platform/StandardStreams.h"

namespace zelmor::service::mcp {

namespace {
constexpr std::size_t kChunkSize = 8192;
}

ReaderWorker::ReaderWorker(QObject* parent) : QObject(parent) {}

void ReaderWorker::run()
{
    char buffer[kChunkSize];
    for (;;) {
        const long n = platform::readStandardInput(buffer, sizeof buffer);
        // End of input, a broken pipe and an interruption all end the session alike.
        if (n <= 0) break;
        emit dataReady(QByteArray(buffer, int(n)));
    }
    emit eof();
}

StdinReader::StdinReader(QObject* parent) : QObject(parent) {}

StdinReader::~StdinReader()
{
    if (!m_thread.isRunning()) return;
    platform::interruptStandardInputRead();
    m_thread.quit();
    m_thread.wait(500);
}

void StdinReader::start()
{
    if (m_thread.isRunning() || m_thread.isFinished()) return;
    auto* worker = new ReaderWorker;
    worker->moveToThread(&m_thread);
    // Emitted on the worker's thread, so these reach the reader's thread queued, in order.
    connect(worker, &ReaderWorker::dataReady, this, &StdinReader::dataReady);
    connect(worker, &ReaderWorker::eof, this, &StdinReader::eof);
    connect(worker, &ReaderWorker::dataReady, this, &StdinReader::dataRead, Qt::DirectConnection);
    connect(worker, &ReaderWorker::eof, this, &StdinReader::inputEnded, Qt::DirectConnection);
    connect(&m_thread, &QThread::started, worker, &ReaderWorker::run);
    // The loop has ended by then; the thread has nothing more to do.
    connect(worker, &ReaderWorker::eof, &m_thread, &QThread::quit, Qt::DirectConnection);
    connect(&m_thread, &QThread::finished, worker, &QObject::deleteLater);
    m_thread.start();
}

} // namespace zelmor::service::mcp
