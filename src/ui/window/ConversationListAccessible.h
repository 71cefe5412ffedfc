#pragma once

#include <QAccessibleWidget>
#include <QHash>
#include <QList>
#include <QMetaObject>
#include <QPersistentModelIndex>

namespace morvane {

class ConversationList;

/// The sidebar's list for assistive technology: an element for each row, in or out of sight. One of the
/// toolkit's own would offer to toggle a row, which opens nothing.
class ConversationListAccessible : public QAccessibleWidget {
public:
    explicit ConversationListAccessible(ConversationList *list);
    ~ConversationListAccessible() override;

    /// For QAccessible::installFactory.
    static QAccessibleInterface *create(const QString &className, QObject *object);

    int childCount() const override;
    QAccessibleInterface *child(int index) const override;
    int indexOfChild(const QAccessibleInterface *child) const override;
    QAccessibleInterface *childAt(int x, int y) const override;
    QAccessibleInterface *focusChild() const override;

private:
    void tellAdded(int first, int last) const;
    void forget(int first, int last);
    void forgetAll();

    ConversationList *m_list;
    mutable QHash<QPersistentModelIndex, QAccessible::Id> m_rows;
    QList<QMetaObject::Connection> m_connections;
};

} // namespace morvane
