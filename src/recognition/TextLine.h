#pragma once

#include <string>
#include <vector>

namespace morvane {

/// A recognised line and the box around it, in pixels of the whole picture.
struct TextLine {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
    std::string text; ///< UTF-8.

    bool operator==(const TextLine &) const = default;
};

/// A part of the picture that is recognised by itself, from its first row to the one behind its last.
struct Strip {
    int top = 0;
    int bottom = 0;
    std::vector<TextLine> lines;
};

/// The rows of `count` strips that overlap by `overlap` rows, so that each line is whole in one of them.
std::vector<Strip> strips(int height, int count, int overlap);

/// The lines of all strips in reading order. A line that two strips have seen comes once, from the one that
/// saw it whole.
std::vector<TextLine> mergedLines(const std::vector<Strip> &strips, int height);

} // namespace morvane
