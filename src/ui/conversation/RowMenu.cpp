#include "ui/conversation/RowMenu.h"

#include "ui/conversation/RowActions.h"

using namespace Qt::StringLiterals;

namespace morvane {

RowMenu::RowMenu(const RowActions &actions, const ConversationItem &item, Selection selection,
                 const QStringList &links, QWidget *parent)
    : QMenu(parent)
{
    setAttribute(Qt::WA_DeleteOnClose);
    if (selection == Selection::within)
        addAction(u"Copy Selection"_s, this, &RowMenu::copySelectionRequested);
    for (const QString &name : actions.names(item))
        addAction(name, this, [&actions, name, item] { actions.perform(name, item); });
    for (const QString &link : links) {
        QString shown = fontMetrics().elidedText(link, Qt::ElideMiddle, parent->width() / 2);
        addAction(u"Open "_s + shown.replace(u'&', u"&&"_s), this,
                  [this, link] { Q_EMIT linkRequested(link); });
    }
}

void RowMenu::popupAt(const QPoint &globalPosition)
{
    if (isEmpty()) {
        deleteLater();
        return;
    }
    popup(globalPosition);
    setActiveAction(actions().constFirst());
}

} // namespace morvane
