#pragma once

#include "ColorTable.h"

#include <QByteArray>
#include <QList>

namespace zelmor::service::record {

// 256 opaque colours for a frame's counted colours: the colours themselves when there are at
// most 256, else a median cut; padded with black.
QList<QRgb> paletteFor(const ColorTable& table);

// The palette index of every pixel, chosen as QImage::convertToFormat(Format_Indexed8,
// palette) chooses: the first entry at the least sum of channel differences.
void mapToPalette(const QImage& rgb32, const ColorTable& table, const QList<QRgb>& palette,
                  QByteArray& indices);

} // namespace zelmor::service::record
