#include "ui/window/ConversationList.h"

#include "ui/window/ConversationListAccessible.h"

namespace morvane {

ConversationList::ConversationList(QWidget *parent) : QListView(parent)
{
    QAccessible::installFactory(&ConversationListAccessible::create);
}

} // namespace morvane
