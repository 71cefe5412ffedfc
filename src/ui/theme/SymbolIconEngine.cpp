#include "ui/theme/SymbolIconEngine.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPalette>

namespace morvane {

QColor SymbolIconEngine::color(QIcon::Mode mode) const
{
    const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
    return QGuiApplication::palette().color(group, QPalette::ButtonText);
}

void SymbolIconEngine::paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State)
{
    const int side = qMin(rect.width(), rect.height());
    const QPixmap pixmap = symbolPixmap(m_symbol, side, color(mode), painter->device()->devicePixelRatioF());
    painter->drawPixmap(rect.x() + (rect.width() - side) / 2, rect.y() + (rect.height() - side) / 2, pixmap);
}

QPixmap SymbolIconEngine::pixmap(const QSize &size, QIcon::Mode mode, QIcon::State)
{
    return symbolPixmap(m_symbol, qMin(size.width(), size.height()), color(mode), 1);
}

QPixmap SymbolIconEngine::scaledPixmap(const QSize &size, QIcon::Mode mode, QIcon::State, qreal scale)
{
    const int side = qRound(qMin(size.width(), size.height()) / scale);
    return symbolPixmap(m_symbol, side, color(mode), scale);
}

} // namespace morvane
