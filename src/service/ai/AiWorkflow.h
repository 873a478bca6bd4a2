#pragma once

#include "AnnotationBox.h"

#include <QObject>
#include <QPixmap>
#include <QPointer>

namespace zelmor::service::ocr {
class LocalOcrJob;
}

namespace zelmor::service::ai {

class AiApiService;

// One image job for the active provider: text recognition, translation of the text in an
// image, or detection of interface elements. An object serves one job.
class AiWorkflow : public QObject
{
    Q_OBJECT
public:
    explicit AiWorkflow(QObject* parent = nullptr);

    void ocr(const QPixmap& pixmap);
    void translate(const QPixmap& pixmap, const QString& targetLanguage);
    void annotate(const QPixmap& pixmap);
    // Aborts a recognition or detection job; translation is out of its reach on purpose.
    void cancel();

    // The image as recognition sends it: larger pictures are scaled down to 1920 pixels.
    static QPixmap ocrImage(const QPixmap& pixmap);

Q_SIGNALS:
    void resultReady(const QString& kind, const QString& text);
    void boxesReady(const QList<zelmor::service::ai::AnnotationBox>& boxes);
    void failed(const QString& reason);

private:
    AiApiService* startService();
    void recognizeLocally(const QImage& image, const QString& languages);

    QPointer<AiApiService> m_service;
    QPointer<ocr::LocalOcrJob> m_localJob;
};

} // namespace zelmor::service::ai
