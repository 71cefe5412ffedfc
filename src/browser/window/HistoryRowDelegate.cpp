#include "browser/window/HistoryRowDelegate.h"

#include "browser/window/HistoryListModel.h"
#include "ui/theme/Icons.h"
#include "ui/theme/MorvaneStyle.h"
#include "ui/theme/ThemeColors.h"

#include <QAbstractItemView>
#include <QPainter>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int rowMargin = 8;
constexpr qreal rowRadius = 6;

} // namespace

QSize HistoryRowDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const int lines = index.data(HistoryListModel::isHeadingRole).toBool() ? 1 : 2;
    return {0, option.fontMetrics.lineSpacing() * lines + 2 * rowMargin};
}

void HistoryRowDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                               const QModelIndex &index) const
{
    const ThemeColors colors = ThemeColors::fromPalette(option.palette);
    const bool isHeading = index.data(HistoryListModel::isHeadingRole).toBool();
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    const QRectF place = QRectF(option.rect).adjusted(2, 1, -2, -1);
    if (isSelected || option.state.testFlag(QStyle::State_MouseOver)) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(isSelected ? colors.selection : colors.hover);
        painter->drawRoundedRect(place, rowRadius, rowRadius);
    }
    const QString title = index.data(Qt::DisplayRole).toString();
    const QFontMetrics &metrics = option.fontMetrics;
    QRect line(option.rect.left() + rowMargin, option.rect.top() + rowMargin,
               option.rect.width() - 2 * rowMargin, metrics.lineSpacing());
    painter->setPen(isSelected ? colors.onSelection : colors.text);
    if (isHeading) {
        QFont bold = option.font;
        bold.setBold(true);
        painter->setFont(bold);
        painter->drawText(line, Qt::AlignVCenter | Qt::AlignLeft, title);
    } else {
        const int side = metrics.height();
        const QRect icon(line.left(), line.center().y() - side / 2, side, side);
        const auto favicon = index.data(Qt::DecorationRole).value<QImage>();
        const qreal ratio = option.widget ? option.widget->devicePixelRatioF() : 1.0;
        if (favicon.isNull())
            painter->drawPixmap(icon.topLeft(),
                                symbolPixmap(Symbol::globe, side, painter->pen().color(), ratio));
        else
            painter->drawImage(icon, favicon);
        line.setLeft(icon.right() + rowMargin);
        painter->drawText(line, Qt::AlignVCenter | Qt::AlignLeft,
                          metrics.elidedText(title, Qt::ElideRight, line.width()));
        line.translate(0, metrics.lineSpacing());
        if (!isSelected)
            painter->setPen(colors.secondaryText);
        painter->drawText(line, Qt::AlignVCenter | Qt::AlignLeft,
                          metrics.elidedText(index.data(HistoryListModel::detailRole).toString(),
                                             Qt::ElideRight, line.width()));
    }
    if (option.state.testFlag(QStyle::State_HasFocus))
        MorvaneStyle::drawFocusRing(*painter, place, rowRadius, option.palette);
    painter->restore();
}

} // namespace morvane
