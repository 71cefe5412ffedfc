#pragma once

#include "ui/controls/Wrapping.h"
#include "ui/theme/Icons.h"

#include <QPushButton>
#include <optional>

namespace morvane {

/// A push button whose label wraps instead of widening the window. A label of more than a few lines is
/// elided; the tool tip then tells all of it. No character of the label makes a mnemonic.
class WrappingButton : public Wrapping<QPushButton> {
    Q_OBJECT
public:
    enum class Alignment { centre, leading };

    explicit WrappingButton(const QString &label, Alignment alignment = Alignment::centre,
                            QWidget *parent = nullptr);

    /// Also sets the accessible name; set another one afterwards where it has to differ.
    void setLabel(const QString &label);
    /// Draws a symbol in front of the label, in its colour.
    void setSymbol(Symbol symbol);

protected:
    WrappedText wrappedText() const override;
    QMargins textMargins() const override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void updateToolTip();
    int symbolRoom() const;
    void drawSymbol(QPainter &painter, const QRect &room) const;

    QString m_label;
    Alignment m_alignment;
    std::optional<Symbol> m_symbol;
};

} // namespace morvane
