#include "LocalOcrJob.h"

#include "LocalOcrLayout.h"
#include "platform/Memory.h"

#include <QCoreApplication>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentRun>

namespace zelmor::service::ocr {

namespace {

// The engine's copies of the enlarged image, per prepared pixel, and its language data; the
// layout's grey, ink and component number per pixel of the picture.
constexpr quint64 kBytesPerPixel = 16;
constexpr quint64 kEngineBytes = 256ull << 20;
constexpr quint64 kLayoutBytesPerPixel = 6;

// One thread: recognitions queue up behind each other and share one loaded engine. The thread
// and its engine end with the application object, after a recognition still running: before
// the program's static objects, among them Tesseract's cache of the engine's language data.
struct OcrWorker : QThreadPool
{
    OcrWorker()
    {
        setMaxThreadCount(1);
        qAddPostRoutine(&endThread);
    }
    static void endThread();
};
Q_GLOBAL_STATIC(OcrWorker, ocrWorker)

void OcrWorker::endThread()
{
    ocrWorker()->waitForDone();
}

LocalOcrEngine& engineFor(const QString& languages)
{
    thread_local std::unique_ptr<LocalOcrEngine> engine;
    thread_local QString loaded;
    const QString list = LocalOcrEngine::languageList(languages);
    if (!engine || loaded != list || !engine->loadError().isEmpty()) {
        engine.reset();
        engine = std::make_unique<LocalOcrEngine>(list);
        loaded = list;
    }
    return *engine;
}

QString memoryShortage(const QImage& image)
{
    const quint64 needed =
        (quint64(LocalOcrLayout::largestBlockPixels(image.size())) * kBytesPerPixel +
         kEngineBytes) *
            LocalOcrEngine::kThreads +
        quint64(image.width()) * quint64(image.height()) * kLayoutBytesPerPixel;
    const quint64 available = platform::availableMemoryBytes();
    if (available == 0 || available >= needed) return QString();
    return QStringLiteral("Not enough free memory to recognise an image of %1x%2 pixels.")
        .arg(image.width())
        .arg(image.height());
}

} // namespace

LocalOcrJob::LocalOcrJob(QObject* parent)
    : QObject(parent), m_cancelled(std::make_shared<std::atomic_bool>(false))
{
    connect(&m_watcher, &QFutureWatcher<LocalOcrResult>::finished, this,
            [this] { Q_EMIT finished(m_watcher.result()); });
}

LocalOcrJob::~LocalOcrJob()
{
    cancel();
}

void LocalOcrJob::recognize(const QImage& image, const QString& languages)
{
    const QString shortage = memoryShortage(image);
    if (!shortage.isEmpty()) {
        run([shortage] { return LocalOcrResult{QString(), shortage}; });
        return;
    }
    run([image, languages, cancelled = m_cancelled] {
        return engineFor(languages).recognize(image, cancelled.get());
    });
}

void LocalOcrJob::describe(const QString& languages)
{
    run([languages] {
        const LocalOcrEngine& engine = engineFor(languages);
        return engine.loadError().isEmpty() ? LocalOcrResult{engine.description(), QString()}
                                            : LocalOcrResult{QString(), engine.loadError()};
    });
}

void LocalOcrJob::cancel()
{
    m_cancelled->store(true);
}

void LocalOcrJob::run(std::function<LocalOcrResult()> work)
{
    m_watcher.setFuture(QtConcurrent::run(static_cast<QThreadPool*>(ocrWorker()), std::move(work)));
}

} // namespace zelmor::service::ocr
