#include "ui/window/ConversationEntryAccessible.h"

#include "ui/window/ConversationList.h"

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

const auto openAction = u"Open"_s;

} // namespace

bool ConversationEntryAccessible::isValid() const
{
    return m_list && m_row.isValid();
}

QWindow *ConversationEntryAccessible::window() const
{
    return m_list ? m_list->window()->windowHandle() : nullptr;
}

QAccessibleInterface *ConversationEntryAccessible::parent() const
{
    return m_list ? QAccessible::queryAccessibleInterface(m_list) : nullptr;
}

QString ConversationEntryAccessible::text(QAccessible::Text text) const
{
    return isValid() && text == QAccessible::Name ? m_row.data(Qt::AccessibleTextRole).toString() : QString();
}

QRect ConversationEntryAccessible::rect() const
{
    if (!isValid())
        return {};
    const QRect rect = m_list->visualRect(m_row);
    return {m_list->viewport()->mapToGlobal(rect.topLeft()), rect.size()};
}

QAccessible::State ConversationEntryAccessible::state() const
{
    QAccessible::State state;
    if (!isValid()) {
        state.invalid = true;
        return state;
    }
    state.focusable = true;
    state.focused = m_list->hasFocus() && m_list->currentIndex() == m_row;
    state.selectable = true;
    state.selected = m_list->selectionModel()->isSelected(m_row);
    state.disabled = !m_list->isEnabled();
    state.invisible = !m_list->isVisible();
    state.offscreen = !m_list->visualRect(m_row).intersects(m_list->viewport()->rect());
    return state;
}

void *ConversationEntryAccessible::interface_cast(QAccessible::InterfaceType type)
{
    return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface *>(this) : nullptr;
}

QStringList ConversationEntryAccessible::actionNames() const
{
    return {openAction};
}

void ConversationEntryAccessible::doAction(const QString &name)
{
    if (name == openAction && isValid() && m_list->isEnabled())
        Q_EMIT m_list->openRequested(m_row);
}

} // namespace morvane
