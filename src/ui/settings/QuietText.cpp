#include "ui/settings/QuietText.h"

#include <QEvent>
#include <QPainter>
#include <algorithm>

namespace morvane {

namespace {

constexpr int gap = 6;
constexpr int leastWidth = 60;

} // namespace

QuietText::QuietText(Most most, QWidget *parent) : QWidget(parent), m_most(most)
{
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

void QuietText::setContent(const QString &text, QColor ThemeColors::*color, std::optional<Symbol> symbol)
{
    if (text == m_text && color == m_color && symbol == m_symbol)
        return;
    m_text = text;
    m_color = color;
    m_symbol = symbol;
    m_measured = {};
    updateGeometry();
    update();
}

bool QuietText::isElided() const
{
    return wrapped().isElided(width() - symbolRoom());
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
    if (m_measured.width() != width)
        m_measured = {width, wrapped().size(std::max(1, width - symbolRoom())).height()};
    return m_measured.height();
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
    if (event->type() != QEvent::FontChange)
        return;
    m_measured = {};
    updateGeometry();
}

WrappedText QuietText::wrapped() const
{
    return {m_text, font(), m_most.lines, m_most.cost};
}

int QuietText::symbolRoom() const
{
    return m_symbol ? fontMetrics().height() - 2 + gap : 0;
}

} // namespace morvane
