#pragma once

#include "ui/controls/Wrapping.h"
#include "ui/theme/Icons.h"

#include <QWidget>
#include <optional>

namespace morvane {

/// A text that wraps anywhere, even within a word, so that no name however long widens the window. What goes
/// beyond a few lines is elided. Assistive technology reads all of it.
class WrappingLabel : public Wrapping<QWidget> {
    Q_OBJECT
public:
    enum class Weight { normal, bold };

    explicit WrappingLabel(const QString &text, Weight weight = Weight::normal, QWidget *parent = nullptr);

    /// Draws a symbol in front of the first line, as decoration.
    void setSymbol(Symbol symbol);

protected:
    WrappedText wrappedText() const override;
    QMargins textMargins() const override;
    void paintEvent(QPaintEvent *event) override;

private:
    QFont shownFont() const;
    int symbolRoom() const;

    QString m_text;
    Weight m_weight;
    std::optional<Symbol> m_symbol;
};

} // namespace morvane
