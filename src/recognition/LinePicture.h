#pragma once

#include "recognition/FoundLine.h"
#include "recognition/GrayPicture.h"

#include <cstddef>
#include <vector>

namespace morvane {

/// Some words of one line as the engine reads them best: at the height that it was taught with, side by side
/// with the room of a space between them.
struct LinePicture {
    static constexpr int height = 36;

    /// The columns that a word of the line has here.
    struct Slot {
        int left = 0;
        int right = 0;
    };

    GrayPicture picture;
    std::vector<Slot> slots; ///< One for each of the words, from left to right.
};

/// Draws those `words` of the line, by their places in it.
LinePicture linePicture(const GrayPicture &picture, const FoundLine &line,
                        const std::vector<std::size_t> &words);

} // namespace morvane
