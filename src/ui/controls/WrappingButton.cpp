#include "ui/controls/WrappingButton.h"

#include "base/LabelText.h"
#include "ui/controls/HoverText.h"
#include "ui/controls/WrappedText.h"
#include "ui/theme/MorvaneStyle.h"
#include "ui/theme/ThemeColors.h"

#include <QEvent>
#include <QPainter>
#include <QStyleOptionButton>
#include <QStylePainter>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int maximumLines = 4;
constexpr int horizontalPadding = 14;
constexpr int verticalPadding = 8;
constexpr qreal focusRadius = 7;
constexpr int symbolSpacing = 6;

} // namespace

WrappingButton::WrappingButton(const QString &label, Alignment alignment, QWidget *parent)
    : Wrapping(parent), m_alignment(alignment)
{
    growDownwards();
    setLabel(label);
}

void WrappingButton::setLabel(const QString &label)
{
    m_label = labelText(label);
    setAccessibleName(m_label);
    if (isVisible())
        updateToolTip();
    updateGeometry();
    update();
}

void WrappingButton::setSymbol(Symbol symbol)
{
    m_symbol = symbol;
    updateGeometry();
    update();
}

WrappedText WrappingButton::wrappedText() const
{
    return {m_label, font(), maximumLines};
}

QMargins WrappingButton::textMargins() const
{
    return {horizontalPadding + symbolRoom(), verticalPadding, horizontalPadding, verticalPadding};
}

int WrappingButton::symbolRoom() const
{
    return m_symbol ? fontMetrics().height() + symbolSpacing : 0;
}

void WrappingButton::paintEvent(QPaintEvent *)
{
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    painter.drawControl(QStyle::CE_PushButtonBevel, option);

    const bool isProminent = isEnabled() && option.features.testFlag(QStyleOptionButton::DefaultButton);
    painter.setPen(isProminent ? ThemeColors::fromPalette(palette()).onAccent
                               : palette().color(QPalette::ButtonText));
    const auto alignment = m_alignment == Alignment::leading ? Qt::AlignLeft : Qt::AlignHCenter;
    const QRect room = rect().adjusted(horizontalPadding + symbolRoom(), 0, -horizontalPadding, 0);
    laidOut().draw(painter, room, alignment);
    if (m_symbol)
        drawSymbol(painter, room);
    // The style marks the focus only once Tab was pressed, but a sheet brings the focus with it.
    if (hasFocus() && isProminent)
        MorvaneStyle::drawFocusRingOnAccent(painter, rect(), focusRadius, palette());
    else if (hasFocus())
        MorvaneStyle::drawFocusRing(painter, rect(), focusRadius, palette());
}

void WrappingButton::drawSymbol(QPainter &painter, const QRect &room) const
{
    const int side = symbolRoom() - symbolSpacing;
    const int beforeText =
        m_alignment == Alignment::leading ? 0 : (room.width() - laidOut().size(room.width()).width()) / 2;
    painter.drawPixmap(room.left() + beforeText - symbolRoom(), (height() - side) / 2,
                       symbolPixmap(*m_symbol, side, painter.pen().color(), devicePixelRatioF()));
}

void WrappingButton::resizeEvent(QResizeEvent *event)
{
    QPushButton::resizeEvent(event);
    updateToolTip();
}

void WrappingButton::changeEvent(QEvent *event)
{
    QPushButton::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        updateToolTip();
}

void WrappingButton::updateToolTip()
{
    const bool isCut = laidOut().isElided(width() - 2 * horizontalPadding - symbolRoom());
    // As HTML, so that it wraps, and escaped, so that the label cannot bring markup of its own.
    setHoverText(this, isCut ? u"<qt>%1</qt>"_s.arg(m_label.toHtmlEscaped()) : QString());
}

} // namespace morvane
