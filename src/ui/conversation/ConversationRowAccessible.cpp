#include "ui/conversation/ConversationRowAccessible.h"

#include "ui/controls/LabelText.h"
#include "ui/conversation/ChatScrollView.h"

#include <QWindow>

using namespace Qt::StringLiterals;

namespace morvane {

qsizetype ConversationRowAccessible::row() const
{
    return m_view ? m_view->content().position(m_item) : -1;
}

bool ConversationRowAccessible::isValid() const
{
    return row() >= 0;
}

QWindow *ConversationRowAccessible::window() const
{
    return m_view ? m_view->window()->windowHandle() : nullptr;
}

QAccessibleInterface *ConversationRowAccessible::parent() const
{
    return m_view ? QAccessible::queryAccessibleInterface(m_view) : nullptr;
}

QString ConversationRowAccessible::text(QAccessible::Text text) const
{
    if (!isValid())
        return {};
    switch (text) {
    case QAccessible::Name:
        return m_view->content().accessibleName(m_item);
    case QAccessible::Description:
        return description();
    default:
        return {};
    }
}

QString ConversationRowAccessible::description() const
{
    if (isHeader())
        return u"Press Space to show or hide the steps."_s;
    const QString whole = labelText(m_view->content().whole(m_item));
    const QString hint = m_view->actions().hint(m_item);
    return whole.isEmpty() ? hint : whole + u". "_s + hint;
}

QRect ConversationRowAccessible::rect() const
{
    if (!isValid())
        return {};
    const QRect rect = m_view->rowRect(row());
    return {m_view->viewport()->mapToGlobal(rect.topLeft()), rect.size()};
}

QAccessible::Role ConversationRowAccessible::role() const
{
    return isHeader() ? QAccessible::Heading : QAccessible::ListItem;
}

QAccessible::State ConversationRowAccessible::state() const
{
    QAccessible::State state;
    if (!isValid()) {
        state.invalid = true;
        return state;
    }
    const QRect rect = m_view->rowRect(row());
    state.focusable = true;
    state.expandable = isHeader();
    state.expanded = isHeader() && !m_view->content().isActivityFolded();
    state.collapsed = isHeader() && m_view->content().isActivityFolded();
    state.readOnly = true;
    state.focused = m_view->hasFocus() && m_view->currentRow() == row();
    // Only where it tells something: a reader says of every other row that it is not selected.
    state.selected = state.selectable = m_view->isSelected(m_item);
    state.offscreen = !rect.intersects(m_view->viewport()->rect());
    state.invisible = !m_view->isVisible();
    return state;
}

void *ConversationRowAccessible::interface_cast(QAccessible::InterfaceType type)
{
    const bool hasActions = type == QAccessible::ActionInterface && !actionNames().isEmpty();
    return hasActions ? static_cast<QAccessibleActionInterface *>(this) : nullptr;
}

QStringList ConversationRowAccessible::actionNames() const
{
    if (isValid() && isHeader())
        return {pressAction()};
    return isValid() ? m_view->actions().names(m_item) : QStringList();
}

void ConversationRowAccessible::doAction(const QString &name)
{
    if (isValid() && isHeader())
        m_view->setActivityFolded(!m_view->content().isActivityFolded());
    else if (isValid())
        m_view->actions().perform(name, m_item);
}

} // namespace morvane
