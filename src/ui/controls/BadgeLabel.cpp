#include "ui/controls/BadgeLabel.h"

#include "ui/theme/ThemeColors.h"

#include <QPainter>

namespace morvane {

namespace {

constexpr int horizontalPadding = 8;
constexpr int verticalPadding = 2;

} // namespace

BadgeLabel::BadgeLabel(const QString &text, QWidget *parent) : LineLabel(Qt::PlainText, parent)
{
    setText(text);
    setContentsMargins(horizontalPadding, verticalPadding, horizontalPadding, verticalPadding);
}

void BadgeLabel::paintEvent(QPaintEvent *event)
{
    {
        const ThemeColors colors = ThemeColors::fromPalette(palette());
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(colors.userBubble);
        const qreal radius = (fontMetrics().height() + 2 * verticalPadding) / 2.0;
        painter.drawRoundedRect(rect(), radius, radius);
    }
    QLabel::paintEvent(event);
}

} // namespace morvane
