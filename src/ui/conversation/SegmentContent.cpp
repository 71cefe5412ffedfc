#include "ui/conversation/SegmentContent.h"

#include "ui/controls/ReadableText.h"
#include "ui/conversation/DocumentBuilder.h"
#include "ui/conversation/MessageParts.h"
#include "ui/markdown/MarkdownParser.h"
#include "ui/markdown/SegmentText.h"

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr auto errorPrefix = "Error: "_L1;

} // namespace

QString SegmentContent::text(const ConversationItem &item, RowPart part) const
{
    return item.kind == ConversationItem::Kind::message ? partText(m_content.message(item), part)
                                                        : m_content.text(item);
}

QString SegmentContent::text(const ConversationItem &item, const SegmentLayout &segment) const
{
    const qsizetype from = segment.segment.from;
    const qsizetype length = segment.segment.length;
    QString text;
    if (segment.part == RowPart::error && from >= errorPrefix.size()) // without a copy of the whole
        text = m_content.message(item).errorMessage.value_or(QString()).sliced(from - errorPrefix.size(),
                                                                               length);
    else
        text = this->text(item, segment.part).sliced(from, length);
    if (segment.segment.kind == TextSegment::Kind::plain && text.endsWith(u'\n'))
        text.chop(1);
    return item.kind == ConversationItem::Kind::message ? text : readableText(text);
}

QString SegmentContent::source(const ConversationItem &item, const RowLayout &row, qsizetype segment) const
{
    return markdownSource(m_content.text(item), row.segments.at(segment).segment, row.references);
}

QString SegmentContent::plainText(const ConversationItem &item, const RowLayout &row, qsizetype index) const
{
    const SegmentLayout &segment = row.segments.at(index);
    if (segment.segment.kind == TextSegment::Kind::plain)
        return text(item, segment);
    return shownText(m_content.text(item), segment.segment, row.references);
}

QString SegmentContent::separatorAbove(const ConversationItem &item, const RowLayout &row,
                                       qsizetype index) const
{
    const SegmentLayout &segment = row.segments.at(index);
    return separatorBetween(text(item, segment.part), row.segments.at(index - 1), segment);
}

std::unique_ptr<QTextDocument> SegmentContent::makeDocument(const ConversationItem &item,
                                                            const RowLayout &row, qsizetype index) const
{
    const SegmentLayout &segment = row.segments.at(index);
    const ThemeColors &colors = m_style.colors;
    switch (segment.segment.kind) {
    case TextSegment::Kind::markdown:
        return markdownDocument(parseMarkdown(source(item, row, index)), m_style);
    case TextSegment::Kind::code:
        return plainDocument(codeText(m_content.text(item), segment.segment), m_style.codeFont, colors.text);
    case TextSegment::Kind::plain:
        break;
    }
    const QString shown = text(item, segment);
    if (segment.part == RowPart::error)
        return plainDocument(shown, m_style.font, colors.error);
    const bool isText = item.kind == ConversationItem::Kind::message && segment.part == RowPart::body;
    return plainDocument(shown, isText ? m_style.font : m_style.captionFont,
                         isText ? colors.text : colors.secondaryText);
}

} // namespace morvane
