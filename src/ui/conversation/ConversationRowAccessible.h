#pragma once

#include "ui/controls/RowAccessible.h"
#include "ui/conversation/ConversationItem.h"

namespace morvane {

class ChatScrollView;

/// One row of the conversation for assistive technology: its words, and what can be done with it.
class ConversationRowAccessible : public RowAccessible<ChatScrollView> {
public:
    ConversationRowAccessible(ChatScrollView *view, const ConversationItem &item);

    const ConversationItem &item() const { return m_item; }

    bool isValid() const override;
    QString text(QAccessible::Text text) const override;
    QRect rect() const override;
    QAccessible::Role role() const override;
    QAccessible::State state() const override;
    void *interface_cast(QAccessible::InterfaceType type) override;

    QStringList actionNames() const override;
    void doAction(const QString &name) override;

private:
    qsizetype row() const;
    bool isHeader() const { return m_item.kind == ConversationItem::Kind::activityHeader; }
    QString description() const;

    ConversationItem m_item;
};

} // namespace morvane
