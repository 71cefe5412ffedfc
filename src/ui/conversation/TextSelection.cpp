#include "ui/conversation/TextSelection.h"

#include "ui/conversation/ConversationLayout.h"

#include <QTextCursor>
#include <algorithm>

namespace morvane {

namespace {

QString documentText(QTextDocument &document, const SelectedRange &range)
{
    QTextCursor cursor(&document);
    const int last = document.characterCount() - 1;
    cursor.setPosition(qMin(range.from, last));
    cursor.setPosition(range.to < 0 ? last : qMin(range.to, last), QTextCursor::KeepAnchor);
    QString text = cursor.selectedText();
    for (QChar &character : text) {
        switch (character.unicode()) {
        case QChar::ParagraphSeparator:
        case QChar::LineSeparator:
        case 0xfdd1: // the toolkit's mark behind a table
            character = u'\n';
            break;
        case 0xfdd0: // before each of its cells
            character = u'\t';
            break;
        default:
            break;
        }
    }
    return text;
}

} // namespace

void TextSelection::start(const ConversationItem &item, const TextPosition &position)
{
    m_item = item;
    m_anchor = position;
    m_cursor = position;
}

std::optional<SelectedRange> TextSelection::range(const ConversationItem &item, qsizetype segment) const
{
    if (isEmpty() || *m_item != item)
        return std::nullopt;
    const auto [first, last] = std::minmax(m_anchor, m_cursor);
    if (segment < first.segment || segment > last.segment)
        return std::nullopt;
    return SelectedRange{.from = segment == first.segment ? first.position : 0,
                         .to = segment == last.segment ? last.position : -1};
}

QString TextSelection::text(ConversationLayout &layout) const
{
    if (isEmpty())
        return {};
    const auto [first, last] = std::minmax(m_anchor, m_cursor);
    QString text;
    for (qsizetype segment = first.segment; segment <= last.segment; ++segment) {
        const bool isWhole = segment > first.segment && segment < last.segment;
        if (isWhole)
            text += layout.plainText(*m_item, segment);
        else if (const auto selected = range(*m_item, segment))
            text += documentText(layout.document(*m_item, segment), *selected);
        if (segment < last.segment && layout.endsLine(*m_item, segment))
            text += u'\n';
    }
    return text;
}

} // namespace morvane
