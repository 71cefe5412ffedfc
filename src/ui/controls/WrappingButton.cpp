#include "ui/controls/WrappingButton.h"

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
/// Room for some words on a line before the layout has to give way.
constexpr int leastCharacters = 12;
constexpr qreal focusRadius = 7;

} // namespace

WrappingButton::WrappingButton(const QString &label, Alignment alignment, QWidget *parent)
    : QPushButton(parent), m_alignment(alignment)
{
    // Fixed would hold the height of a single line against the layout.
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    setLabel(label);
}

void WrappingButton::setLabel(const QString &label)
{
    m_label = label;
    setAccessibleName(labelText(label));
    updateToolTip();
    updateGeometry();
    update();
}

QSize WrappingButton::sizeHint() const
{
    const WrappedText text{m_label, font(), maximumLines};
    const int width = text.naturalWidth();
    return {width + 2 * horizontalPadding, text.size(width).height() + 2 * verticalPadding};
}

QSize WrappingButton::minimumSizeHint() const
{
    const int least = leastCharacters * fontMetrics().averageCharWidth() + 2 * horizontalPadding;
    const QSize natural = sizeHint();
    return {std::min(natural.width(), least), fontMetrics().lineSpacing() + 2 * verticalPadding};
}

int WrappingButton::heightForWidth(int width) const
{
    const WrappedText text{m_label, font(), maximumLines};
    return text.size(width - 2 * horizontalPadding).height() + 2 * verticalPadding;
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
    WrappedText{m_label, font(), maximumLines}.draw(
        painter, rect().adjusted(horizontalPadding, 0, -horizontalPadding, 0), alignment);
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
    const bool isCut = WrappedText{m_label, font(), maximumLines}.isElided(width() - 2 * horizontalPadding);
    // As HTML, so that it wraps, and escaped, so that the label cannot bring markup of its own.
    setToolTip(isCut ? u"<qt>%1</qt>"_s.arg(labelText(m_label).toHtmlEscaped()) : QString());
}

} // namespace morvane
