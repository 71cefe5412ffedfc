#pragma once

#include "ui/conversation/ConversationItem.h"

#include <QMenu>
#include <QStringList>

namespace morvane {

class RowActions;

/// The menu of a row: what can be done with it, and the addresses that it names. Deletes itself when it
/// closes.
class RowMenu : public QMenu {
    Q_OBJECT
public:
    enum class Selection { none, within };

    /// `actions` must outlive the menu.
    RowMenu(const RowActions &actions, const ConversationItem &item, Selection selection,
            const QStringList &links, QWidget *parent);

    /// Opens with its first entry current, so that the keyboard goes on from there; without entries it does
    /// not.
    void popupAt(const QPoint &globalPosition);

Q_SIGNALS:
    void copySelectionRequested();
    void linkRequested(const QString &address);
};

} // namespace morvane
