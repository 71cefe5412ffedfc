#pragma once

#include "ui/conversation/ConversationItem.h"

#include <QString>
#include <compare>
#include <optional>

namespace morvane {

class ConversationLayout;

/// A place in the text of a row.
struct TextPosition {
    qsizetype segment = 0;
    int position = 0; ///< In the segment's document.

    auto operator<=>(const TextPosition &) const = default;
};

/// The characters of one segment that are selected.
struct SelectedRange {
    int from = 0;
    int to = 0; ///< Beyond the last; -1 for the segment's end.

    bool operator==(const SelectedRange &) const = default;
};

/// The text that the user selected with the mouse: any stretch of one row, across its segments.
class TextSelection {
public:
    void start(const ConversationItem &item, const TextPosition &position);
    void extendTo(const TextPosition &position) { m_cursor = position; }
    void clear() { m_item.reset(); }

    bool isEmpty() const { return !m_item || m_anchor == m_cursor; }
    const std::optional<ConversationItem> &item() const { return m_item; }
    const TextPosition &anchor() const { return m_anchor; }

    /// What is selected of a segment, or nothing.
    std::optional<SelectedRange> range(const ConversationItem &item, qsizetype segment) const;

    /// The selected text as it is shown.
    QString text(ConversationLayout &layout) const;

private:
    std::optional<ConversationItem> m_item;
    TextPosition m_anchor;
    TextPosition m_cursor;
};

} // namespace morvane
