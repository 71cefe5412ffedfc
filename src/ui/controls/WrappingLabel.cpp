#include "ui/controls/WrappingLabel.h"

#include "ui/controls/AccessibleRole.h"
#include "ui/controls/WrappedText.h"

#include <QPainter>
#include <QStyle>
#include <algorithm>

namespace morvane {

namespace {

constexpr int maximumLines = 4;
constexpr int symbolSpacing = 8;

} // namespace

WrappingLabel::WrappingLabel(const QString &text, Weight weight, QWidget *parent)
    : Wrapping(parent), m_text(text), m_weight(weight)
{
    setAccessibleRole(this, QAccessible::StaticText);
    setAccessibleName(text);
    growDownwards();
}

void WrappingLabel::setSymbol(Symbol symbol)
{
    m_symbol = symbol;
    updateGeometry();
    update();
}

int WrappingLabel::symbolRoom() const
{
    return m_symbol ? QFontMetrics(shownFont()).height() + symbolSpacing : 0;
}

QFont WrappingLabel::shownFont() const
{
    QFont shown = font();
    shown.setBold(m_weight == Weight::bold);
    return shown;
}

WrappedText WrappingLabel::wrappedText() const
{
    return {m_text, shownFont(), maximumLines};
}

QMargins WrappingLabel::textMargins() const
{
    return {symbolRoom(), 0, 0, 0};
}

void WrappingLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QColor ink = palette().color(QPalette::WindowText);
    const WrappedText &text = laidOut();
    const QRect place = rect().adjusted(symbolRoom(), 0, 0, 0);
    if (m_symbol) {
        const int side = QFontMetrics(shownFont()).height();
        const int top = std::max(0, height() - text.size(place.width()).height()) / 2;
        const QRect symbol(0, top, side, side);
        painter.drawPixmap(QStyle::visualRect(layoutDirection(), rect(), symbol),
                           symbolPixmap(*m_symbol, side, ink, devicePixelRatioF()));
    }
    painter.setPen(ink);
    text.draw(painter, QStyle::visualRect(layoutDirection(), rect(), place),
              isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft);
}

} // namespace morvane
