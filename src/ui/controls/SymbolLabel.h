#pragma once

#include "ui/theme/Icons.h"
#include "ui/theme/ThemeColors.h"

#include <QWidget>

namespace morvane {

/// A drawn symbol as tall as the text beside it, in one of the theme's colours. Says nothing to assistive
/// technology: the text beside it does.
class SymbolLabel : public QWidget {
    Q_OBJECT
public:
    SymbolLabel(Symbol symbol, QColor ThemeColors::*color, QWidget *parent = nullptr);

    void setSymbol(Symbol symbol);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    Symbol m_symbol;
    QColor ThemeColors::*m_color;
};

} // namespace morvane
