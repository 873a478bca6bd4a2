#include "ModelImage.h"

#include "core/Utilities.h"

#include <algorithm>
#include <cmath>

namespace zelmor::service::mcp {

namespace {

// Models see no more detail past this, and spend more tokens on it.
constexpr int kLongestSide = 1568;
// Base64 adds a third: the line stays near half of the 10 MiB that clients accept.
constexpr qsizetype kMaxPngBytes = 4 * 1024 * 1024;
constexpr int kMaxAttempts = 5;

QImage scaledBy(const QImage& image, double scale)
{
    if (scale >= 1) return image;
    const QSize size(std::max(1, int(std::lround(image.width() * scale))),
                     std::max(1, int(std::lround(image.height() * scale))));
    return image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

} // namespace

McpModelImage makeModelImage(const QImage& source)
{
    if (source.isNull()) return {};
    // Screenshots are opaque; three bytes a pixel encode faster and smaller than four.
    const QImage image =
        source.hasAlphaChannel() ? source : source.convertToFormat(QImage::Format_RGB888);
    double scale = std::min(1.0, double(kLongestSide) / std::max(image.width(), image.height()));
    for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
        const QImage scaled = scaledBy(image, scale);
        QByteArray png = core::imageToPng(scaled);
        if (png.isEmpty()) break;
        if (png.size() <= kMaxPngBytes) return {png, std::round(scale * 1e6) / 1e6, scaled.size()};
        // Noise compresses worst: shrink the area by what the bytes overshot, and a margin.
        scale *= 0.9 * std::sqrt(double(kMaxPngBytes) / double(png.size()));
    }
    return {};
}

} // namespace zelmor::service::mcp
