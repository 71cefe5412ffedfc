#include "ui/window/ConversationDelegate.h"

#include "ui/theme/ThemeColors.h"
#include "ui/window/ConversationListModel.h"

#include <QAbstractItemView>
#include <QPainter>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int inset = 10;
constexpr int spacing = 7;
constexpr qreal radius = 6;

/// As wide as a row's details become.
constexpr auto widestDate = "Nov 22, 12:00 AM"_L1;
const auto widestDetail = u"Nov 22, 12:00 AM · 1000 messages"_s;

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

/// Of a row, for its text.
int roomIn(int width)
{
    return width - 8 - inset - ConversationDelegate::buttonPlace;
}

/// Date and count side by side, or one below the other where the list is too narrow for both.
int detailLines(const QFont &font, int width)
{
    return QFontMetrics(detailFont(font)).horizontalAdvance(widestDetail) <= roomIn(width) ? 1 : 2;
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
    QString detail = index.data(ConversationListModel::detailRole).toString();
    if (detailLines(option.font, option.rect.width()) > 1)
        detail.replace(u" · "_s, u"\n"_s);
    painter->drawText(text, Qt::AlignLeft | Qt::AlignBottom, detail);
    if (option.state & QStyle::State_HasFocus)
        drawFocus(*painter, QRectF(row), selected ? colors.onSelection : colors.focusRing);
    painter->restore();
}

int ConversationDelegate::minimumWidth(const QFont &font)
{
    const int date = QFontMetrics(detailFont(font)).horizontalAdvance(widestDate);
    constexpr int scrollBar = 12;
    return date - roomIn(0) + scrollBar;
}

QSize ConversationDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &) const
{
    const auto *view = qobject_cast<const QAbstractItemView *>(option.widget);
    const int width = view ? view->viewport()->width() : option.rect.width();
    const int lines = QFontMetrics(option.font).height() +
                      detailLines(option.font, width) * QFontMetrics(detailFont(option.font)).height();
    return {100, lines + 2 * spacing + 6};
}

} // namespace morvane
