// Finding the lines of text in a screenshot and preparing each for the engine.

#include "LocalOcrLayout.h"

#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>

namespace zelmor::service::ocr {

namespace {

// Grey levels this much darker than the background are ink.
constexpr int kInkContrast = 48;
// The engine reads letters best when their median height, between the x-height and the
// capital height, is about this many pixels; smaller text is enlarged, up to four times. Where
// the letters are pieces, as in Chinese, the height of the line tells their size.
constexpr double kTargetHeight = 28;
constexpr double kLineShare = 0.7;
constexpr double kMaxScale = 4;
constexpr double kMaxSharpScale = 2;
// One prepared block, with the engine's own copies, stays within a few tens of MiB.
constexpr double kMaxPixels = 4.0 * 1000 * 1000;
// Text that touches the edge of a crop is read better with a margin.
constexpr int kMargin = 12;
// Lines and box borders are at most this thick.
constexpr int kRuleThickness = 3;
// Icons are at least this tall; the colours of their pixels span at least this many levels.
constexpr int kMinIconHeight = 12;
constexpr int kColourful = 24;
constexpr double kOneHueShare = 0.5;
// A ring has none of its pixels within this share of its size from its centre.
constexpr double kRingHole = 0.25;
constexpr double kRoundness = 1.15;
// Narrow shapes this many letter heights tall are bars.
constexpr double kBarHeight = 2.5;
// Shades this much darker than the background belong to a picture's outline; a picture is
// shaded, with less than this share of ink; a shape filling this share of its bounds is a
// panel or a button's face.
constexpr int kShadeContrast = 8;
constexpr double kShadedInkShare = 0.25;
constexpr double kFilledShare = 0.85;
// Shapes that thin within their bounds are outlines, such as a button's frame, not letters.
constexpr double kOutlineShare = 0.15;
// The dots of a colon in a bitmap font are at most this far apart.
constexpr int kColonGap = 6;
// Blank columns this many letter heights wide part columns of text.
constexpr double kColumnGap = 2.5;
// Square characters, as Chinese, at least this many one under another are vertical text.
constexpr int kMinStacked = 3;
constexpr double kSquareness = 1.25;
constexpr int kMinCharacterHeight = 8;

int backgroundGrey(const QImage& grey)
{
    std::array<qint64, 256> histogram{};
    for (int y = 0; y < grey.height(); ++y) {
        const uchar* line = grey.constScanLine(y);
        for (int x = 0; x < grey.width(); ++x)
            ++histogram[line[x]];
    }
    return int(std::max_element(histogram.begin(), histogram.end()) - histogram.begin());
}

// The grey around `rect`, where a line's background shows even when its letters fill it; the
// grey within where nothing is around.
int surroundingGrey(const QImage& grey, const QRect& rect)
{
    std::array<qint64, 256> histogram{};
    const QRect frame = rect.adjusted(-1, -1, 1, 1);
    for (int y = std::max(0, frame.top()); y <= std::min(grey.height() - 1, frame.bottom()); ++y)
        for (int x = std::max(0, frame.left()); x <= std::min(grey.width() - 1, frame.right()); ++x)
            if (!rect.contains(x, y)) ++histogram[grey.constScanLine(y)[x]];
    if (*std::max_element(histogram.begin(), histogram.end()) == 0)
        return backgroundGrey(grey.copy(rect));
    return int(std::max_element(histogram.begin(), histogram.end()) - histogram.begin());
}

// Where `ink` has blank runs of at least `gap` between `from` and `to`, the spans between them.
QList<std::pair<int, int>> spans(const QList<int>& ink, int gap)
{
    QList<std::pair<int, int>> result;
    int start = -1, blank = 0;
    for (int i = 0; i < ink.size(); ++i) {
        if (ink[i] > 0) {
            if (start < 0 || blank >= gap) {
                if (start >= 0) result.append({start, i - blank});
                start = i;
            }
            blank = 0;
        } else {
            ++blank;
        }
    }
    if (start >= 0) result.append({start, int(ink.size()) - blank});
    return result;
}

// A 3x3 blur weighting the middle row and column `centre` times as much as the corners.
QImage blurred(const QImage& grey, int centre)
{
    QImage out = grey;
    const int w = grey.width(), h = grey.height();
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            int sum = 0, weight = 0;
            for (int dy = -1; dy <= 1; ++dy)
                for (int dx = -1; dx <= 1; ++dx) {
                    const int k = (dx ? 1 : centre) * (dy ? 1 : centre);
                    sum += k * grey.constScanLine(
                                   std::clamp(y + dy, 0, h - 1))[std::clamp(x + dx, 0, w - 1)];
                    weight += k;
                }
            out.scanLine(y)[x] = uchar(sum / weight);
        }
    return out;
}

// A bitmap font enlarged by whole pixels and then rounded off, which the engine reads better
// than the same enlarged smoothly.
QImage enlargedSharp(const QImage& grey, const QSize& size, OcrBlock::Softness softness)
{
    const int whole = std::max(1, std::min(size.width() / std::max(1, grey.width()),
                                           size.height() / std::max(1, grey.height())));
    QImage out = grey.scaled(grey.size() * whole, Qt::IgnoreAspectRatio, Qt::FastTransformation);
    if (softness == OcrBlock::Softness::Light)
        out = blurred(out, 2);
    else
        out = blurred(blurred(out, 1), 1);
    return out.size() == size ? out
                              : out.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

bool isSquareCharacter(const QRect& r)
{
    return r.height() >= kMinCharacterHeight && r.width() * kSquareness >= r.height() &&
           r.width() <= kSquareness * r.height();
}

// Whether `below` is the next character of a column whose last one is `above`.
bool continuesColumn(const QRect& above, const QRect& below)
{
    return isSquareCharacter(above) && isSquareCharacter(below) && below.top() > above.bottom() &&
           below.top() - above.bottom() <= above.height() &&
           std::abs(below.center().x() - above.center().x()) <= above.width() / 2;
}

} // namespace

LocalOcrLayout::LocalOcrLayout(const QImage& image)
    : m_grey(image.convertToFormat(QImage::Format_Grayscale8))
{
    if (m_grey.isNull()) return;
    const int background = backgroundGrey(m_grey);
    if (background < 128) m_grey.invertPixels();
    const int light = std::max(background, 255 - background);
    const int threshold = light - kInkContrast;
    m_ink = QImage(m_grey.size(), QImage::Format_Grayscale8);
    for (int y = 0; y < m_grey.height(); ++y) {
        const uchar* grey = m_grey.constScanLine(y);
        uchar* ink = m_ink.scanLine(y);
        for (int x = 0; x < m_grey.width(); ++x)
            ink[x] = grey[x] < threshold ? 1 : 0;
    }
    eraseShadedIcons(light);
    findComponents(image.convertToFormat(QImage::Format_RGB32));
    int darkest = light;
    for (const Component& c : m_components)
        darkest = std::min(darkest, c.darkest);
    m_faint = (light + darkest) / 2;
    eraseNonText();
    squareDots();
    QList<QRect> lines;
    cut(m_grey.rect(), lines);
    groupLines(lines);
}

// The connected shapes of ink, eight-connected, with how many of their pixels are coloured.
void LocalOcrLayout::findComponents(const QImage& colour)
{
    const auto isInk = [this](int x, int y) { return m_ink.constScanLine(y)[x] != 0; };
    label(isInk, [&](int label, int x, int y) {
        if (label == m_components.size()) m_components.append({QRect(x, y, 1, 1), 0, 0, 255});
        Component& component = m_components[label];
        ++component.pixels;
        component.rect |= QRect(x, y, 1, 1);
        component.darkest = std::min<int>(component.darkest, m_grey.constScanLine(y)[x]);
        const QRgb rgb = reinterpret_cast<const QRgb*>(colour.constScanLine(y))[x];
        const int r = qRed(rgb), g = qGreen(rgb), b = qBlue(rgb);
        if (std::max({r, g, b}) - std::min({r, g, b}) < kColourful) return;
        ++component.coloured;
        const double hueX = r - (g + b) / 2.0, hueY = (g - b) * std::sqrt(3.0) / 2;
        component.hueX += hueX;
        component.hueY += hueY;
        component.chroma += std::hypot(hueX, hueY);
    });
}

// Shaded pictures, such as a glass light bulb, whose outline is too faint to be ink but whose
// darker parts the engine reads as letters. Taken at a low contrast, a picture is one shape
// with little ink in it; a word is mostly ink, and a button's face fills its bounds.
void LocalOcrLayout::eraseShadedIcons(int light)
{
    struct Shape
    {
        QRect rect;
        int pixels = 0;
        int ink = 0;
    };
    QList<Shape> shapes;
    const int threshold = light - kShadeContrast;
    const auto isShade = [&](int x, int y) { return m_grey.constScanLine(y)[x] < threshold; };
    label(isShade, [&](int label, int x, int y) {
        if (label == shapes.size()) shapes.append({QRect(x, y, 1, 1)});
        Shape& shape = shapes[label];
        ++shape.pixels;
        shape.ink += m_ink.constScanLine(y)[x];
        shape.rect |= QRect(x, y, 1, 1);
    });
    for (const Shape& shape : std::as_const(shapes)) {
        const QRect& r = shape.rect;
        if (r.height() < kMinIconHeight || r.width() < r.height() / 2 ||
            r.width() > 2 * r.height() || shape.pixels >= kFilledShare * r.width() * r.height() ||
            shape.ink >= kShadedInkShare * shape.pixels)
            continue;
        for (int y = r.top(); y <= r.bottom(); ++y) {
            std::fill_n(m_grey.scanLine(y) + r.left(), r.width(), uchar(255));
            std::fill_n(m_ink.scanLine(y) + r.left(), r.width(), uchar(0));
        }
    }
}

template <typename Inside, typename Visit> void LocalOcrLayout::label(Inside inside, Visit visit)
{
    const int w = m_ink.width(), h = m_ink.height();
    m_labels.assign(size_t(w) * h, -1);
    QList<QPoint> stack;
    int count = 0;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            if (m_labels[size_t(y) * w + x] >= 0 || !inside(x, y)) continue;
            const int label = count++;
            stack = {QPoint(x, y)};
            m_labels[size_t(y) * w + x] = label;
            while (!stack.isEmpty()) {
                const QPoint p = stack.takeLast();
                visit(label, p.x(), p.y());
                for (int dy = -1; dy <= 1; ++dy)
                    for (int dx = -1; dx <= 1; ++dx) {
                        const int nx = p.x() + dx, ny = p.y() + dy;
                        if (nx < 0 || ny < 0 || nx >= w || ny >= h) continue;
                        int& n = m_labels[size_t(ny) * w + nx];
                        if (n >= 0 || !inside(nx, ny)) continue;
                        n = label;
                        stack.append(QPoint(nx, ny));
                    }
            }
        }
}

