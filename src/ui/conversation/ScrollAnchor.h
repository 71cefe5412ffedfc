#pragma once

#include "ui/conversation/ConversationItem.h"

namespace morvane {

/// A place in the text that keeps its place on the screen while heights around it change: estimates become
/// measures, an answer gets its formatting, the window its new width.
struct ScrollAnchor {
    ConversationItem item;
    qsizetype segment = -1; ///< -1 for a row that is not cut into segments.
    qsizetype source = 0;   ///< Where the segment began in the row's text, should the row be cut anew.
    double within = 0;      ///< How far down the segment or row, from 0 to 1.
    int screenY = 0;        ///< Distance from the viewport's top.
};

} // namespace morvane
