#include "ui/window/ShortcutDelegate.h"

#include "ui/theme/MorvaneStyle.h"
#include "ui/theme/ThemeColors.h"

#include <QPainter>

namespace morvane {

namespace {

constexpr int inset = 10;
constexpr int spacing = 5;
constexpr qreal radius = 6;

struct Places {
    QRect meaning;
    QRect keys;
};

/// Side by side, or one below the other where the line is too short for both.
Places placesIn(const QRect &row, const QFontMetrics &metrics, const QString &meaning, const QString &keys)
{
    const QRect text = row.adjusted(inset, spacing, -inset, -spacing);
    const int wanted = metrics.horizontalAdvance(meaning) + metrics.horizontalAdvance(keys) + 2 * inset;
    if (wanted <= text.width())
        return {text, text};
    const int line = metrics.height();
    return {text.adjusted(0, 0, 0, -line), text.adjusted(0, text.height() - line, 0, 0)};
}

} // namespace

void ShortcutDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                             const QModelIndex &index) const
{
    const ThemeColors colors = ThemeColors::fromPalette(option.palette);
    const QString keys = index.data(keysRole).toString();
    const QString meaning = index.data(Qt::DisplayRole).toString();
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    QFont font = option.font;
    font.setBold(keys.isEmpty());
    painter->setFont(font);
    painter->setPen(colors.text);
    const Places places = placesIn(option.rect, QFontMetrics(font), meaning, keys);
    painter->drawText(places.meaning, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextWordWrap, meaning);
    painter->setPen(colors.secondaryText);
    painter->drawText(places.keys, Qt::AlignRight | Qt::AlignVCenter, keys);
    if (option.state & QStyle::State_HasFocus)
        MorvaneStyle::drawFocusRing(*painter, QRectF(option.rect.adjusted(2, 1, -2, -1)), radius,
                                    option.palette);
    painter->restore();
}

QSize ShortcutDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const QString keys = index.data(keysRole).toString();
    const QString meaning = index.data(Qt::DisplayRole).toString();
    const QFontMetrics metrics(option.font);
    const int width = qMax(100, option.rect.width());
    const int both = metrics.horizontalAdvance(meaning) + metrics.horizontalAdvance(keys) + 2 * inset;
    if (both <= width - 2 * inset)
        return {100, metrics.height() + 2 * spacing};
    const QRect wrapped =
        metrics.boundingRect(QRect(0, 0, width - 2 * inset, 10'000), Qt::TextWordWrap, meaning);
    return {100, wrapped.height() + metrics.height() + 2 * spacing};
}

} // namespace morvane