// The median height of the letter-like shapes centred in `within`: between the x-height and
// the capital height of its text.
int LocalOcrLayout::typicalHeight(const QRect& within, const Component* except) const
{
    // Strokes as thin as a button's side count only where there is nothing else, as in "ll".
    QList<int> heights, strokes;
    for (const Component& c : m_components) {
        const QRect& r = c.rect;
        const bool outline = r.width() >= kMinIconHeight && r.height() >= kMinIconHeight &&
                             c.pixels < kOutlineShare * r.width() * r.height();
        if (&c != except && r.height() >= 4 && r.width() <= 3 * r.height() + 2 && !outline &&
            within.contains(r.center()))
            (r.width() <= 2 ? strokes : heights).append(r.height());
    }
    if (heights.isEmpty()) heights = strokes;
    if (heights.isEmpty()) return std::max(1, within.height());
    std::nth_element(heights.begin(), heights.begin() + heights.size() / 2, heights.end());
    return heights[heights.size() / 2];
}

// Ruling lines, box borders, icons and block cursors, which the engine reads as "|", "_", stray
// letters or a lost line. Each is judged by the text around it.
LocalOcrLayout::Verdict LocalOcrLayout::judge(int label) const
{
    const Component& c = m_components[label];
    const QRect& r = c.rect;
    const bool thin = r.width() <= kRuleThickness || r.height() <= kRuleThickness;
    const bool large =
        r.height() >= kMinIconHeight && r.width() >= r.height() / 2 && r.width() <= 2 * r.height();
    const bool solid = c.pixels >= 0.9 * r.width() * r.height();
    const bool hollow = r.width() >= kMinIconHeight && r.height() >= kMinIconHeight &&
                        c.pixels <= 2 * kRuleThickness * (r.width() + r.height()) &&
                        c.pixels < 0.35 * r.width() * r.height();
    const bool faint = c.darkest > m_faint; // shading, such as a glass icon's
    const bool tall = r.height() >= kMinIconHeight && r.height() > 2 * r.width();
    if (!thin && !large && !solid && !hollow && !faint && !tall) return Verdict::Text;
    const int margin = std::max(r.height(), kMinIconHeight);
    const int text = typicalHeight(r.adjusted(-margin, -margin, margin, margin), &c);
    // A scroll bar, stippled or not, is far taller than any letter.
    const bool rule = (r.height() <= kRuleThickness && r.width() >= 3 * text) ||
                      (r.width() <= 2 && r.height() >= 1.5 * text) ||
                      (tall && r.height() >= kBarHeight * text);
    const bool frame = hollow && r.width() >= 2 * text && r.height() >= 1.5 * text;
    // Coloured in one hue, or a ring around a symbol, as the information sign. Letters drawn
    // with coloured edges, for screens' subpixels, have hues all around.
    const bool oneHue =
        c.coloured * 3 >= c.pixels && std::hypot(c.hueX, c.hueY) >= kOneHueShare * c.chroma;
    const bool icon = large && r.height() >= 1.1 * text &&
                      (oneHue || (hollow && r.height() <= 4 * text && isRing(label)));
    const bool cursor = solid && r.height() >= 0.8 * text && r.height() <= 2.5 * text &&
                        r.width() >= 0.4 * r.height() && r.width() <= 1.2 * r.height();
    if (icon) return Verdict::Icon;
    return rule || frame || cursor || faint ? Verdict::Line : Verdict::Text;
}

