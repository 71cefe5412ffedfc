#include "ui/conversation/SegmentContent.h"

#include "ui/conversation/DocumentBuilder.h"
#include "ui/markdown/MarkdownParser.h"
#include "ui/markdown/SegmentText.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace morvane {

QString SegmentContent::noteText(const ChatMessage &message, SegmentLayout::Note note) const
{
    switch (note) {
    case SegmentLayout::Note::attachments: {
        QStringList names;
        for (const ChatAttachment &attachment : message.attachments)
            names += attachment.filename;
        return names.join(u", "_s);
    }
    case SegmentLayout::Note::responding:
        return u"Morvane is responding…"_s;
    case SegmentLayout::Note::error:
        return u"Error: "_s + message.errorMessage.value_or(QString());
    }
    Q_UNREACHABLE();
}

QString SegmentContent::text(const ConversationItem &item, const SegmentLayout &segment) const
{
    if (segment.segment.kind == TextSegment::Kind::note)
        return noteText(m_content.message(item), segment.note);
    QString text = m_content.text(item).sliced(segment.segment.from, segment.segment.length);
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
    case TextSegment::Kind::note:
        break;
    }
    return text(item, segment);
}

bool SegmentContent::endsLine(const ConversationItem &item, const SegmentLayout &segment) const
{
    const qsizetype end = segment.segment.end();
    const QString text = m_content.text(item);
    return segment.segment.kind != TextSegment::Kind::plain || end == text.size() ||
           text.at(end - 1) == u'\n';
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
    case TextSegment::Kind::note: {
        const bool isError = segment.note == SegmentLayout::Note::error;
        return plainDocument(text(item, segment), isError ? m_style.font : m_style.captionFont,
                             isError ? colors.error : colors.secondaryText);
    }
    case TextSegment::Kind::plain:
        break;
    }
    const bool isMessage = item.kind == ConversationItem::Kind::message;
    return plainDocument(text(item, segment), isMessage ? m_style.font : m_style.captionFont,
                         isMessage ? colors.text : colors.secondaryText);
}

} // namespace morvane
