#include "ui/settings/ButtonsBeside.h"

#include <QEvent>
#include <algorithm>

namespace morvane {

namespace {

/// Of the whole width, for buttons at the right.
constexpr double mostForButtons = 0.4;

} // namespace

void ButtonsBeside::setParts(QLayout *wide, QBoxLayout *buttons)
{
    m_parts = new QHBoxLayout(this);
    m_parts->setContentsMargins(0, 0, 0, 0);
    m_parts->addLayout(wide, 1);
    m_parts->addLayout(buttons);
    m_buttons = buttons;
    m_atTheRight = buttons->direction();
}

bool ButtonsBeside::event(QEvent *event)
{
    const bool hasNewRoom = event->type() == QEvent::Resize || event->type() == QEvent::LayoutRequest;
    const bool handled = QWidget::event(event);
    if (hasNewRoom && m_parts) // nothing is left to look at behind a deferred delete
        arrange();
    return handled;
}

QSize ButtonsBeside::minimumSizeHint() const
{
    if (!m_parts)
        return QWidget::minimumSizeHint();
    const QMargins margins = m_parts->contentsMargins();
    const int width = std::max(m_parts->itemAt(0)->minimumSize().width(), buttonWidths().inColumn);
    return {width + margins.left() + margins.right(), 0}; // the height follows from the width
}

ButtonsBeside::Widths ButtonsBeside::buttonWidths() const
{
    Widths widths{-m_buttons->spacing(), 0};
    for (int i = 0; i < m_buttons->count(); ++i) {
        const QLayoutItem *const button = m_buttons->itemAt(i);
        if (button->isEmpty())
            continue;
        widths.inRow += button->sizeHint().width() + m_buttons->spacing();
        widths.inColumn = std::max(widths.inColumn, button->sizeHint().width());
    }
    return widths;
}

void ButtonsBeside::arrange()
{
    const auto [inRow, inColumn] = buttonWidths();
    const int room = m_parts->contentsRect().width();
    const int atTheRight = m_atTheRight == QBoxLayout::TopToBottom ? inColumn : inRow;
    const bool beside = atTheRight <= room * mostForButtons;
    const auto below = inRow <= room ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom;
    m_parts->setDirection(beside ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
    m_parts->setStretch(0, beside ? 1 : 0); // of the width only; there is height to spare for nobody
    m_buttons->setDirection(beside ? m_atTheRight : below);
    m_buttons->setAlignment(beside ? Qt::AlignTop : Qt::AlignTop | Qt::AlignLeading);
}

} // namespace morvane
