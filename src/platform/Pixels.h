#pragma once

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

} // namespace zelmor::platform
