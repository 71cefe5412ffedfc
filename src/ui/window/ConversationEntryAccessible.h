#pragma once

#include "ui/controls/RowAccessible.h"

#include <QPersistentModelIndex>

namespace morvane {

class ConversationList;

/// One row of the sidebar for assistive technology, with the action "Open".
class ConversationEntryAccessible : public RowAccessible<ConversationList> {
public:
    ConversationEntryAccessible(ConversationList *list, const QModelIndex &row);

    const QPersistentModelIndex &row() const { return m_row; }

    bool isValid() const override;
    QString text(QAccessible::Text text) const override;
    QRect rect() const override;
    QAccessible::Role role() const override { return QAccessible::ListItem; }
    QAccessible::State state() const override;
    void *interface_cast(QAccessible::InterfaceType type) override;

    QStringList actionNames() const override;
    void doAction(const QString &name) override;

private:
    QPersistentModelIndex m_row;
};

} // namespace morvane
