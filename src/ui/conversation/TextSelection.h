#pragma once

#include "ui/conversation/ConversationItem.h"
#include "ui/conversation/SelectedRow.h"

#include <QList>
#include <compare>
#include <limits>
#include <optional>

namespace morvane {

class ConversationContent;
class ConversationLayout;

/// A place in the text of a row.
struct TextPosition {
    qsizetype segment = 0;
    int position = 0; ///< In the segment's document.

    auto operator<=>(const TextPosition &) const = default;

    /// Behind everything that a row shows.
    static constexpr TextPosition rowEnd() { return {.segment = std::numeric_limits<qsizetype>::max()}; }
};

/// A place in the text of the conversation.
struct TextPlace {
    ConversationItem item;
    TextPosition position;

    bool operator==(const TextPlace &) const = default;
};

/// The characters of one segment that are selected.
struct SelectedRange {
    int from = 0;
    int to = 0; ///< Beyond the last; -1 for the segment's end.

    bool operator==(const SelectedRange &) const = default;
};

/// The text that is selected: any stretch of the conversation, across its rows and their segments.
class TextSelection {
public:
    /// `content` must outlive the selection.
    explicit TextSelection(const ConversationContent &content) : m_content(content) {}

    void start(const TextPlace &place);
    /// Moves the end that follows the mouse or the keyboard. Without a start nothing happens.
    void extendTo(const TextPlace &place);
    void clear() { m_anchor.reset(); }

    bool isEmpty() const;
    /// Where it began.
    const std::optional<TextPlace> &anchor() const { return m_anchor; }
    /// Whether any of a row may be selected.
    bool touches(const ConversationItem &item) const;

    /// What is selected of a segment, or nothing.
    std::optional<SelectedRange> range(const ConversationItem &item, qsizetype segment) const;

    /// What is selected, row by row, as it is shown, with an empty line between paragraphs.
    QList<SelectedRow> rows(ConversationLayout &layout) const;

private:
    struct Ends {
        TextPlace first;
        TextPlace last;
    };
    std::optional<Ends> ends() const;
    SelectedRow stretch(ConversationLayout &layout, const ConversationItem &item, const TextPosition &from,
                        const TextPosition &to) const;

    const ConversationContent &m_content;
    std::optional<TextPlace> m_anchor;
    TextPlace m_cursor;
};

} // namespace morvane
