#pragma once

#include <QStyledItemDelegate>

namespace morvane {

/// Draws one row of the sidebar: the title, and date and count below it.
class ConversationDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    /// Space at the right end of a row for the button that deletes it.
    static constexpr int buttonPlace = 30;

    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    /// The narrowest list in which nothing of a row is cut but its title.
    static int minimumWidth(const QFont &font);

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};

} // namespace morvane
