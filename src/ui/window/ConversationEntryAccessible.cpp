#include "ui/window/ConversationEntryAccessible.h"

#include "ui/window/ConversationList.h"

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

const auto openAction = u"Open"_s;

} // namespace

ConversationEntryAccessible::ConversationEntryAccessible(ConversationList *list, const QModelIndex &row)
    : RowAccessible(list), m_row(row)
{
}

bool ConversationEntryAccessible::isValid() const
{
    return view() && m_row.isValid();
}

QString ConversationEntryAccessible::text(QAccessible::Text text) const
{
    return isValid() && text == QAccessible::Name ? m_row.data(Qt::AccessibleTextRole).toString() : QString();
}

QRect ConversationEntryAccessible::rect() const
{
    if (!isValid())
        return {};
    return onScreen(view()->visualRect(m_row));
}

QAccessible::State ConversationEntryAccessible::state() const
{
    QAccessible::State state;
    if (!isValid()) {
        state.invalid = true;
        return state;
    }
    state.focusable = true;
    state.focused = view()->hasFocus() && view()->currentIndex() == m_row;
    state.selectable = true;
    state.selected = view()->selectionModel()->isSelected(m_row);
    state.disabled = !view()->isEnabled();
    state.invisible = !view()->isVisible();
    state.offscreen = isOffscreen(view()->visualRect(m_row));
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
    if (name == openAction && isValid() && view()->isEnabled())
        Q_EMIT view()->openRequested(m_row);
}

} // namespace morvane
