#pragma once

#include "ui/conversation/ConversationItem.h"
#include "ui/conversation/RowLayout.h"

#include <QString>

namespace morvane {

/// A line of the text that keeps its place on the screen while heights around it change: estimates become
/// measures, an answer gets its formatting, the window its new width.
struct ScrollAnchor {
    ConversationItem item;
    RowPart part = RowPart::body;
    qsizetype from = -1;  ///< Where the line's segment begins in the part's text; -1 for the row as a whole.
    int position = -1;    ///< Of the line in the segment's document; -1 for the segment as a whole.
    QString words = {};   ///< The letters at the line's beginning, to find it should the row be cut anew.
    qsizetype before = 0; ///< Letters in the segment above the line.
    double within = 0;    ///< How far down the segment or row without a line, from 0 to 1.
    int screenY = 0;      ///< Distance from the viewport's top.
};

} // namespace morvane
