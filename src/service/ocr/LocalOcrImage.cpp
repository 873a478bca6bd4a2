// What both builds share: the language list, the image preparation and the tidying of the text.

#include "LocalOcrEngine.h"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>

namespace zelmor::service::ocr {

namespace {

// Screen text is 10 to 16 pixels high; the engine reads lines of 30 and more pixels best.
constexpr double kScale = 4.0;
// The enlarged grey image, with the engine's own copies, stays within a few hundred MiB.
constexpr double kMaxPixels = 8.0 * 1000 * 1000;
// Text that touches the edge of a crop is read better with a margin.
constexpr int kMargin = 16;
constexpr int kMaxLanguageChars = 64;

int meanGrey(const QImage& grey)
{
    qint64 sum = 0;
    for (int y = 0; y < grey.height(); ++y) {
        const uchar* line = grey.constScanLine(y);
        for (int x = 0; x < grey.width(); ++x)
            sum += line[x];
    }
    return int(sum / std::max<qint64>(1, qint64(grey.width()) * grey.height()));
}

} // namespace

QString LocalOcrEngine::languageList(const QString& model)
{
    QStringList codes;
    for (const QString& part : model.split(QLatin1Char('+'), Qt::SkipEmptyParts)) {
        QString code = part.trimmed();
        code.remove(QRegularExpression(QStringLiteral("[^A-Za-z0-9_]")));
        if (!code.isEmpty() && !codes.contains(code)) codes << code;
    }
    const QString list = codes.join(QLatin1Char('+')).left(kMaxLanguageChars);
    return list.isEmpty() ? QStringLiteral("eng+chi_sim") : list;
}

QSize LocalOcrEngine::preparedSize(const QSize& size)
{
    const double pixels = std::max(1.0, double(size.width()) * size.height());
    const double scale = std::min(kScale, std::sqrt(kMaxPixels / pixels));
    return {std::max(1, int(size.width() * scale)) + 2 * kMargin,
            std::max(1, int(size.height() * scale)) + 2 * kMargin};
}

QImage LocalOcrEngine::prepare(const QImage& image)
{
    if (image.isNull()) return {};
    QImage grey = image.convertToFormat(QImage::Format_Grayscale8);
    if (meanGrey(grey) < 128) grey.invertPixels();
    QImage framed(preparedSize(image.size()), QImage::Format_Grayscale8);
    if (framed.isNull()) return {};
    const QImage scaled = grey.scaled(framed.size() - QSize(2 * kMargin, 2 * kMargin),
                                      Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    framed.fill(255);
    for (int y = 0; y < scaled.height(); ++y)
        std::copy_n(scaled.constScanLine(y), scaled.width(),
                    framed.scanLine(y + kMargin) + kMargin);
    return framed;
}

QString LocalOcrEngine::tidy(QString text)
{
    static const QRegularExpression cjkGap(
        QStringLiteral("(?<=[\\x{3000}-\\x{303F}\\x{4E00}-\\x{9FFF}\\x{FF00}-\\x{FFEF}]) +"
                       "(?=[\\x{3000}-\\x{303F}\\x{4E00}-\\x{9FFF}\\x{FF00}-\\x{FFEF}])"));
    static const QRegularExpression trailingBlanks(QStringLiteral("[ \\t]+(?=\\n|$)"));
    text.remove(cjkGap);
    text.remove(trailingBlanks);
    return text.trimmed();
}

} // namespace zelmor::service::ocr
