#pragma once

#include "ui/conversation/RowLayout.h"
#include "ui/conversation/TextSelection.h"

namespace morvane {

class ConversationLayout;

/// Where words were found in the messages as they are shown.
struct FoundText {
    qsizetype message = 0;
    RowPart part = RowPart::body;
    qsizetype from = 0; ///< Where the segment begins in the part's text.
    int occurrence = 0; ///< Among those in the segment, counted from 0.

    bool operator==(const FoundText &) const = default;
};

/// The same in the conversation that is laid out.
struct MatchPlace {
    TextPlace from;
    TextPlace to;
    QString line; ///< The words and what stands around them.
};

/// Finds it again; where the segment does not show the words any more, the segment's beginning.
MatchPlace placeOf(ConversationLayout &layout, const FoundText &found, const QString &words);

} // namespace morvane