// A ring is round and leaves the middle of its bounds empty; a sparse Chinese character, as
// "文", crosses it, and a rounded button, as "(OK)", is wider than tall.
bool LocalOcrLayout::isRing(int label) const
{
    const QRect& r = m_components[label].rect;
    if (std::max(r.width(), r.height()) > kRoundness * std::min(r.width(), r.height()))
        return false;
    const double cx = r.left() + (r.width() - 1) / 2.0, cy = r.top() + (r.height() - 1) / 2.0;
    for (int y = r.top(); y <= r.bottom(); ++y)
        for (int x = r.left(); x <= r.right(); ++x) {
            const double dx = (x - cx) / r.width(), dy = (y - cy) / r.height();
            if (m_labels[size_t(y) * m_grey.width() + x] == label &&
                dx * dx + dy * dy < kRingHole * kRingHole)
                return false;
        }
    return true;
}

void LocalOcrLayout::eraseNonText()
{
    const int w = m_grey.width();
    QList<std::pair<int, bool>> erased; // with all ink within its bounds, as an icon's
    for (int label = 0; label < m_components.size(); ++label) {
        const Verdict verdict = judge(label);
        if (verdict != Verdict::Text) erased.append({label, verdict == Verdict::Icon});
    }
    for (const auto& [label, whole] : erased) {
        const QRect& r = m_components[label].rect;
        for (int y = r.top(); y <= r.bottom(); ++y) {
            uchar* grey = m_grey.scanLine(y);
            uchar* ink = m_ink.scanLine(y);
            for (int x = r.left(); x <= r.right(); ++x)
                if (whole || m_labels[size_t(y) * w + x] == label) {
                    grey[x] = 255;
                    ink[x] = 0;
                }
        }
    }
}

