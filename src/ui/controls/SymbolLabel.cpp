#include "ui/controls/SymbolLabel.h"

#include <QEvent>
#include <QPainter>

namespace morvane {

SymbolLabel::SymbolLabel(Symbol symbol, QColor ThemeColors::*color, QWidget *parent)
    : QWidget(parent), m_symbol(symbol), m_color(color)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void SymbolLabel::setSymbol(Symbol symbol)
{
    m_symbol = symbol;
    update();
}

QSize SymbolLabel::sizeHint() const
{
    return {fontMetrics().height(), fontMetrics().height()};
}

void SymbolLabel::paintEvent(QPaintEvent *)
{
    const int side = std::min(width(), height());
    QPainter painter(this);
    painter.drawPixmap(
        (width() - side) / 2, (height() - side) / 2,
        symbolPixmap(m_symbol, side, ThemeColors::fromPalette(palette()).*m_color, devicePixelRatioF()));
}

void SymbolLabel::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        updateGeometry();
}

} // namespace morvane
