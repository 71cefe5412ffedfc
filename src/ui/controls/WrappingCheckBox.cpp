#include "ui/controls/WrappingCheckBox.h"

#include "ui/controls/WrappedText.h"
#include "ui/theme/Icons.h"
#include "ui/theme/MorvaneStyle.h"
#include "ui/theme/ThemeColors.h"

#include <QPainter>
#include <QStyle>
#include <algorithm>

namespace morvane {

namespace {

constexpr int maximumLines = 8;
constexpr int padding = 4;
constexpr int spacing = 8;
constexpr qreal focusRadius = 5;
constexpr qreal boxRadius = 4;

} // namespace

WrappingCheckBox::WrappingCheckBox(const QString &text, QWidget *parent) : Wrapping(text, parent)
{
    growDownwards();
}

int WrappingCheckBox::boxSide() const
{
    return std::max(style()->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, this), fontMetrics().ascent());
}

int WrappingCheckBox::textOffset() const
{
    return padding + boxSide() + spacing;
}

WrappedText WrappingCheckBox::wrappedText() const
{
    return {text(), font(), maximumLines};
}

QMargins WrappingCheckBox::textMargins() const
{
    return {textOffset(), padding, padding, padding};
}

void WrappingCheckBox::drawBox(QPainter &painter, const QRect &box) const
{
    const ThemeColors colors = ThemeColors::fromPalette(palette());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(isChecked() ? colors.accent : colors.controlBorder);
    painter.setBrush(isChecked() ? colors.accent : isDown() || underMouse() ? colors.hover : colors.surface);
    painter.drawRoundedRect(QRectF(box).adjusted(0.5, 0.5, -0.5, -0.5), boxRadius, boxRadius);
    if (isChecked())
        painter.drawPixmap(box.topLeft(),
                           symbolPixmap(Symbol::check, box.width(), colors.onAccent, devicePixelRatioF()));
    painter.restore();
}

void WrappingCheckBox::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const int side = boxSide();
    const int lineHeight = fontMetrics().lineSpacing();
    QRect box(padding, padding + std::max(0, lineHeight - side) / 2, side, side);
    QRect label = rect().adjusted(textOffset(), padding, -padding, -padding);
    drawBox(painter, QStyle::visualRect(layoutDirection(), rect(), box));

    painter.setPen(palette().color(QPalette::WindowText));
    laidOut().draw(painter, QStyle::visualRect(layoutDirection(), rect(), label), Qt::AlignLeft);
    if (hasFocus())
        MorvaneStyle::drawFocusRing(painter, rect(), focusRadius, palette());
}

} // namespace morvane
