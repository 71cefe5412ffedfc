#include "ui/conversation/ConversationFrames.h"

#include "ui/conversation/MessageParts.h"

#include <algorithm>

namespace morvane {

namespace {

constexpr int narrowestText = 48;
constexpr double bubbleShare = 0.82;
constexpr int columnsPerIndent = 3;

int estimatedLines(qsizetype letters, qsizetype lineEnds, double characterWidth, int width)
{
    const double perLine = qMax(1.0, width / qMax(1.0, characterWidth));
    // Some of the lines wrap once more than their length tells.
    return static_cast<int>(static_cast<double>(lineEnds) * 0.7 + static_cast<double>(letters) / perLine) + 1;
}

} // namespace

int ConversationFrames::columnWidth() const
{
    const int limit = m_style.columnLimit + m_style.markSize + m_style.markGap;
    return qMax(narrowestText, qMin(m_width - 2 * m_style.margin, limit));
}

int ConversationFrames::timeWidth() const
{
    constexpr int leastColumn = 5; // times as wide as the time
    return columnWidth() >= leastColumn * m_style.timeWidth ? m_style.timeWidth : 0;
}

bool ConversationFrames::isUser(const ConversationItem &item) const
{
    return item.kind == ConversationItem::Kind::message && m_content.message(item).role == Role::user;
}

int ConversationFrames::bubbleLimit() const
{
    return qMax(narrowestText, qRound(columnWidth() * bubbleShare) - 2 * m_style.bubblePadding);
}

int ConversationFrames::pictureSide() const
{
    constexpr int lines = 5;
    return qMin(lines * m_style.lineHeight, bubbleLimit() - m_style.segmentGap);
}

int ConversationFrames::picturesInLine() const
{
    return qMax(1, bubbleLimit() / (pictureSide() + m_style.segmentGap));
}

QRect ConversationFrames::pictureRect(const ConversationItem &item, const RowLayout &row, int height,
                                      qsizetype index) const
{
    const RowFrame frame = rowFrame(item, row);
    const int step = pictureSide() + m_style.segmentGap;
    const auto place = static_cast<int>(index);
    return {frame.left + place % picturesInLine() * step,
            height - frame.bottom + m_style.segmentGap + place / picturesInLine() * step, pictureSide(),
            pictureSide()};
}

int ConversationFrames::bubbleWidth(const RowLayout &row) const
{
    const int limit = bubbleLimit();
    int width = row.isSplit() ? 1 : limit;
    for (const SegmentLayout &segment : row.segments) {
        width = qMax(width, segment.isMeasured ? segment.naturalWidth : limit);
        if (width >= limit) // a long message need not be gone through for each of its frames
            return limit;
    }
    return width;
}

RowFrame ConversationFrames::rowFrame(const ConversationItem &item, const RowLayout &row) const
{
    const int half = m_style.rowGap / 2;
    const int leading = m_style.markSize + m_style.markGap;
    RowFrame frame{
        .left = columnLeft() + leading, .top = half, .width = columnWidth() - leading, .bottom = half};
    switch (item.kind) {
    case ConversationItem::Kind::message:
        if (isUser(item)) {
            const auto pictures = static_cast<int>(shownPictureCount(m_content.message(item)));
            const int inLine = qMin(pictures, picturesInLine());
            frame.width = qMax(bubbleWidth(row), inLine * (pictureSide() + m_style.segmentGap));
            frame.left = columnLeft() + columnWidth() - m_style.bubblePadding - frame.width;
            frame.top += m_style.bubblePadding;
            frame.bottom += m_style.bubblePadding;
            frame.bottom +=
                (pictures + picturesInLine() - 1) / picturesInLine() * (pictureSide() + m_style.segmentGap);
        }
        break;
    case ConversationItem::Kind::activityHeader:
        frame.bottom = m_style.rowGap / 6;
        [[fallthrough]];
    case ConversationItem::Kind::activityStep: {
        const int symbol = m_style.symbolSize + m_style.markGap / 2;
        frame.left += symbol;
        frame.width -= symbol;
        if (item.kind == ConversationItem::Kind::activityStep) {
            frame.top = frame.bottom = qMax(2, m_style.rowGap / 8);
            frame.width -= timeWidth() > 0 ? timeWidth() + m_style.markGap : 0;
        }
        break;
    }
    }
    return frame;
}

SegmentFrame ConversationFrames::segmentFrame(const ConversationItem &item, const RowLayout &row,
                                              qsizetype index) const
{
    const SegmentLayout &layout = row.segments.at(index);
    const TextSegment &segment = layout.segment;
    SegmentFrame frame;
    frame.width = isUser(item) ? bubbleLimit() : rowFrame(item, row).width;
    const int indent = (segment.indent + columnsPerIndent - 1) / columnsPerIndent;
    frame.left = qMin(indent * m_style.indentWidth, frame.width / 3);
    const int gap = index > 0 ? m_style.segmentGap : 0;
    switch (segment.kind) {
    case TextSegment::Kind::plain:
        frame.gap = layout.part != RowPart::body && segment.startsBlock ? gap / 2 : 0;
        break;
    case TextSegment::Kind::markdown:
        frame.gap = index > 0 ? m_style.gapAbove(segment.joint) : 0;
        break;
    case TextSegment::Kind::code:
        frame.gap = segment.startsBlock ? gap : 0;
        frame.header = segment.startsBlock ? m_style.codeHeaderHeight : 0;
        frame.footer = segment.endsBlock ? m_style.codePadding : 0;
        frame.left += m_style.codePadding;
        frame.width -= m_style.codePadding;
        break;
    }
    frame.width = qMax(narrowestText, frame.width - frame.left);
    return frame;
}

int ConversationFrames::estimatedHeight(const ConversationItem &item) const
{
    const RowFrame frame = rowFrame(item, RowLayout());
    const bool isMessage = item.kind == ConversationItem::Kind::message;
    const int line = isMessage ? m_style.lineHeight : m_style.captionLineHeight;
    const QString text = m_content.text(item);
    return frame.top + frame.bottom +
           estimatedLines(text.size(), std::count(text.begin(), text.end(), u'\n'), m_style.averageCharacter,
                          frame.width) *
               line;
}

int ConversationFrames::estimatedHeight(const ConversationItem &item, const RowLayout &row,
                                        qsizetype index) const
{
    const SegmentLayout &segment = row.segments.at(index);
    const SegmentFrame frame = segmentFrame(item, row, index);
    const double character =
        segment.segment.kind == TextSegment::Kind::code ? m_style.codeCharacter : m_style.averageCharacter;
    const int line =
        item.kind == ConversationItem::Kind::message ? m_style.lineHeight : m_style.captionLineHeight;
    return frame.gap + frame.header + frame.footer +
           estimatedLines(segment.segment.length, segment.lineEnds, character, frame.width) * line;
}

} // namespace morvane
