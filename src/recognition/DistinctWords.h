#pragma once

#include "recognition/FoundLine.h"
#include "recognition/GrayPicture.h"

#include <cstddef>
#include <vector>

namespace morvane {

/// The words of a screen with each picture once: what looks the same reads the same, and reading is what
/// takes the time. Half of an ordinary text are words that stood before.
class DistinctWords {
public:
    /// Two words are the same if every pixel of their letters is, at the same height above the baseline.
    DistinctWords(const GrayPicture &picture, const std::vector<FoundLine> &lines);

    /// For each word of a line the number of its picture, from 0 upwards in the order of the lines.
    const std::vector<std::size_t> &picturesOf(std::size_t line) const { return m_pictures[line]; }

    /// The words of a line, by their places in it, whose pictures no line or word before has.
    std::vector<std::size_t> newWordsOf(std::size_t line) const;

    /// How many pictures there are.
    std::size_t count() const { return m_count; }

private:
    std::vector<std::vector<std::size_t>> m_pictures;
    std::vector<std::size_t> m_firstOfLine; ///< The number that the line's first new picture has.
    std::size_t m_count = 0;
};

} // namespace morvane
