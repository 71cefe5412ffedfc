#pragma once

#include <QtGlobal>

namespace morvane {

/// A piece of a message's text that is laid out and drawn on its own, so that no text, however long, is ever
/// laid out in one go. The ranges are UTF-16 indices into the text of the row's part.
struct TextSegment {
    enum class Kind : quint8 {
        plain,    ///< Shown as it stands.
        markdown, ///< Formatted on its own.
        code      ///< Lines of a code block.
    };

    /// What a segment begins with, and so how far it stands below the one above.
    enum class Joint : quint8 {
        line, ///< The rest of a block that was cut: no space at all.
        item, ///< An item of a list whose items stand close.
        block,
        heading
    };

    qsizetype from = 0;
    qsizetype length = 0;
    /// Start of the line that opens a code block, or of the table's heading that is repeated above `from`;
    /// -1 without one.
    qsizetype opening = -1;
    Kind kind = Kind::plain;
    Joint joint = Joint::block;
    int number = -1;   ///< Of the list item that the segment begins with, where the list began above it.
    quint8 indent = 0; ///< Columns of leading white space that are shown as a margin instead.
    bool startsBlock = true; ///< False for the later pieces of a code block or of a plain text.
    bool endsBlock = true;

    qsizetype end() const { return from + length; }
    bool operator==(const TextSegment &) const = default;
};

/// The costliest segment, and so the longest in UTF-16 units (LayoutCost.h): laid out well within a frame.
inline constexpr qsizetype segmentLimit = 2000;
/// Most lines of a segment, since a line costs as much as some thirty letters.
inline constexpr qsizetype segmentLineLimit = 60;

} // namespace morvane