// Some bitmap fonts draw the full stop as a small cross, three or four pixels wide, that
// reaches below the baseline, which the engine reads as a comma once enlarged; a square on the
// baseline it reads as a full stop.
void LocalOcrLayout::squareDots()
{
    const auto ink = [this](int px, int py) { return m_ink.constScanLine(py)[px] != 0; };
    for (const Component& c : std::as_const(m_components)) {
        const QRect& r = c.rect;
        const int x = r.left(), y = r.top(), w = r.width();
        if ((w != 3 && w != 4) || r.height() != 3 || c.pixels != 3 * w - 4) continue;
        bool cross = true; // all but the corners
        for (int dy = 0; dy < 3; ++dy)
            for (int dx = 0; dx < w; ++dx)
                cross &= ink(x + dx, y + dy) != ((dx == 0 || dx == w - 1) && dy != 1);
        if (!cross) continue;
        bool colon = false; // a dot of a colon or semicolon
        for (int py = std::max(0, y - kColonGap);
             py < std::min(m_ink.height(), y + 3 + kColonGap) && !colon; ++py)
            for (int dx = 0; dx < w && !colon; ++dx)
                colon = (py < y || py > y + 2) && ink(x + dx, py);
        if (colon) continue;
        for (int dx = 0; dx < w; ++dx) {
            m_grey.scanLine(y)[x + dx] = m_grey.scanLine(y + 1)[x + dx] = uchar(c.darkest);
            m_grey.scanLine(y + 2)[x + dx] = 255;
            m_ink.scanLine(y)[x + dx] = m_ink.scanLine(y + 1)[x + dx] = 1;
            m_ink.scanLine(y + 2)[x + dx] = 0;
        }
    }
}

