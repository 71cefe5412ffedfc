#include "ui/controls/PickerDelegate.h"

#include "ui/controls/PickerChoices.h"
#include "ui/theme/Icons.h"
#include "ui/theme/ThemeColors.h"

#include <QComboBox>
#include <QPainter>

namespace morvane {

namespace {

constexpr int horizontalPadding = 8;
constexpr int verticalPadding = 5;
constexpr int spacing = 8;
constexpr qreal radius = 5;

} // namespace

PickerDelegate::PickerDelegate(QComboBox &picker) : QStyledItemDelegate(&picker), m_picker(picker) {}

QSize PickerDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &) const
{
    return {0, option.fontMetrics.lineSpacing() + 2 * verticalPadding};
}

void PickerDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                           const QModelIndex &index) const
{
    const ThemeColors colors = ThemeColors::fromPalette(option.palette);
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setFont(option.font);
    if (isSelected) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(colors.accent);
        painter->drawRoundedRect(QRectF(option.rect).adjusted(3, 1, -3, -1), radius, radius);
    }
    const QColor ink = isSelected ? colors.onAccent : colors.text;
    const int mark = option.fontMetrics.ascent();
    QRect line = option.rect.adjusted(horizontalPadding, 0, -horizontalPadding, 0);
    const auto placed = [&option](const QRect &rect) {
        return QStyle::visualRect(option.direction, option.rect, rect);
    };
    if (index.row() == m_picker.currentIndex()) {
        const QRect place(line.left(), line.center().y() - mark / 2, mark, mark);
        painter->drawPixmap(placed(place).topLeft(),
                            symbolPixmap(Symbol::check, mark, ink, painter->device()->devicePixelRatioF()));
    }
    line.setLeft(line.left() + mark + spacing);
    const auto alignment = QStyle::visualAlignment(option.direction, Qt::AlignLeft);
    const auto opposite = QStyle::visualAlignment(option.direction, Qt::AlignRight);
    if (const QString detail = index.data(PickerChoices::detailRole).toString(); !detail.isEmpty()) {
        painter->setPen(isSelected ? colors.onAccent : colors.secondaryText);
        painter->drawText(placed(line), static_cast<int>(opposite | Qt::AlignVCenter), detail);
        line.setRight(line.right() - option.fontMetrics.horizontalAdvance(detail) - spacing);
    }
    painter->setPen(ink);
    painter->drawText(
        placed(line), static_cast<int>(alignment | Qt::AlignVCenter) | Qt::TextSingleLine,
        option.fontMetrics.elidedText(index.data(Qt::DisplayRole).toString(), Qt::ElideMiddle, line.width()));
    painter->restore();
}

} // namespace morvane
