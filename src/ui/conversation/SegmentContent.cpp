#include "ui/conversation/SegmentContent.h"

#include "base/Text.h"
#include "ui/conversation/DocumentBuilder.h"
#include "ui/markdown/MarkdownParser.h"
#include "ui/markdown/SegmentText.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// A name of a file is short everywhere but in files that were made to do harm.
constexpr qsizetype fileNameLimit = 255;
constexpr auto errorPrefix = "Error: "_L1;

QString fileNames(const ChatMessage &message)
{
    QStringList names;
    for (const ChatAttachment &attachment : message.attachments)
        names += flattened(attachment.filename, fileNameLimit);
    return names.join(u", "_s);
}

} // namespace

QString SegmentContent::text(const ConversationItem &item, RowPart part) const
{
    switch (part) {
    case RowPart::body:
        return m_content.text(item);
    case RowPart::attachments:
        return fileNames(m_content.message(item));
    case RowPart::responding:
        return u"Morvane is responding…"_s;
    case RowPart::error:
        return errorPrefix + m_content.message(item).errorMessage.value_or(QString());
    }
    Q_UNREACHABLE();
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
    switch (segment.segment.kind) {
    case TextSegment::Kind::markdown:
        return markdownPlainText(parseMarkdown(source(item, row, index)));
    case TextSegment::Kind::code:
        return codeText(m_content.text(item), segment.segment);
    case TextSegment::Kind::plain:
        break;
    }
    return text(item, segment);
}

bool SegmentContent::endsLine(const ConversationItem &item, const SegmentLayout &segment) const
{
    if (segment.segment.kind != TextSegment::Kind::plain)
        return true;
    const qsizetype end = segment.segment.end();
    const QString text = this->text(item, segment.part);
    return end == text.size() || text.at(end - 1) == u'\n';
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
