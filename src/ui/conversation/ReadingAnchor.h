#pragma once

#include "ui/conversation/ScrollAnchor.h"

#include <optional>

namespace morvane {

class ConversationLayout;

/// Finds the line that the user reads, and where it went.
class ReadingAnchor {
public:
    /// `layout` must outlive this.
    explicit ReadingAnchor(ConversationLayout &layout) : m_layout(layout) {}

    /// The first line in a viewport of `height` logical pixels that begins at `offset`. What is only
    /// estimated has no line to keep yet.
    ScrollAnchor at(int offset, int height) const;
    /// The offset that puts the anchor back in its place; nothing if its row is gone. An anchor whose row was
    /// cut anew is told its new segment.
    std::optional<int> offsetOf(ScrollAnchor &anchor);

private:
    struct Place {
        qsizetype segment = 0;
        int position = -1;
    };

    ScrollAnchor lineAt(const ConversationItem &item, qsizetype segment, int textTop, int offset) const;
    Place find(const ScrollAnchor &anchor);
    Place search(const ScrollAnchor &anchor);

    ConversationLayout &m_layout;
};

} // namespace morvane
