#include "ui/controls/SegmentButton.h"

#include "ui/theme/MorvaneStyle.h"
#include "ui/theme/ThemeColors.h"

#include <QPainter>

namespace morvane {

namespace {

constexpr int horizontalPadding = 12;
constexpr int verticalPadding = 6;
constexpr qreal radius = 6;

QFont bold(QFont font)
{
    font.setBold(true);
    return font;
}

} // namespace

SegmentButton::SegmentButton(const QString &label, QWidget *parent) : QRadioButton(label, parent)
{
    setAttribute(Qt::WA_Hover);
}

QSize SegmentButton::sizeHint() const
{
    // As wide as the label in bold, so that nothing moves when the choice does.
    const QFontMetrics metrics(bold(font()));
    return {metrics.horizontalAdvance(text()) + 2 * horizontalPadding,
            metrics.lineSpacing() + 2 * verticalPadding};
}

void SegmentButton::paintEvent(QPaintEvent *)
{
    const ThemeColors colors = ThemeColors::fromPalette(palette());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF ground = QRectF(rect()).adjusted(1, 1, -1, -1);
    if (isChecked() || (underMouse() && isEnabled())) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(isChecked() ? colors.accent : colors.hover);
        painter.drawRoundedRect(ground, radius, radius);
    }
    if (isChecked())
        painter.setFont(bold(font()));
    painter.setPen(isChecked() ? colors.onAccent : colors.text);
    painter.drawText(rect(), Qt::AlignCenter, text());
    if (hasFocus()) {
        // On the accent the ring would not be seen, so it lies inside, in the colour of the label.
        if (isChecked()) {
            painter.setPen(QPen(colors.onAccent, 2));
            painter.setBrush(Qt::NoBrush);
            painter.drawRoundedRect(ground.adjusted(2, 2, -2, -2), radius - 2, radius - 2);
        } else {
            MorvaneStyle::drawFocusRing(painter, rect(), radius, palette());
        }
    }
}

} // namespace morvane
