#pragma once

#include "ui/conversation/ConversationContent.h"
#include "ui/conversation/ConversationStyle.h"
#include "ui/conversation/RowLayout.h"

namespace morvane {

/// How wide the parts of a row are and what space is around them, and how high they will be as far as that
/// can be told before they are laid out. All measures are logical pixels.
class ConversationFrames {
public:
    /// Both must outlive this.
    ConversationFrames(const ConversationContent &content, const ConversationStyle &style)
        : m_content(content), m_style(style)
    {
    }

    int width() const { return m_width; }
    void setWidth(int width) { m_width = width; }
    int columnLeft() const { return (m_width - columnWidth()) / 2; }
    int columnWidth() const;
    /// Of a step's time of day; 0 where the column is too narrow to spare it.
    int timeWidth() const;
    bool isUser(const ConversationItem &item) const;

    RowFrame rowFrame(const ConversationItem &item, const RowLayout &row) const;
    SegmentFrame segmentFrame(const ConversationItem &item, const RowLayout &row, qsizetype segment) const;
    /// Where one of a message's pictures stands within its row of `height`.
    QRect pictureRect(const ConversationItem &item, const RowLayout &row, int height, qsizetype index) const;
    /// Of a row that was not cut into segments yet.
    int estimatedHeight(const ConversationItem &item) const;
    /// Of a segment. Does not look at its text, of which there may be megabytes.
    int estimatedHeight(const ConversationItem &item, const RowLayout &row, qsizetype segment) const;

private:
    int bubbleWidth(const RowLayout &row) const;
    int bubbleLimit() const;
    int pictureSide() const;
    int picturesInLine() const;

    const ConversationContent &m_content;
    const ConversationStyle &m_style;
    int m_width = 0;
};

} // namespace morvane
