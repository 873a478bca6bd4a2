// What both builds share: the language list, the image preparation and the tidying of the text.

#include "LocalOcrEngine.h"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <limits>

namespace zelmor::service::ocr {

namespace {

// Screen text is 10 to 16 pixels high; the engine reads lines of 30 and more pixels best.
// Large pictures are enlarged less, down to twice, to keep the reading time in bounds.
constexpr double kScale = 4.0;
constexpr double kMinScale = 2.0;
// One enlarged band, with the engine's own copies, stays within a few hundred MiB; a taller
// picture, such as a scrolling capture, is read band by band.
constexpr double kMaxPixels = 8.0 * 1000 * 1000;
constexpr int kMaxWidth = 16000;
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

// The row with the least ink between two rows, the later one on a tie: a cut there splits no
// line of text, where a blank row exists.
int quietestRow(const QImage& grey, int from, int to)
{
    int best = to;
    int bestInk = std::numeric_limits<int>::max();
    for (int y = to; y > from; --y) {
        const uchar* line = grey.constScanLine(y);
        const int ink =
            int(std::count_if(line, line + grey.width(), [](uchar v) { return v < 128; }));
        if (ink < bestInk) {
            best = y;
            bestInk = ink;
        }
        if (ink == 0) break;
    }
    return best;
}

// The band enlarged, on a white margin.
QImage framed(const QImage& band, double scale)
{
    const QSize size(std::max(1, int(band.width() * scale)),
                     std::max(1, int(band.height() * scale)));
    QImage out(size + QSize(2 * kMargin, 2 * kMargin), QImage::Format_Grayscale8);
    if (out.isNull()) return {};
    const QImage scaled = band.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    out.fill(255);
    for (int y = 0; y < scaled.height(); ++y)
        std::copy_n(scaled.constScanLine(y), scaled.width(), out.scanLine(y + kMargin) + kMargin);
    return out;
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

double LocalOcrEngine::readingScale(const QSize& size)
{
    const double pixels = std::max(1.0, double(size.width()) * size.height());
    const double scale = std::clamp(std::sqrt(kMaxPixels / pixels), kMinScale, kScale);
    return std::min(scale, double(kMaxWidth) / std::max(1, size.width()));
}

qint64 LocalOcrEngine::preparedPixels(const QSize& size)
{
    const double scale = readingScale(size);
    return qint64(std::min(kMaxPixels, size.width() * scale * size.height() * scale));
}

QList<QImage> LocalOcrEngine::prepareBands(const QImage& image)
{
    if (image.isNull()) return {};
    QImage grey = image.convertToFormat(QImage::Format_Grayscale8);
    if (meanGrey(grey) < 128) grey.invertPixels();
    const double scale = readingScale(grey.size());
    const int bandRows = std::max(1, int(kMaxPixels / (std::max(1, grey.width()) * scale * scale)));
    QList<QImage> bands;
    for (int top = 0; top < grey.height();) {
        const int bottom = top + bandRows >= grey.height()
                               ? grey.height()
                               : quietestRow(grey, top + bandRows * 3 / 4, top + bandRows);
        bands << framed(grey.copy(0, top, grey.width(), bottom - top), scale);
        if (bands.last().isNull()) return {};
        top = bottom;
    }
    return bands;
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
