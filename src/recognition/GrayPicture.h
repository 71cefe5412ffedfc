#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace morvane {

/// A picture in shades of gray: a byte for each pixel, row after row.
struct GrayPicture {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> pixels;

    const uint8_t *row(int y) const { return pixels.data() + std::size_t(y) * std::size_t(width); }
};

} // namespace morvane
