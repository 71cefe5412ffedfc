#include "ui/conversation/ConversationRowAccessible.h"

#include "base/LabelText.h"
#include "ui/conversation/ChatScrollView.h"

using namespace Qt::StringLiterals;

namespace morvane {

ConversationRowAccessible::ConversationRowAccessible(ChatScrollView *view, const ConversationItem &item)
    : RowAccessible(view), m_item(item)
{
}

qsizetype ConversationRowAccessible::row() const
{
    return view() ? view()->content().position(m_item) : -1;
}

bool ConversationRowAccessible::isValid() const
{
    return row() >= 0;
}

QString ConversationRowAccessible::text(QAccessible::Text text) const
{
    if (!isValid())
        return {};
    switch (text) {
    case QAccessible::Name:
        return view()->content().accessibleName(m_item);
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
    const QString whole = labelText(view()->content().whole(m_item));
    const QString hint = view()->actions().hint(m_item);
    return whole.isEmpty() ? hint : whole + u". "_s + hint;
}

QRect ConversationRowAccessible::rect() const
{
    if (!isValid())
        return {};
    return onScreen(view()->rowRect(row()));
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
    state.focusable = true;
    state.expandable = isHeader();
    state.expanded = isHeader() && !view()->content().isActivityFolded();
    state.collapsed = isHeader() && view()->content().isActivityFolded();
    state.readOnly = true;
    state.focused = view()->hasFocus() && view()->currentRow() == row();
    // Only where it tells something: a reader says of every other row that it is not selected.
    state.selected = state.selectable = view()->isSelected(m_item);
    state.offscreen = isOffscreen(view()->rowRect(row()));
    state.invisible = !view()->isVisible();
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
    return isValid() ? view()->actions().names(m_item) : QStringList();
}

void ConversationRowAccessible::doAction(const QString &name)
{
    if (isValid() && isHeader())
        view()->setActivityFolded(!view()->content().isActivityFolded());
    else if (isValid())
        view()->actions().perform(name, m_item);
}

} // namespace morvane
