#include "ColorTable.h"

#include <algorithm>

namespace zelmor::service::record {

ColorTable::ColorTable()
{
    rehash(1 << 14);
}

void ColorTable::reset()
{
    colors.clear();
    counts.clear();
    std::fill(m_keys.begin(), m_keys.end(), 0u);
}

int ColorTable::indexOf(QRgb color) const
{
    for (quint32 slot = hash(color);; slot = (slot + 1) & m_mask) {
        if (m_keys[slot] == color) return m_ids[slot];
        if (m_keys[slot] == 0) return -1;
    }
}

int ColorTable::add(QRgb color)
{
    quint32 slot = hash(color);
    for (; m_keys[slot] != 0; slot = (slot + 1) & m_mask)
        if (m_keys[slot] == color) return m_ids[slot];
    const int id = int(colors.size());
    m_keys[slot] = color;
    m_ids[slot] = id;
    colors.push_back(color);
    counts.push_back(0);
    if (colors.size() * 2 > m_keys.size()) rehash(m_keys.size() * 2);
    return id;
}

void ColorTable::rehash(size_t slotCount)
{
    m_keys.assign(slotCount, 0);
    m_ids.assign(slotCount, 0);
    m_mask = quint32(slotCount - 1);
    m_shift = 32;
    for (size_t n = slotCount; n > 1; n >>= 1)
        --m_shift;
    for (size_t id = 0; id < colors.size(); ++id) {
        quint32 slot = hash(colors[id]);
        while (m_keys[slot] != 0)
            slot = (slot + 1) & m_mask;
        m_keys[slot] = colors[id];
        m_ids[slot] = int(id);
    }
}

void countColors(const QImage& rgb32, ColorTable& table)
{
    forEachPixelRun(
        rgb32, [&table](QRgb c) { return table.add(c); },
        [&table](int id) { ++table.counts[size_t(id)]; });
}

} // namespace zelmor::service::record
