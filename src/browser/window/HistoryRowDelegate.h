#pragma once

#include <QStyledItemDelegate>

namespace morvane {

/// Paints the rows of the history sheet: a day's name, or icon, title, host and time of a page.
class HistoryRowDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};

} // namespace morvane
