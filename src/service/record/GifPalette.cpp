#include "GifPalette.h"

#include <algorithm>
#include <climits>
#include <cstdlib>

namespace zelmor::service::record {

namespace {

struct ColorEntry
{
    quint32 rgb = 0;
    qint32 count = 0;
};

struct ColorBox
{
    int rMin = 255, rMax = 0, gMin = 255, gMax = 0, bMin = 255, bMax = 0;
    qint64 pixels = 0;
    QList<ColorEntry> colors;
};

int channelOf(quint32 rgb, int channel)
{
    return int(rgb >> (16 - 8 * channel)) & 0xFF;
}

ColorBox makeBox(QList<ColorEntry> colors)
{
    ColorBox box;
    box.colors = std::move(colors);
    for (const ColorEntry& c : std::as_const(box.colors)) {
        const int r = qRed(c.rgb), g = qGreen(c.rgb), b = qBlue(c.rgb);
        box.rMin = std::min(box.rMin, r);
        box.rMax = std::max(box.rMax, r);
        box.gMin = std::min(box.gMin, g);
        box.gMax = std::max(box.gMax, g);
        box.bMin = std::min(box.bMin, b);
        box.bMax = std::max(box.bMax, b);
        box.pixels += c.count;
    }
    return box;
}

// 0 red, 1 green, 2 blue; ties go to the earlier channel.
int widestChannel(const ColorBox& box)
{
    const int r = box.rMax - box.rMin, g = box.gMax - box.gMin, b = box.bMax - box.bMin;
    if (r >= g && r >= b) return 0;
    return g >= b ? 1 : 2;
}

int widestRange(const ColorBox& box)
{
    return std::max({box.rMax - box.rMin, box.gMax - box.gMin, box.bMax - box.bMin});
}

QList<QRgb> medianCut(QList<ColorEntry> colors)
{
    QList<ColorBox> boxes;
    boxes.append(makeBox(std::move(colors)));
    while (boxes.size() < 256) {
        int pick = -1, pickRange = 0;
        for (int i = 0; i < boxes.size(); ++i) {
            if (boxes[i].colors.size() < 2) continue;
            const int range = widestRange(boxes[i]);
            if (pick < 0 || range > pickRange) {
                pick = i;
                pickRange = range;
            }
        }
        if (pick < 0 || pickRange == 0) break;

        ColorBox box = boxes.takeAt(pick);
        const int channel = widestChannel(box);
        // Colours are distinct, so ordering ties by the whole value makes the cut, and with it
        // the file, the same with every standard library. Both halves of a cut stay sorted, so
        // a box cut again along the same channel needs no sort.
        const auto less = [channel](const ColorEntry& a, const ColorEntry& b) {
            const int ca = channelOf(a.rgb, channel), cb = channelOf(b.rgb, channel);
            return ca != cb ? ca < cb : a.rgb < b.rgb;
        };
        if (!std::is_sorted(box.colors.cbegin(), box.colors.cend(), less))
            std::sort(box.colors.begin(), box.colors.end(), less);
        const qint64 half = box.pixels / 2;
        qsizetype cut = 1;
        qint64 sum = 0;
        for (qsizetype i = 0; i + 1 < box.colors.size(); ++i) {
            sum += box.colors[i].count;
            if (sum >= half) {
                cut = i + 1;
                break;
            }
        }
        boxes.append(makeBox(box.colors.mid(0, cut)));
        boxes.append(makeBox(box.colors.mid(cut)));
    }

    QList<QRgb> palette;
    palette.reserve(256);
    for (const ColorBox& box : std::as_const(boxes)) {
        if (box.colors.isEmpty()) continue;
        qint64 r = 0, g = 0, b = 0, n = 0;
        for (const ColorEntry& c : box.colors) {
            r += qint64(qRed(c.rgb)) * c.count;
            g += qint64(qGreen(c.rgb)) * c.count;
            b += qint64(qBlue(c.rgb)) * c.count;
            n += c.count;
        }
        palette.append(qRgb(int(r / n), int(g / n), int(b / n)));
    }
    return palette;
}

} // namespace

QList<QRgb> paletteFor(const ColorTable& table)
{
    QList<QRgb> palette;
    if (table.colors.size() <= 256) {
        palette = QList<QRgb>(table.colors.begin(), table.colors.end());
    } else {
        QList<ColorEntry> colors;
        colors.reserve(qsizetype(table.colors.size()));
        for (size_t i = 0; i < table.colors.size(); ++i)
            colors.append({table.colors[i] & 0xFFFFFFu, table.counts[i]});
        palette = medianCut(std::move(colors));
    }
    while (palette.size() < 256)
        palette.append(0xFF000000u);
    return palette;
}

void mapToPalette(const QImage& rgb32, const ColorTable& table, const QList<QRgb>& palette,
                  QByteArray& indices)
{
    std::vector<uchar> indexOfColor(table.colors.size());
    if (table.colors.size() <= 256) {
        // The palette starts with these very colours.
        for (size_t i = 0; i < indexOfColor.size(); ++i)
            indexOfColor[i] = uchar(i);
    } else {
        int r[256], g[256], b[256];
        for (int i = 0; i < 256; ++i)
            r[i] = qRed(palette[i]), g[i] = qGreen(palette[i]), b[i] = qBlue(palette[i]);
        for (size_t c = 0; c < indexOfColor.size(); ++c) {
            const int cr = qRed(table.colors[c]), cg = qGreen(table.colors[c]),
                      cb = qBlue(table.colors[c]);
            int best = 0, bestDistance = INT_MAX;
            for (int i = 0; i < 256 && bestDistance > 0; ++i) {
                const int d = std::abs(cr - r[i]) + std::abs(cg - g[i]) + std::abs(cb - b[i]);
                if (d < bestDistance) best = i, bestDistance = d;
            }
            indexOfColor[c] = uchar(best);
        }
    }

    indices.resize(qsizetype(rgb32.width()) * rgb32.height());
    auto* out = reinterpret_cast<uchar*>(indices.data());
    forEachPixelRun(
        rgb32, [&](QRgb c) { return indexOfColor[size_t(table.indexOf(c))]; },
        [&out](uchar index) { *out++ = index; });
}

} // namespace zelmor::service::record
