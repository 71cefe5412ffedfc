#include "recognition/FoundLine.h"

#include <algorithm>
#include <tuple>

namespace morvane {
namespace {

/// Rows from a strip's edge within which a line may be cut.
constexpr int edge = 2;

int height(const Box &box)
{
    return box.bottom - box.top;
}

/// Whether both are the same line: their boxes cover each other for the most part of the smaller one.
bool isSame(const Box &one, const Box &other)
{
    const int width = std::min(one.right, other.right) - std::max(one.left, other.left);
    const int rows = std::min(one.bottom, other.bottom) - std::max(one.top, other.top);
    if (width <= 0 || rows <= 0)
        return false;
    return 2 * rows >= std::min(height(one), height(other)) &&
           2 * width >= std::min(one.right - one.left, other.right - other.left);
}

bool isCut(const Box &line, const Strip &strip, int pictureHeight)
{
    return (strip.top > 0 && line.top < strip.top + edge) ||
           (strip.bottom < pictureHeight && line.bottom > strip.bottom - edge);
}

struct Seen {
    FoundLine line;
    bool cut = false;
};

} // namespace

std::vector<Strip> strips(int height, int count, int overlap)
{
    std::vector<Strip> result;
    for (int at = 0; at < count; ++at) {
        const int top = int(static_cast<long>(height) * at / count);
        const int bottom = int(static_cast<long>(height) * (at + 1) / count);
        result.push_back({std::max(0, top - overlap / 2), std::min(height, bottom + overlap / 2), {}});
    }
    return result;
}

std::vector<FoundLine> mergedLines(const std::vector<Strip> &strips, int height)
{
    std::vector<Seen> seen;
    for (const Strip &strip : strips) {
        const std::size_t before = seen.size();
        for (const FoundLine &line : strip.lines) {
            const Seen now{line, isCut(line.box, strip, height)};
            const auto known =
                std::find_if(seen.begin(), seen.begin() + long(before),
                             [&](const Seen &other) { return isSame(other.line.box, line.box); });
            if (known == seen.begin() + long(before))
                seen.push_back(now);
            else if (known->cut && !now.cut)
                *known = now;
        }
    }
    // From top to bottom; boxes that overlap by half of the lower one's height are on one row.
    std::sort(seen.begin(), seen.end(), [](const Seen &one, const Seen &other) {
        return std::tie(one.line.box.top, one.line.box.left) <
               std::tie(other.line.box.top, other.line.box.left);
    });
    std::vector<FoundLine> ordered;
    for (auto first = seen.begin(); first != seen.end();) {
        const int middle = (first->line.box.top + first->line.box.bottom) / 2;
        const auto last =
            std::find_if(first, seen.end(), [&](const Seen &other) { return other.line.box.top > middle; });
        std::sort(first, last, [](const Seen &one, const Seen &other) {
            return std::tie(one.line.box.left, one.line.box.top) <
                   std::tie(other.line.box.left, other.line.box.top);
        });
        for (; first != last; ++first)
            ordered.push_back(first->line);
    }
    return ordered;
}

} // namespace morvane
