#pragma once

#include "ui/conversation/ConversationItem.h"

#include <QAccessibleWidget>
#include <QHash>
#include <QList>
#include <QMetaObject>

namespace morvane {

class ChatScrollView;

/// The conversation as assistive technology sees it: a list with one element for each row, in order, whether
/// the row is in sight or not, followed by the buttons that are in sight.
class ChatScrollViewAccessible : public QAccessibleWidget {
public:
    explicit ChatScrollViewAccessible(ChatScrollView *view);
    ~ChatScrollViewAccessible() override;

    /// For QAccessible::installFactory.
    static QAccessibleInterface *create(const QString &className, QObject *object);

    int childCount() const override;
    QAccessibleInterface *child(int index) const override;
    int indexOfChild(const QAccessibleInterface *child) const override;
    QAccessibleInterface *childAt(int x, int y) const override;
    QAccessibleInterface *focusChild() const override;

private:
    static void forget(QAccessible::Id id);
    void forgetSteps();
    void forgetRows();
    void tellAdded();
    void tellFocus(qsizetype row) const;

    ChatScrollView *m_view;
    mutable QHash<ConversationItem, QAccessible::Id> m_rows;
    QList<QMetaObject::Connection> m_connections;
    qsizetype m_messages = 0; ///< Told of so far.
    qsizetype m_activity = 0;
};

} // namespace morvane
