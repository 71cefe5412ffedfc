#pragma once

#include "recognition/FoundLine.h"
#include "recognition/GrayPicture.h"

namespace morvane {

/// How much a pixel differs from the ground to be part of a letter; the soft edges of letters are less.
constexpr int inkContrast = 48;

/// Gives marks to their words that the engine takes for dirt, such as a comma of two pixels: what stands
/// between two words belongs to the one that it is nearer to. The line's box grows with its last word.
void includeMarks(const GrayPicture &picture, FoundLine &line);

} // namespace morvane
