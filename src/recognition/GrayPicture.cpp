#include "recognition/GrayPicture.h"

#include <algorithm>
#include <array>

namespace morvane {

int commonShade(const GrayPicture &picture, const Box &part)
{
    std::array<int, 256> counts{};
    for (int y = part.top; y < part.bottom; ++y)
        for (int x = part.left; x < part.right; ++x)
            ++counts[picture.row(y)[x]];
    return int(std::max_element(counts.begin(), counts.end()) - counts.begin());
}

} // namespace morvane
