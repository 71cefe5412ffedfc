#pragma once

#include "ui/theme/Icons.h"

#include <QIconEngine>
#include <QPalette>

namespace morvane {

/// Paints a symbol in the colour that the program's palette gives to `role` at the time of painting.
class SymbolIconEngine : public QIconEngine {
public:
    SymbolIconEngine(Symbol symbol, QPalette::ColorRole role) : m_symbol(symbol), m_role(role) {}

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override;
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override;
    QPixmap scaledPixmap(const QSize &size, QIcon::Mode mode, QIcon::State state, qreal scale) override;
    QIconEngine *clone() const override { return new SymbolIconEngine(m_symbol, m_role); }

private:
    QColor color(QIcon::Mode mode) const;

    Symbol m_symbol;
    QPalette::ColorRole m_role;
};

} // namespace morvane
