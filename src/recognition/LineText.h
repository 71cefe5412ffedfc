#pragma once

#include "recognition/LinePicture.h"

#include <optional>
#include <string>
#include <vector>

namespace morvane {

/// What a word reads.
struct WordText {
    std::string text;     ///< UTF-8; empty if the engine sees no letters.
    float confidence = 0; ///< In percent.
    bool isRightToLeft = false;
};

/// What the engine has read, and between which columns of the line's picture.
struct ReadWord {
    int left = 0;
    int right = 0;
    WordText word;
};

/// What stands in each slot. Nothing for slots in which the engine has read nothing, or a word that goes on
/// into the next.
std::vector<std::optional<WordText>> textsOf(const std::vector<LinePicture::Slot> &slots,
                                             const std::vector<ReadWord> &read);

/// The same of several readings of one picture: for each slot the one that is surest.
std::vector<std::optional<WordText>> surestTexts(const std::vector<LinePicture::Slot> &slots,
                                                 const std::vector<std::vector<ReadWord>> &readings);

/// All that was read as one word, in the reading that is surest.
WordText surestWord(const std::vector<std::vector<ReadWord>> &readings);

/// The text of a line whose words are given from left to right, in the order in which people read them.
/// Empty if what was read is hardly better than guessed.
std::string lineText(const std::vector<WordText> &words);

} // namespace morvane
