#pragma once

#include <QDateTime>
#include <QMetaType>
#include <QPixmap>
#include <QString>

namespace zelmor::core {

enum CaptureKind : qint32 { Image = 0, Gif = 1, Scroll = 2 };

struct CaptureResult
{
    CaptureKind kind = Image;
    QString filePath; // empty until something saved it
    QPixmap pixmap;   // null: nothing was captured
    int width = 0;
    int height = 0;
    QDateTime capturedAt = QDateTime::currentDateTime();
};

CaptureResult makeCaptureResult(const QPixmap& pixmap);

// History rows name the kind in text: "gif" and "scroll"; anything else is an image.
CaptureKind captureKindFromText(const QString& type);

} // namespace zelmor::core

Q_DECLARE_METATYPE(zelmor::core::CaptureResult)
