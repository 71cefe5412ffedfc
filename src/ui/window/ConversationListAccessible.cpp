#include "ui/window/ConversationListAccessible.h"

#include "ui/window/ConversationEntryAccessible.h"
#include "ui/window/ConversationList.h"

#include <QAbstractItemModel>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

QAccessibleInterface *ConversationListAccessible::create(const QString &className, QObject *object)
{
    if (className != "morvane::ConversationList"_L1)
        return nullptr;
    return new ConversationListAccessible(static_cast<ConversationList *>(object));
}

ConversationListAccessible::ConversationListAccessible(ConversationList *list)
    : QAccessibleWidget(list, QAccessible::List), m_list(list)
{
    const QAbstractItemModel *model = list->model();
    m_connections = {
        QObject::connect(model, &QAbstractItemModel::rowsInserted, list,
                         [this](const QModelIndex &, int first, int last) { tellAdded(first, last); }),
        QObject::connect(model, &QAbstractItemModel::rowsAboutToBeRemoved, list,
                         [this](const QModelIndex &, int first, int last) { forget(first, last); }),
        QObject::connect(model, &QAbstractItemModel::rowsAboutToBeMoved, list,
                         [this](const QModelIndex &, int first, int last) { forget(first, last); }),
        QObject::connect(model, &QAbstractItemModel::rowsMoved, list,
                         [this](const QModelIndex &, int from, int, const QModelIndex &, int to) {
                             // The toolkit counts the place with the row still in its old one.
                             const int row = to > from ? to - 1 : to;
                             tellAdded(row, row);
                         }),
        QObject::connect(model, &QAbstractItemModel::modelReset, list, [this] { forgetAll(); }),
        QObject::connect(model, &QAbstractItemModel::dataChanged, list,
                         [this](const QModelIndex &first, const QModelIndex &last) {
                             for (int row = first.row(); row <= last.row(); ++row) {
                                 QAccessibleEvent event(child(row), QAccessible::NameChanged);
                                 QAccessible::updateAccessibility(&event);
                             }
                         }),
    };
}

ConversationListAccessible::~ConversationListAccessible()
{
    for (const QMetaObject::Connection &connection : m_connections)
        QObject::disconnect(connection);
    for (const QAccessible::Id id : std::as_const(m_rows))
        QAccessible::deleteAccessibleInterface(id);
}

int ConversationListAccessible::childCount() const
{
    return m_list->model()->rowCount();
}

QAccessibleInterface *ConversationListAccessible::child(int index) const
{
    const QModelIndex row = m_list->model()->index(index, 0);
    if (!row.isValid())
        return nullptr;
    auto known = m_rows.constFind(row);
    if (known == m_rows.constEnd()) {
        const auto id =
            QAccessible::registerAccessibleInterface(new ConversationEntryAccessible(m_list, row));
        known = m_rows.insert(row, id);
    }
    return QAccessible::accessibleInterface(*known);
}

int ConversationListAccessible::indexOfChild(const QAccessibleInterface *child) const
{
    const auto *entry = dynamic_cast<const ConversationEntryAccessible *>(child);
    return entry != nullptr ? entry->row().row() : -1;
}

QAccessibleInterface *ConversationListAccessible::childAt(int x, int y) const
{
    return child(m_list->indexAt(m_list->viewport()->mapFromGlobal(QPoint(x, y))).row());
}

QAccessibleInterface *ConversationListAccessible::focusChild() const
{
    return m_list->hasFocus() ? child(m_list->currentIndex().row()) : nullptr;
}

void ConversationListAccessible::tellAdded(int first, int last) const
{
    for (int row = first; row <= last; ++row) {
        QAccessibleEvent event(child(row), QAccessible::ObjectCreated);
        QAccessible::updateAccessibility(&event);
    }
}

void ConversationListAccessible::forget(int first, int last)
{
    for (int row = first; row <= last; ++row) {
        if (const QAccessible::Id id = m_rows.take(m_list->model()->index(row, 0))) {
            QAccessibleEvent event(QAccessible::accessibleInterface(id), QAccessible::ObjectDestroyed);
            QAccessible::updateAccessibility(&event);
            QAccessible::deleteAccessibleInterface(id);
        }
    }
}

void ConversationListAccessible::forgetAll()
{
    for (const QAccessible::Id id : std::exchange(m_rows, {}))
        QAccessible::deleteAccessibleInterface(id);
}

} // namespace morvane
