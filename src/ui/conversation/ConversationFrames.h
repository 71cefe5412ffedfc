#pragma once

#include "ui/conversation/ConversationContent.h"
#include "ui/conversation/ConversationStyle.h"
#include "ui/conversation/RowLayout.h"
#include "ui/conversation/SegmentContent.h"

#include <QStringView>

namespace morvane {

/// How wide the parts of a row are and what space is around them, and how high they will be as far as that
/// can be told before they are laid out. All measures are logical pixels.
class ConversationFrames {
public:
    /// All must outlive this.
    ConversationFrames(const ConversationContent &content, const ConversationStyle &style,
                       const SegmentContent &texts)
        : m_content(content), m_style(style), m_texts(texts)
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
    int estimatedHeight(const ConversationItem &item, const RowLayout &row, qsizetype segment) const;
    /// The same where the segment's text is at hand.
    int estimatedHeight(const ConversationItem &item, const RowLayout &row, qsizetype segment,
                        QStringView text) const;

private:
    int estimatedLines(QStringView text, double characterWidth, int width) const;
    int bubbleWidth(const RowLayout &row) const;
    int bubbleLimit() const;
    int pictureSide() const;
    int picturesInLine() const;

    const ConversationContent &m_content;
    const ConversationStyle &m_style;
    const SegmentContent &m_texts;
    int m_width = 0;
};

} // namespace morvane
