#pragma once

#include "LocalOcrEngine.h"

#include <QFutureWatcher>
#include <QImage>
#include <QObject>

#include <atomic>
#include <functional>
#include <memory>

namespace zelmor::service::ocr {

// One recognition, or one look at the engine, off the GUI thread. Jobs run one after another
// on a worker of their own, which keeps the engine of the last language list loaded until it
// has been idle for a while.
class LocalOcrJob : public QObject
{
    Q_OBJECT
public:
    explicit LocalOcrJob(QObject* parent = nullptr);
    ~LocalOcrJob() override; // cancels; nothing is reported afterwards

    void recognize(const QImage& image, const QString& languages);
    // The engine's version and loaded languages as `text`, or why it cannot load them.
    void describe(const QString& languages);
    void cancel();

Q_SIGNALS:
    void finished(const zelmor::service::ocr::LocalOcrResult& result);

private:
    void run(std::function<LocalOcrResult()> work);

    std::shared_ptr<std::atomic_bool> m_cancelled;
    QFutureWatcher<LocalOcrResult> m_watcher;
};

} // namespace zelmor::service::ocr
