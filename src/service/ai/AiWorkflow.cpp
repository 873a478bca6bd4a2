#include "AiWorkflow.h"

#include "AiApiService.h"
#include "AiProviderService.h"
#include "service/ocr/LocalOcrJob.h"

namespace zelmor::service::ai {

AiWorkflow::AiWorkflow(QObject* parent) : QObject(parent)
{
    qRegisterMetaType<AnnotationBox>();
    qRegisterMetaType<QList<AnnotationBox>>();
}

AiApiService* AiWorkflow::startService()
{
    auto* service = new AiApiService(this);
    connect(service, &AiApiService::chatFailed, this, [this, service](const QString& reason) {
        Q_EMIT failed(reason);
        service->deleteLater();
    });
    return service;
}

QPixmap AiWorkflow::ocrImage(const QPixmap& pixmap)
{
    if (pixmap.width() <= 1920 && pixmap.height() <= 1920) return pixmap;
    return pixmap.scaled(1920, 1920, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

void AiWorkflow::ocr(const QPixmap& pixmap)
{
    const AiProvider provider = AiProviderService::instance().active();
    if (isLocalOcr(provider)) {
        recognizeLocally(pixmap.toImage(), provider.model);
        return;
    }
    AiApiService* service = startService();
    m_service = service;
    connect(service, &AiApiService::chatFinished, this, [this, service](const QString& text) {
        Q_EMIT resultReady(QStringLiteral("ocr"), text);
        service->deleteLater();
    });
    ChatRequest request;
    request.systemPrompt = QStringLiteral(
        "You are a high-precision OCR engine. Output only the recognized text, no commentary.");
    request.text = QStringLiteral("Extract text from this image exactly as written.");
    request.image = ocrImage(pixmap);
    service->chat(request);
}

// The picture unscaled: the engine prepares it in its own way.
void AiWorkflow::recognizeLocally(const QImage& image, const QString& languages)
{
    auto* job = new ocr::LocalOcrJob(this);
    m_localJob = job;
    connect(job, &ocr::LocalOcrJob::finished, this, [this, job](const ocr::LocalOcrResult& result) {
        job->deleteLater();
        if (result.error.isEmpty())
            Q_EMIT resultReady(QStringLiteral("ocr"), result.text);
        else
            Q_EMIT failed(result.error);
    });
    job->recognize(image, languages);
}

void AiWorkflow::translate(const QPixmap& pixmap, const QString& targetLanguage)
{
    AiApiService* service = startService(); // not kept: cancel does not reach translations
    connect(service, &AiApiService::chatFinished, this, [this, service](const QString& text) {
        Q_EMIT resultReady(QStringLiteral("translate"), text);
        service->deleteLater();
    });
    ChatRequest request;
    request.systemPrompt = QStringLiteral("You are a translator. Output only the translation.");
    request.text = QStringLiteral("Translate text in this image to %1. Preserve formatting.")
                       .arg(targetLanguage);
    request.image = pixmap;
    service->chat(request);
}

void AiWorkflow::annotate(const QPixmap& pixmap)
{
    AiApiService* service = startService();
    m_service = service;
    const QSize size = pixmap.size();
    connect(service, &AiApiService::chatFinished, this, [this, service, size](const QString& text) {
        const AnnotationParse parse = parseAnnotationBoxes(text, size);
        if (parse.error.isEmpty()) {
            Q_EMIT boxesReady(parse.boxes);
        } else {
            Q_EMIT failed(parse.error);
        }
        service->deleteLater();
    });
    ChatRequest request;
    request.systemPrompt = QStringLiteral("You are a UI element detector. Output ONLY a JSON "
                                          "array, no prose, no markdown fences. Each element: "
                                          "{\"box\":[x,y,w,h],\"label\":\"button|input|link|icon|"
                                          "text|image|menu|dialog|...\"}. Coordinates are "
                                          "pixel offsets from the top-left of the image.");
    request.text =
        QStringLiteral("Annotate every visible UI element in this image. Image size %1x%2.")
            .arg(pixmap.width())
            .arg(pixmap.height());
    request.image = pixmap; // unscaled, so that the boxes fit the picture they are drawn on
    request.maxTokens = 2048;
    service->chat(request);
}

void AiWorkflow::cancel()
{
    if (m_service) m_service->cancel();
    if (m_localJob) m_localJob->cancel();
}

} // namespace zelmor::service::ai
