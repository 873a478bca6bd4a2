#pragma once

#include <QImage>
#include <QRgb>

#include <vector>

namespace zelmor::service::record {

// The distinct colours of a frame with their pixel counts, in first-seen order: open
// addressing over opaque RGB32 values, which are never 0, so 0 marks a free slot.
class ColorTable
{
public:
    ColorTable();

    void reset();
    // The colour's id, its place in `colors`; -1 when it was never added.
    int indexOf(QRgb color) const;
    // Adds the colour unless known, with a count of 0; returns its id.
    int add(QRgb color);

    std::vector<QRgb> colors;
    std::vector<qint32> counts;

private:
    quint32 hash(QRgb color) const { return (color * 2654435761u) >> m_shift; }
    void rehash(size_t slotCount);

    std::vector<QRgb> m_keys;
    std::vector<int> m_ids;
    quint32 m_mask = 0;
    int m_shift = 32;
};

// Walks the pixels of `rgb32`, which must be Format_RGB32, in scan order, read with the
// alpha byte forced to opaque. `lookUp(colour)` runs once per run of equal pixels; `use`
// gets its answer for each pixel of the run. Screen content is mostly runs, so this saves
// nearly every table look-up.
template <typename LookUp, typename Use>
void forEachPixelRun(const QImage& rgb32, LookUp lookUp, Use use)
{
    const int width = rgb32.width(), height = rgb32.height();
    QRgb last = 0; // no opaque pixel
    decltype(lookUp(QRgb())) answer{};
    for (int y = 0; y < height; ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(rgb32.constScanLine(y));
        for (int x = 0; x < width; ++x) {
            const QRgb c = line[x] | 0xFF000000u;
            if (c != last) {
                last = c;
                answer = lookUp(c);
            }
            use(answer);
        }
    }
}

// Adds every pixel of `rgb32`, which must be Format_RGB32, to the table and its count;
// colours are read with the alpha byte forced to opaque.
void countColors(const QImage& rgb32, ColorTable& table);

} // namespace zelmor::service::record
