// Builds without Tesseract, the Windows edition among them.

#include "LocalOcrEngine.h"

namespace zelmor::service::ocr {

struct LocalOcrEngine::State
{};

LocalOcrEngine::LocalOcrEngine(const QString&) {}

LocalOcrEngine::~LocalOcrEngine() = default;

QString LocalOcrEngine::loadError() const
{
    return QStringLiteral("Local text recognition (Tesseract) is not part of this build of "
                          "Zelmor. Choose a provider with a vision model in Settings → AI.");
}

QString LocalOcrEngine::description() const
{
    return loadError();
}

LocalOcrResult LocalOcrEngine::recognize(const QImage&, const std::atomic_bool*)
{
    return {QString(), loadError()};
}

} // namespace zelmor::service::ocr
