#include "recognition/DistinctWords.h"

#include "recognition/WordBounds.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <unordered_map>

namespace morvane {
namespace {

/// The smallest box around the letters in `box`; empty if there are none.
Box inkIn(const GrayPicture &picture, const Box &box)
{
    const int ground = commonShade(picture, box);
    Box found{box.right, box.bottom, box.left, box.top};
    for (int y = box.top; y < box.bottom; ++y) {
        for (int x = box.left; x < box.right; ++x) {
            if (std::abs(picture.row(y)[x] - ground) < inkContrast)
                continue;
            found.left = std::min(found.left, x);
            found.right = std::max(found.right, x + 1);
            found.top = std::min(found.top, y);
            found.bottom = std::max(found.bottom, y + 1);
        }
    }
    return found;
}

/// What makes a word's picture: its size, its height above the baseline, its pixels.
std::string keyOf(const GrayPicture &picture, const Box &word, int baseline)
{
    const Box around = inkIn(picture, word);
    if (around.left >= around.right)
        return {};
    std::string key =
        std::to_string(around.right - around.left) + ' ' + std::to_string(baseline - around.bottom) + ' ';
    for (int y = around.top; y < around.bottom; ++y)
        key.append(picture.row(y) + around.left, picture.row(y) + around.right);
    return key;
}

} // namespace

DistinctWords::DistinctWords(const GrayPicture &picture, const std::vector<FoundLine> &lines)
{
    std::unordered_map<std::string, std::size_t> known;
    for (const FoundLine &line : lines) {
        m_firstOfLine.push_back(known.size());
        std::vector<std::size_t> &pictures = m_pictures.emplace_back();
        for (const Box &word : line.words)
            pictures.push_back(
                known.emplace(keyOf(picture, word, line.baseline), known.size()).first->second);
    }
    m_count = known.size();
}

std::vector<std::size_t> DistinctWords::newWordsOf(std::size_t line) const
{
    std::vector<std::size_t> words;
    const std::vector<std::size_t> &pictures = m_pictures[line];
    std::size_t next = m_firstOfLine[line];
    for (std::size_t word = 0; word < pictures.size(); ++word) {
        if (pictures[word] != next)
            continue;
        words.push_back(word);
        ++next;
    }
    return words;
}

} // namespace morvane
