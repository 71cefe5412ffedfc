#include "ui/window/ConversationDelegate.h"

#include "ui/theme/ThemeColors.h"
#include "ui/window/ConversationListModel.h"

#include <QPainter>

namespace morvane {

namespace {

constexpr int inset = 10;
constexpr int spacing = 7;
constexpr qreal radius = 6;

QFont detailFont(QFont font)
{
    font.setPointSizeF(font.pointSizeF() * 0.85);
    return font;
}

/// The mark of the focus where the row is selected too, whose ground has the colour of the usual mark.
void drawFocus(QPainter &painter, const QRectF &row, const QColor &color)
{
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(color, 2));
    const int inside = 3;
    painter.drawRoundedRect(row.adjusted(inside, inside, -inside, -inside), radius - 2, radius - 2);
}

} // namespace

void ConversationDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                                 const QModelIndex &index) const
{
    const ThemeColors colors = ThemeColors::fromPalette(option.palette);
    const bool selected = option.state & QStyle::State_Selected;
    const QRect row = option.rect.adjusted(4, 1, -4, -1);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    if (selected || (option.state & QStyle::State_MouseOver)) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(selected ? colors.selection : colors.hover);
        painter->drawRoundedRect(row, radius, radius);
    }
    const QRect text = row.adjusted(inset, spacing, -buttonPlace, -spacing);
    const QFontMetrics titleMetrics(option.font);
    painter->setFont(option.font);
    painter->setPen(selected ? colors.onSelection : colors.text);
    const QString title = index.data(Qt::DisplayRole).toString().simplified();
    painter->drawText(text, Qt::AlignLeft | Qt::AlignTop,
                      titleMetrics.elidedText(title, Qt::ElideRight, text.width()));
    const QFont small = detailFont(option.font);
    painter->setFont(small);
    painter->setPen(selected ? colors.onSelection : colors.secondaryText);
    const QString detail = index.data(ConversationListModel::detailRole).toString();
    painter->drawText(text, Qt::AlignLeft | Qt::AlignBottom,
                      QFontMetrics(small).elidedText(detail, Qt::ElideRight, text.width()));
    if (option.state & QStyle::State_HasFocus)
        drawFocus(*painter, QRectF(row), selected ? colors.onSelection : colors.focusRing);
    painter->restore();
}

QSize ConversationDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &) const
{
    const int lines = QFontMetrics(option.font).height() + QFontMetrics(detailFont(option.font)).height();
    return {100, lines + 2 * spacing + 6};
}

} // namespace morvane
