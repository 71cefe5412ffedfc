#include "ui/conversation/ChatScrollViewAccessible.h"

#include "ui/conversation/ChatScrollView.h"
#include "ui/conversation/ConversationRowAccessible.h"

#include <QToolButton>

using namespace Qt::StringLiterals;

namespace morvane {

QAccessibleInterface *ChatScrollViewAccessible::create(const QString &className, QObject *object)
{
    if (className != "morvane::ChatScrollView"_L1)
        return nullptr;
    return new ChatScrollViewAccessible(static_cast<ChatScrollView *>(object));
}

ChatScrollViewAccessible::ChatScrollViewAccessible(ChatScrollView *view)
    : QAccessibleWidget(view, QAccessible::List), m_view(view)
{
    m_messages = view->content().messageCount();
    m_activity = view->content().activityCount();
    m_connections = {
        QObject::connect(view, &ChatScrollView::rowsReset, view, [this] { forgetRows(); }),
        QObject::connect(view, &ChatScrollView::rowsAdded, view, [this] { tellAdded(); }),
        QObject::connect(view, &ChatScrollView::stepsFolded, view, [this] { forgetSteps(); }),
        QObject::connect(view, &ChatScrollView::currentRowChanged, view,
                         [this](qsizetype row) { tellFocus(row); }),
        QObject::connect(view, &ChatScrollView::rowChanged, view,
                         [this](qsizetype row) {
                             QAccessibleEvent event(child(static_cast<int>(row)), QAccessible::NameChanged);
                             QAccessible::updateAccessibility(&event);
                         }),
    };
}

ChatScrollViewAccessible::~ChatScrollViewAccessible()
{
    for (const QMetaObject::Connection &connection : m_connections)
        QObject::disconnect(connection);
    for (const QAccessible::Id id : std::as_const(m_rows))
        QAccessible::deleteAccessibleInterface(id);
}

int ChatScrollViewAccessible::childCount() const
{
    return static_cast<int>(m_view->content().count() + m_view->buttons().size());
}

QAccessibleInterface *ChatScrollViewAccessible::child(int index) const
{
    const qsizetype rows = m_view->content().count();
    if (index < 0 || index >= childCount())
        return nullptr;
    if (index >= rows)
        return QAccessible::queryAccessibleInterface(m_view->buttons().at(index - rows));
    const ConversationItem item = m_view->content().item(index);
    auto known = m_rows.constFind(item);
    if (known == m_rows.constEnd()) {
        const auto id = QAccessible::registerAccessibleInterface(new ConversationRowAccessible(m_view, item));
        known = m_rows.insert(item, id);
    }
    return QAccessible::accessibleInterface(*known);
}

int ChatScrollViewAccessible::indexOfChild(const QAccessibleInterface *child) const
{
    if (const auto *row = dynamic_cast<const ConversationRowAccessible *>(child))
        return static_cast<int>(m_view->content().position(row->item()));
    const auto buttons = m_view->buttons();
    const qsizetype button =
        child == nullptr ? -1 : buttons.indexOf(qobject_cast<QToolButton *>(child->object()));
    return button < 0 ? -1 : static_cast<int>(m_view->content().count() + button);
}

QAccessibleInterface *ChatScrollViewAccessible::childAt(int x, int y) const
{
    for (QToolButton *button : m_view->buttons())
        if (button->rect().contains(button->mapFromGlobal(QPoint(x, y))))
            return QAccessible::queryAccessibleInterface(button);
    const qsizetype row = m_view->rowAt(m_view->viewport()->mapFromGlobal(QPoint(x, y)));
    return child(static_cast<int>(row));
}

QAccessibleInterface *ChatScrollViewAccessible::focusChild() const
{
    if (m_view->hasFocus())
        return child(static_cast<int>(m_view->currentRow()));
    return QAccessibleWidget::focusChild();
}

void ChatScrollViewAccessible::forget(QAccessible::Id id)
{
    if (QAccessibleInterface *row = QAccessible::accessibleInterface(id)) {
        QAccessibleEvent event(row, QAccessible::ObjectDestroyed);
        QAccessible::updateAccessibility(&event);
    }
    QAccessible::deleteAccessibleInterface(id);
}

void ChatScrollViewAccessible::forgetSteps()
{
    for (auto row = m_rows.begin(); row != m_rows.end();) {
        if (row.key().kind == ConversationItem::Kind::activityStep) {
            forget(*row);
            row = m_rows.erase(row);
        } else {
            ++row;
        }
    }
    m_activity = m_view->content().activityCount();
}

void ChatScrollViewAccessible::forgetRows()
{
    for (const QAccessible::Id id : std::exchange(m_rows, {}))
        forget(id);
    m_messages = 0;
    m_activity = 0;
    tellAdded();
}

void ChatScrollViewAccessible::tellAdded()
{
    const ConversationContent &content = m_view->content();
    const auto tell = [&](const ConversationItem &item) {
        QAccessibleEvent event(child(static_cast<int>(content.position(item))), QAccessible::ObjectCreated);
        QAccessible::updateAccessibility(&event);
    };
    while (m_messages < content.messageCount())
        tell({.kind = ConversationItem::Kind::message, .index = m_messages++});
    while (m_activity < content.activityCount()) {
        const bool isHeader = m_activity == 0;
        tell(
            {.kind = isHeader ? ConversationItem::Kind::activityHeader : ConversationItem::Kind::activityStep,
             .index = isHeader ? 0 : m_activity - 1});
        ++m_activity;
    }
}

void ChatScrollViewAccessible::tellFocus(qsizetype row) const
{
    if (m_view->hasFocus()) {
        QAccessibleEvent event(child(static_cast<int>(row)), QAccessible::Focus);
        QAccessible::updateAccessibility(&event);
    }
}

} // namespace morvane
