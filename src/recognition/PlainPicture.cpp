#include "recognition/PlainPicture.h"

#include <algorithm>

namespace morvane {
namespace {

/// Pixels of the side of a part whose ground is looked at by itself: a letter or two.
constexpr int part = 32;
constexpr int darkGround = 112;

} // namespace

GrayPicture plainPicture(const GrayPicture &picture)
{
    GrayPicture plain = picture;
    for (int top = 0; top < picture.height; top += part) {
        const int bottom = std::min(top + part, picture.height);
        for (int left = 0; left < picture.width; left += part) {
            const int right = std::min(left + part, picture.width);
            if (commonShade(picture, {left, top, right, bottom}) >= darkGround)
                continue;
            for (int y = top; y < bottom; ++y) {
                uint8_t *const row = plain.pixels.data() + std::size_t(y) * std::size_t(plain.width);
                std::transform(row + left, row + right, row + left,
                               [](uint8_t shade) { return uint8_t(255 - shade); });
            }
        }
    }
    return plain;
}

} // namespace morvane
