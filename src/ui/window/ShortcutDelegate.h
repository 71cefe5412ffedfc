#pragma once

#include <QStyledItemDelegate>

namespace morvane {

/// Draws a line of the list of shortcuts: what is done on the left, the keys on the right. A line without
/// keys is the title of those below it.
class ShortcutDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    static constexpr int keysRole = Qt::UserRole + 1;

    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};

} // namespace morvane
