#include "ui/conversation/TextSelection.h"

#include "ui/conversation/ConversationLayout.h"
#include "ui/conversation/SelectedText.h"

using namespace Qt::StringLiterals;

namespace morvane {

void TextSelection::start(const TextPlace &place)
{
    m_anchor = place;
    m_cursor = place;
}

void TextSelection::extendTo(const TextPlace &place)
{
    if (m_anchor)
        m_cursor = place;
}

std::optional<TextSelection::Ends> TextSelection::ends() const
{
    if (!m_anchor || m_anchor == m_cursor)
        return std::nullopt;
    const qsizetype anchor = m_content.position(m_anchor->item);
    const qsizetype cursor = m_content.position(m_cursor.item);
    if (anchor < 0 || cursor < 0)
        return std::nullopt;
    const bool isForward = anchor == cursor ? m_anchor->position < m_cursor.position : anchor < cursor;
    return isForward ? Ends{.first = *m_anchor, .last = m_cursor}
                     : Ends{.first = m_cursor, .last = *m_anchor};
}

bool TextSelection::isEmpty() const
{
    return !ends();
}

bool TextSelection::touches(const ConversationItem &item) const
{
    if (m_anchor && (m_anchor->item == item || m_cursor.item == item))
        return true;
    const auto ends = this->ends();
    const qsizetype row = m_content.position(item);
    return ends && row >= m_content.position(ends->first.item) && row <= m_content.position(ends->last.item);
}

std::optional<SelectedRange> TextSelection::range(const ConversationItem &item, qsizetype segment) const
{
    const auto ends = this->ends();
    if (!ends || !touches(item))
        return std::nullopt;
    const TextPosition first = ends->first.item == item ? ends->first.position : TextPosition();
    const TextPosition last = ends->last.item == item ? ends->last.position : TextPosition::rowEnd();
    if (segment < first.segment || segment > last.segment)
        return std::nullopt;
    return SelectedRange{.from = segment == first.segment ? first.position : 0,
                         .to = segment == last.segment ? last.position : -1};
}

SelectedRow TextSelection::stretch(ConversationLayout &layout, const ConversationItem &item,
                                   const TextPosition &from, const TextPosition &to) const
{
    const RowLayout row = layout.row(item);
    const qsizetype last = qMin(to.segment, row.segments.size() - 1);
    const auto textIn = [&](qsizetype segment) {
        const auto selected = range(item, segment);
        if (!selected)
            return QString();
        const bool isWhole = selected->from == 0 && selected->to < 0;
        return isWhole ? layout.plainText(item, segment)
                       : selectedText(layout.document(item, segment), *selected);
    };
    if (from.segment == last || item.kind != ConversationItem::Kind::message) {
        QString text = textIn(from.segment);
        for (qsizetype segment = from.segment + 1; segment <= last; ++segment)
            text += layout.separatorAbove(item, segment) + textIn(segment);
        return text;
    }
    return SelectedStretch{.message = m_content.message(item),
                           .row = row,
                           .first = from.segment + 1,
                           .last = last - 1,
                           .head = textIn(from.segment),
                           .tail = textIn(last)};
}

QList<SelectedRow> TextSelection::rows(ConversationLayout &layout) const
{
    QList<SelectedRow> rows;
    const auto ends = this->ends();
    if (!ends)
        return rows;
    const qsizetype first = m_content.position(ends->first.item);
    const qsizetype last = m_content.position(ends->last.item);
    for (qsizetype row = first; row <= last; ++row) {
        const ConversationItem item = m_content.item(row);
        const TextPosition from = row == first ? ends->first.position : TextPosition();
        const TextPosition to = row == last ? ends->last.position : TextPosition::rowEnd();
        const bool isWhole = from == TextPosition() && to == TextPosition::rowEnd();
        const bool isMessage = item.kind == ConversationItem::Kind::message;
        if (!isWhole)
            rows.append(stretch(layout, item, from, to));
        else if (isMessage)
            rows.append(m_content.message(item));
        else
            rows.append(m_content.text(item));
    }
    return rows;
}

} // namespace morvane
