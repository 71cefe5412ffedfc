#pragma once

#include <QStyledItemDelegate>

class QComboBox;

namespace morvane {

/// Draws the rows of a MenuPicker: a mark at the chosen one, long names elided in the middle, where they
/// differ least, and the detail at the end.
class PickerDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    explicit PickerDelegate(QComboBox &picker);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    QComboBox &m_picker;
};

} // namespace morvane
