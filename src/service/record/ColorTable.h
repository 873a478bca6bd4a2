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

// Adds every pixel of `rgb32`, which must be Format_RGB32, to the table and its count;
// colours are read with the alpha byte forced to opaque.
void countColors(const QImage& rgb32, ColorTable& table);

} // namespace zelmor::service::record
