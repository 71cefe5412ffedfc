#include "recognition/WordBounds.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace morvane {
namespace {

/// The widest run of columns without ink between `left` and `right`, the first of equals.
std::pair<int, int> widestBlank(const std::vector<bool> &hasInk, int left, int right)
{
    std::pair<int, int> widest{left, left};
    for (int x = left; x < right; ++x) {
        const int start = x;
        while (x < right && !hasInk[std::size_t(x)])
            ++x;
        if (x - start > widest.second - widest.first)
            widest = {start, x};
    }
    return widest;
}

} // namespace

void includeMarks(const GrayPicture &picture, FoundLine &line)
{
    if (line.words.empty())
        return;
    const int ground =
        commonShade(picture, {line.box.left, line.lettersTop, line.box.right, line.lettersBottom});
    std::vector<bool> hasInk(std::size_t(picture.width), false);
    for (int y = line.lettersTop; y < line.lettersBottom; ++y)
        for (int x = 0; x < picture.width; ++x)
            if (std::abs(picture.row(y)[x] - ground) >= inkContrast)
                hasInk[std::size_t(x)] = true;
    for (std::size_t word = 1; word < line.words.size(); ++word) {
        Box &before = line.words[word - 1];
        Box &after = line.words[word];
        if (before.right >= after.left)
            continue;
        const auto [end, start] = widestBlank(hasInk, before.right, after.left);
        before.right = end;
        after.left = start;
    }
    // Behind the last word, as far as a mark may stand.
    Box &last = line.words.back();
    const int reach = std::min(last.right + (line.lettersBottom - line.lettersTop) / 2, picture.width);
    const auto [end, start] = widestBlank(hasInk, last.right, reach);
    if (end > last.right && start < reach)
        return; // what stands there is something else, apart from the word
    last.right = std::max(last.right, end);
    line.box.right = std::max(line.box.right, last.right);
}

} // namespace morvane
