#include "ui/conversation/SegmentContent.h"

#include "ui/conversation/DocumentBuilder.h"
#include "ui/conversation/MessageParts.h"
#include "ui/markdown/MarkdownParser.h"
#include "ui/markdown/SegmentText.h"

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr auto errorPrefix = "Error: "_L1;

bool standsApart(const TextSegment &segment)
{
    using Joint = TextSegment::Joint;
    if (segment.kind == TextSegment::Kind::code)
        return segment.startsBlock;
    return segment.joint == Joint::block || segment.joint == Joint::heading;
}

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
    return text;
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

QString SegmentContent::wholeText(const ConversationItem &item) const
{
    if (item.kind != ConversationItem::Kind::message)
        return m_content.text(item);
    const ChatMessage &message = m_content.message(item);
    RowLayout row;
    for (const RowPart part : messageParts(message))
        for (const TextSegment &segment : partSegments(message, part, row.references))
            row.segments.append({.segment = segment, .part = part});
    QString text;
    for (qsizetype i = 0; i < row.segments.size(); ++i) {
        if (i > 0)
            text += separatorAbove(item, row, i);
        text += plainText(item, row, i);
    }
    return text;
}

QString SegmentContent::separatorAbove(const ConversationItem &item, const RowLayout &row,
                                       qsizetype index) const
{
    const SegmentLayout &above = row.segments.at(index - 1);
    const SegmentLayout &layout = row.segments.at(index);
    const TextSegment &segment = layout.segment;
    if (layout.part != above.part)
        return u"\n"_s;
    if (segment.kind != TextSegment::Kind::plain &&
        (above.segment.kind != segment.kind || standsApart(segment)))
        return u"\n\n"_s;
    if (segment.kind == TextSegment::Kind::markdown && segment.joint == TextSegment::Joint::item)
        return u"\n"_s;
    // Lines that are too long are cut between words or within one; then nothing stands there but a blank.
    const qsizetype end = qMax<qsizetype>(0, above.segment.end() - 1);
    const QString text = this->text(item, layout.part).sliced(end, segment.from - end);
    if (text.contains(u'\n'))
        return u"\n"_s;
    return text.mid(1);
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
