#pragma once

#include "ui/theme/Icons.h"

#include <QIconEngine>

namespace morvane {

/// Paints a symbol in the colour that the program's palette gives to the text of buttons at the time of
/// painting.
class SymbolIconEngine : public QIconEngine {
public:
    explicit SymbolIconEngine(Symbol symbol) : m_symbol(symbol) {}

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override;
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override;
    QPixmap scaledPixmap(const QSize &size, QIcon::Mode mode, QIcon::State state, qreal scale) override;
    QIconEngine *clone() const override { return new SymbolIconEngine(m_symbol); }

private:
    QColor color(QIcon::Mode mode) const;

    Symbol m_symbol;
};

} // namespace morvane
