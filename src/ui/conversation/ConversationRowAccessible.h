#pragma once

#include "ui/conversation/ConversationItem.h"

#include <QAccessible>
#include <QPointer>

namespace morvane {

class ChatScrollView;

/// One row of the conversation for assistive technology: its words, and what can be done with it.
class ConversationRowAccessible : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    ConversationRowAccessible(ChatScrollView *view, const ConversationItem &item) : m_view(view), m_item(item)
    {
    }

    const ConversationItem &item() const { return m_item; }

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
    QAccessible::Role role() const override;
    QAccessible::State state() const override;
    void *interface_cast(QAccessible::InterfaceType type) override;

    QStringList actionNames() const override;
    void doAction(const QString &name) override;
    QStringList keyBindingsForAction(const QString &) const override { return {}; }

private:
    qsizetype row() const;
    bool isHeader() const { return m_item.kind == ConversationItem::Kind::activityHeader; }
    QString description() const;

    QPointer<ChatScrollView> m_view;
    ConversationItem m_item;
};

} // namespace morvane
