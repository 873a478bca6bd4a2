#pragma once

#include <QImage>
#include <QRandomGenerator>

namespace zelmor::test {

// A tall page whose rows all differ: blocks of colour drawn from a generator seeded by the row,
// so that any run of rows tells its place.
inline QImage scrollContent(int width, int height)
{
    QImage page(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        QRandomGenerator random(quint32(y) + 1);
        auto* row = reinterpret_cast<QRgb*>(page.scanLine(y));
        for (int x = 0; x < width; x += 8) {
            const QRgb colour = 0xff000000u | (random.generate() & 0xffffffu);
            for (int i = x; i < std::min(x + 8, width); ++i)
                row[i] = colour;
        }
    }
    return page;
}

} // namespace zelmor::test
