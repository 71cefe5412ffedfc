#include "ui/conversation/RowCursor.h"

#include "ui/conversation/ConversationLayout.h"
#include "ui/conversation/ConversationScroll.h"

#include <QKeyEvent>
#include <QWidget>

namespace morvane {

RowCursor::RowCursor(ConversationLayout &layout, ConversationScroll &scroll, const QWidget &viewport)
    : m_layout(layout), m_scroll(scroll), m_viewport(viewport)
{
}

qsizetype RowCursor::row() const
{
    return m_item ? m_layout.content().position(*m_item) : -1;
}

void RowCursor::moveTo(qsizetype row)
{
    if (row < 0 || row >= m_layout.content().count())
        return;
    m_item = m_layout.content().item(row);
    m_scroll.show(*m_item);
    Q_EMIT moved(row);
}

bool RowCursor::takeKey(const QKeyEvent &key)
{
    const int direction = key.key() == Qt::Key_Up || key.key() == Qt::Key_PageUp ? -1 : 1;
    switch (key.key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
        if (key.modifiers().testFlag(Qt::ControlModifier))
            m_scroll.scrollBy(direction * m_layout.style().lineHeight);
        else
            moveBy(direction);
        return true;
    case Qt::Key_Home:
        moveTo(0);
        return true;
    case Qt::Key_End:
        moveTo(m_layout.content().count() - 1);
        m_scroll.scrollToEnd();
        return true;
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        movePage(direction);
        return true;
    default:
        return false;
    }
}

void RowCursor::moveBy(qsizetype rows)
{
    const qsizetype last = m_layout.content().count() - 1;
    moveTo(row() < 0 ? last : qBound<qsizetype>(0, row() + rows, last));
}

void RowCursor::movePage(int direction)
{
    m_scroll.scrollPage(direction);
    const int offset = m_scroll.offset();
    const qsizetype count = m_layout.content().count();
    qsizetype row = m_layout.rowAt(offset);
    if (row < 0)
        return;
    // Within a row that is taller than the page, that row.
    const bool beginsAbove = m_layout.top(row) < offset;
    if (beginsAbove && row + 1 < count && m_layout.top(row + 1) < offset + m_viewport.height() / 2)
        ++row;
    m_item = m_layout.content().item(row);
    Q_EMIT moved(row);
}

} // namespace morvane
