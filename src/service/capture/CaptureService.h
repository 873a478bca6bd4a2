#pragma once

#include "core/CaptureResult.h"

#include <QObject>
#include <QRect>

namespace zelmor::service::capture {

class CaptureService : public QObject
{
    Q_OBJECT
public:
    explicit CaptureService(QObject* parent = nullptr);

    // The whole desktop in physical pixels.
    core::CaptureResult captureFullscreen();
    // A logical rectangle of the desktop; parts outside the screens come out empty.
    core::CaptureResult captureRegion(const QRect& rect);
    // The frozen screens under an overlay.
    QPixmap grabScreens();
};

} // namespace zelmor::service::capture