// Lines at least `height` tall, so that the dot of an "i" is not a line of its own.
int LocalOcrLayout::lineCount(const QRect& rect, int height) const
{
    QList<int> rows(rect.height());
    for (int y = rect.top(); y <= rect.bottom(); ++y) {
        const uchar* ink = m_ink.constScanLine(y);
        rows[y - rect.top()] = int(std::count(ink + rect.left(), ink + rect.right() + 1, 1));
    }
    const QList<std::pair<int, int>> lines = spans(rows, 1);
    return int(std::count_if(lines.begin(), lines.end(), [height](const std::pair<int, int>& line) {
        return line.second - line.first >= height;
    }));
}

// Cuts at blank rows into lines, and lines at wide blank columns into pieces, recursively.
void LocalOcrLayout::cut(const QRect& rect, QList<QRect>& lines) const
{
    QList<int> rows(rect.height()), columns(rect.width());
    for (int y = rect.top(); y <= rect.bottom(); ++y) {
        const uchar* ink = m_ink.constScanLine(y);
        for (int x = rect.left(); x <= rect.right(); ++x)
            if (ink[x]) {
                ++rows[y - rect.top()];
                ++columns[x - rect.left()];
            }
    }
    const QList<std::pair<int, int>> bands = spans(rows, 1);
    if (bands.size() > 1) {
        for (const auto& [top, bottom] : bands)
            cut(QRect(rect.left(), rect.top() + top, rect.width(), bottom - top), lines);
        return;
    }
    if (bands.isEmpty()) return;
    const QRect band(rect.left(), rect.top() + bands[0].first, rect.width(),
                     bands[0].second - bands[0].first);
    // Wide gaps part columns; narrow ones, as between an icon and the lines beside it, only
    // where a piece holds several lines: words of one line are read better together.
    const int height = typicalHeight(band);
    QList<std::pair<int, int>> pieces = spans(columns, std::max(6, int(kColumnGap * height)));
    if (pieces.size() == 1) {
        const QList<std::pair<int, int>> narrow = spans(columns, std::max(4, height));
        if (std::any_of(narrow.begin(), narrow.end(), [&](const std::pair<int, int>& piece) {
                return lineCount(QRect(rect.left() + piece.first, band.top(),
                                       piece.second - piece.first, band.height()),
                                 height) > 1;
            }))
            pieces = narrow;
    }
    if (pieces.size() > 1) {
        for (const auto& [left, right] : pieces)
            cut(QRect(rect.left() + left, band.top(), right - left, band.height()), lines);
        return;
    }
    lines.append(QRect(rect.left() + pieces[0].first, band.top(),
                       pieces[0].second - pieces[0].first, band.height()));
}

