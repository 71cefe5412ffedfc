#pragma once

#include "ui/markdown/TextSegment.h"
#include "ui/theme/ThemeColors.h"

#include <QFont>
#include <QPalette>

namespace morvane {

/// The fonts, colours and measures of the conversation, in logical pixels. Everything that holds text follows
/// the font, so that a font of twice the size gives a conversation of twice the size.
struct ConversationStyle {
    QFont font;
    QFont codeFont;
    QFont captionFont;
    ThemeColors colors;

    int lineHeight = 0;
    int captionLineHeight = 0;
    double averageCharacter = 0; ///< Width of a usual character of `font`.
    double codeCharacter = 0;

    int margin = 0;      ///< Between the window's edge and the column.
    int columnLimit = 0; ///< Widest column: lines longer than this are hard to read.
    int rowGap = 0;
    int endGap = 0;   ///< Above the first row and below the last.
    int markSize = 0; ///< Side of the mark beside an assistant message.
    int markGap = 0;
    int bubblePadding = 0;
    int segmentGap = 0;
    int codePadding = 0;
    int codeHeaderHeight = 0;
    int symbolSize = 14; ///< Side of an activity step's symbol.
    int indentWidth = 0; ///< One level of a list.
    int timeWidth = 0;   ///< Of a step's time of day.

    static constexpr int bubbleRadius = 15;
    static constexpr int codeRadius = 8;

    /// The space above a segment of formatted text that stands below another.
    int gapAbove(TextSegment::Joint joint) const;

    ConversationStyle() = default;
    /// `zoom` is the text's size in percent.
    ConversationStyle(const QFont &font, const QPalette &palette, int zoom = 100);
};

} // namespace morvane
