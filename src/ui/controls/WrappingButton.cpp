#include "ui/controls/WrappingButton.h"

#include "ui/controls/HoverText.h"
#include "ui/controls/LabelText.h"
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

WrappedText WrappingButton::wrappedText() const
{
    return {m_label, font(), maximumLines};
}

QMargins WrappingButton::textMargins() const
{
    return {horizontalPadding, verticalPadding, horizontalPadding, verticalPadding};
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
    laidOut().draw(painter, rect().adjusted(horizontalPadding, 0, -horizontalPadding, 0), alignment);
    // The style marks the focus only once Tab was pressed, but a sheet brings the focus with it.
    if (hasFocus())
        MorvaneStyle::drawFocusRing(painter, rect(), focusRadius, palette());
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
    const bool isCut = laidOut().isElided(width() - 2 * horizontalPadding);
    // As HTML, so that it wraps, and escaped, so that the label cannot bring markup of its own.
    setHoverText(this, isCut ? u"<qt>%1</qt>"_s.arg(m_label.toHtmlEscaped()) : QString());
}

} // namespace morvane