void LocalOcrLayout::groupLines(const QList<QRect>& lines)
{
    for (int i = 0; i < lines.size(); ++i) {
        // Characters one under another, read each alone, come out as other characters.
        OcrBlock block;
        int last = i;
        while (last + 1 < lines.size() && continuesColumn(lines[last], lines[last + 1]))
            ++last;
        if (last + 1 - i >= kMinStacked)
            block.stacked = lines.mid(i, last + 1 - i);
        else
            last = i;
        QRect line = lines[i];
        int height = line.height();
        for (const QRect& character : std::as_const(block.stacked)) {
            line |= character;
            height = std::max(height, character.height());
        }
        i = last;
        block.rect = line;
        block.sharp = isSharp(line);
        const double estimate =
            block.stacked.isEmpty()
                ? std::max<double>(typicalHeight(line), kLineShare * line.height())
                : kLineShare * height;
        const double scale = std::clamp(kTargetHeight / estimate, 1.0, kMaxScale);
        // Bitmap fonts are enlarged less, by whole pixels: more makes their dots commas.
        block.scale = block.sharp ? std::clamp(std::round(scale), 1.0, kMaxSharpScale) : scale;
        const double pixels = double(line.width()) * line.height() * block.scale * block.scale;
        if (pixels > kMaxPixels) block.scale *= std::sqrt(kMaxPixels / pixels);
        block.joinsPrevious = !m_blocks.isEmpty() &&
                              m_blocks.last().rect.bottom() >= line.center().y() &&
                              m_blocks.last().rect.top() <= line.center().y();
        m_blocks.append(block);
    }
}

// Bitmap fonts have next to no grey between the background and the ink.
bool LocalOcrLayout::isSharp(const QRect& rect) const
{
    int ink = 0, between = 0;
    for (int y = rect.top(); y <= rect.bottom(); ++y) {
        const uchar* grey = m_grey.constScanLine(y);
        for (int x = rect.left(); x <= rect.right(); ++x) {
            ink += grey[x] < 128;
            between += grey[x] >= 64 && grey[x] < 192;
        }
    }
    return between * 10 < ink;
}

qint64 LocalOcrLayout::largestBlockPixels(const QSize& size)
{
    return qint64(
        std::min(kMaxPixels, double(size.width()) * size.height() * kMaxScale * kMaxScale));
}

// The characters of a column in a row, a quarter of their height apart, on their background.
QImage LocalOcrLayout::sideBySide(const QList<QRect>& characters) const
{
    int width = 0, height = 0;
    for (const QRect& character : characters) {
        width += character.width();
        height = std::max(height, character.height());
    }
    const int gap = height / 4;
    QImage row(width + gap * int(characters.size() - 1), height, QImage::Format_Grayscale8);
    row.fill(surroundingGrey(m_grey, characters.first()));
    QPainter painter(&row);
    int x = 0;
    for (const QRect& character : characters) {
        painter.drawImage(x, (height - character.height()) / 2, m_grey.copy(character));
        x += character.width() + gap;
    }
    return row;
}

QImage LocalOcrLayout::prepared(const OcrBlock& block) const
{
    QImage grey = block.stacked.isEmpty() ? m_grey.copy(block.rect) : sideBySide(block.stacked);
    if (surroundingGrey(m_grey, block.rect) < 128) grey.invertPixels();
    const QSize size(std::max(1, int(std::lround(grey.width() * block.scale))),
                     std::max(1, int(std::lround(grey.height() * block.scale))));
    QImage out(size + QSize(2 * kMargin, 2 * kMargin), QImage::Format_Grayscale8);
    if (out.isNull()) return {};
    out.fill(255);
    const QImage scaled = block.sharp
                              ? enlargedSharp(grey, size, block.softness)
                              : grey.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    for (int y = 0; y < scaled.height(); ++y)
        std::copy_n(scaled.constScanLine(y), scaled.width(), out.scanLine(y + kMargin) + kMargin);
    return out;
}

} // namespace zelmor::service::ocr
