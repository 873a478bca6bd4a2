#pragma once

#include "Geometry.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace zelmor::platform {

// Grabbed pixels are 0xAARRGGBB and always opaque.
inline constexpr std::uint32_t kOpaque = 0xff000000u;

// What no screen shows is opaque black.
inline void fillBlack(std::uint32_t* dest, int destStride, int width, int height)
{
    for (int row = 0; row < height; ++row)
        std::fill_n(dest + std::size_t(row) * destStride, width, kOpaque);
}

// Copies `rect` of the desktop out of a picture of its `area`: opaque, and black where the
// picture does not reach.
inline void copyFromPicture(const std::uint32_t* picture, int pictureStride, const Rect& area,
                            const Rect& rect, std::uint32_t* dest, int destStride)
{
    fillBlack(dest, destStride, rect.width, rect.height);
    const Rect inside = intersected(rect, area);
    for (int row = 0; row < inside.height; ++row) {
        const std::uint32_t* in =
            picture + std::size_t(inside.y - area.y + row) * pictureStride + (inside.x - area.x);
        std::uint32_t* out =
            dest + std::size_t(inside.y - rect.y + row) * destStride + (inside.x - rect.x);
        for (int x = 0; x < inside.width; ++x)
            out[x] = in[x] | kOpaque;
    }
}

} // namespace zelmor::platform
