#pragma once

#include <QAccessible>
#include <QPersistentModelIndex>
#include <QPointer>

namespace morvane {

class ConversationList;

/// One row of the sidebar for assistive technology, with the action "Open".
class ConversationEntryAccessible : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    ConversationEntryAccessible(ConversationList *list, const QModelIndex &row) : m_list(list), m_row(row) {}

    const QPersistentModelIndex &row() const { return m_row; }

    bool isValid() const override;
    QObject *object() const override { return nullptr; }
    QWindow *window() const override;
    QAccessibleInterface *parent() const override;
    QAccessibleInterface *child(int) const override { return nullptr; }
    QAccessibleInterface *childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface *) const override { return -1; }
    QString text(QAccessible::Text text) const override;
    void setText(QAccessible::Text, const QString &) override {}
    QRect rect() const override;
    QAccessible::Role role() const override { return QAccessible::ListItem; }
    QAccessible::State state() const override;
    void *interface_cast(QAccessible::InterfaceType type) override;

    QStringList actionNames() const override;
    void doAction(const QString &name) override;
    QStringList keyBindingsForAction(const QString &) const override { return {}; }

private:
    QPointer<ConversationList> m_list;
    QPersistentModelIndex m_row;
};

} // namespace morvane
