#include "ui/controls/BadgeLabel.h"

#include "ui/theme/ThemeColors.h"

#include <QPainter>

namespace morvane {

namespace {

constexpr int horizontalPadding = 8;
constexpr int verticalPadding = 2;

} // namespace

BadgeLabel::BadgeLabel(const QString &text, QWidget *parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setText(text);
    setContentsMargins(horizontalPadding, verticalPadding, horizontalPadding, verticalPadding);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
}

void BadgeLabel::paintEvent(QPaintEvent *event)
{
    {
        const ThemeColors colors = ThemeColors::fromPalette(palette());
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(colors.userBubble);
        painter.drawRoundedRect(rect(), height() / 2.0, height() / 2.0);
    }
    QLabel::paintEvent(event);
}

} // namespace morvane
