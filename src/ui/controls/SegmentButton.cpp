#include "ui/controls/SegmentButton.h"

#include "ui/theme/MorvaneStyle.h"
#include "ui/theme/ThemeColors.h"

#include <QPainter>
#include <algorithm>

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

QSize SegmentButton::minimumSizeHint() const
{
    const QFontMetrics metrics(bold(font()));
    int widest = 0;
    for (const QString &word : text().split(u' '))
        widest = std::max(widest, metrics.horizontalAdvance(word));
    return {widest + 2 * horizontalPadding, sizeHint().height()};
}

QSize SegmentButton::sizeWithin(int width) const
{
    const QSize wanted = sizeHint();
    if (wanted.width() <= width)
        return wanted;
    const QRect room(0, 0, width - 2 * horizontalPadding, QWIDGETSIZE_MAX);
    const QRect lines =
        QFontMetrics(bold(font())).boundingRect(room, Qt::AlignCenter | Qt::TextWordWrap, text());
    return {width, lines.height() + 2 * verticalPadding};
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
    if (width() < sizeHint().width())
        painter.drawText(rect().adjusted(horizontalPadding, 0, -horizontalPadding, 0),
                         Qt::AlignCenter | Qt::TextWordWrap, text());
    else
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
