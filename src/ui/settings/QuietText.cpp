#include "ui/settings/QuietText.h"

#include <QEvent>
#include <QPainter>
#include <algorithm>

namespace morvane {

namespace {

constexpr int gap = 6;
constexpr int leastWidth = 60;

} // namespace

QuietText::QuietText(int maximumLines, QWidget *parent) : QWidget(parent), m_maximumLines(maximumLines)
{
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

void QuietText::setContent(const QString &text, QColor ThemeColors::*color, std::optional<Symbol> symbol)
{
    m_text = text;
    m_color = color;
    m_symbol = symbol;
    updateGeometry();
    update();
}

QSize QuietText::sizeHint() const
{
    const int width = wrapped().naturalWidth() + symbolRoom();
    return {width, heightForWidth(width)};
}

QSize QuietText::minimumSizeHint() const
{
    return {leastWidth, fontMetrics().height()};
}

int QuietText::heightForWidth(int width) const
{
    return wrapped().size(std::max(1, width - symbolRoom())).height();
}

void QuietText::paintEvent(QPaintEvent *)
{
    const QColor color = ThemeColors::fromPalette(palette()).*m_color;
    QPainter painter(this);
    if (m_symbol) {
        const int side = fontMetrics().height() - 2;
        painter.drawPixmap(0, 1, symbolPixmap(*m_symbol, side, color, devicePixelRatioF()));
    }
    painter.setPen(color);
    wrapped().draw(painter, rect().adjusted(symbolRoom(), 0, 0, 0), Qt::AlignLeft);
}

void QuietText::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        updateGeometry();
}

WrappedText QuietText::wrapped() const
{
    return {m_text, font(), m_maximumLines};
}

int QuietText::symbolRoom() const
{
    return m_symbol ? fontMetrics().height() - 2 + gap : 0;
}

} // namespace morvane
