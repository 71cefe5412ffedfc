#pragma once

#include "recognition/Box.h"

#include <vector>

namespace morvane {

/// Where a line of text is, before it is read.
struct FoundLine {
    Box box;
    int baseline = 0; ///< The row that its letters stand on.
    /// The rows of its letters. The box may have more, such as the frame of a field.
    int lettersTop = 0;
    int lettersBottom = 0;
    std::vector<Box> words; ///< From left to right.

    bool operator==(const FoundLine &) const = default;
};

/// A part of the picture that is searched for lines by itself, from its first row to the one behind its last.
struct Strip {
    int top = 0;
    int bottom = 0;
    std::vector<FoundLine> lines;
};

/// The rows of `count` strips that overlap by `overlap` rows, so that each line is whole in one of them.
std::vector<Strip> strips(int height, int count, int overlap);

/// The lines of all strips in reading order. A line that two strips have seen comes once, from the one that
/// saw it whole.
std::vector<FoundLine> mergedLines(const std::vector<Strip> &strips, int height);

} // namespace morvane
