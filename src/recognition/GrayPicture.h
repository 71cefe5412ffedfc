#pragma once

#include "recognition/Box.h"

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

/// The shade that most pixels of a part of the picture have: what its text is written on.
int commonShade(const GrayPicture &picture, const Box &part);

} // namespace morvane
