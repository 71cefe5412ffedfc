#include "ui/theme/CardPainting.h"

#include "ui/theme/ThemeColors.h"

#include <QPainter>
#include <QWidget>

namespace morvane {

namespace {

constexpr qreal radius = 10;

} // namespace

void paintCard(QWidget &widget)
{
    const ThemeColors colors = ThemeColors::fromPalette(widget.palette());
    QPainter painter(&widget);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(colors.border);
    painter.setBrush(colors.surface);
    painter.drawRoundedRect(QRectF(widget.rect()).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
}

} // namespace morvane
