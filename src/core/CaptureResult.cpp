#include "CaptureResult.h"

namespace zelmor::core {

CaptureResult makeCaptureResult(const QPixmap& pixmap)
{
    CaptureResult result;
    result.pixmap = pixmap;
    result.width = pixmap.width();
    result.height = pixmap.height();
    return result;
}

CaptureKind captureKindFromText(const QString& type)
{
    if (type == QLatin1String("gif")) return Gif;
    if (type == QLatin1String("scroll")) return Scroll;
    return Image;
}

} // namespace zelmor::core
