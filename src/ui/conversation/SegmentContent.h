#pragma once

#include "ui/conversation/ConversationContent.h"
#include "ui/conversation/ConversationStyle.h"
#include "ui/conversation/RowLayout.h"

#include <QString>
#include <QTextDocument>
#include <memory>

namespace morvane {

/// What stands in a segment: its text, and the document that shows it.
class SegmentContent {
public:
    /// Both must outlive this.
    SegmentContent(const ConversationContent &content, const ConversationStyle &style)
        : m_content(content), m_style(style)
    {
    }

    /// The text of a part of a row; empty for a part that the row does not have.
    QString text(const ConversationItem &item, RowPart part) const;
    /// What a segment covers of its part's text, without the line end that closes it.
    QString text(const ConversationItem &item, const SegmentLayout &segment) const;
    /// What a segment shows, without formatting.
    QString plainText(const ConversationItem &item, const RowLayout &row, qsizetype segment) const;
    /// What is copied between a segment and the one above it in the same row.
    QString separatorAbove(const ConversationItem &item, const RowLayout &row, qsizetype segment) const;
    /// A document that is not laid out yet.
    std::unique_ptr<QTextDocument> makeDocument(const ConversationItem &item, const RowLayout &row,
                                                qsizetype segment) const;

private:
    QString source(const ConversationItem &item, const RowLayout &row, qsizetype segment) const;

    const ConversationContent &m_content;
    const ConversationStyle &m_style;
};

} // namespace morvane
