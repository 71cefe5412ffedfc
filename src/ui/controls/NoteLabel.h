#pragma once

#include "ui/theme/Icons.h"

#include <QLabel>
#include <optional>

namespace morvane {

/// An explaining line that wraps: quieter than the text, or coloured as a warning or an error. Plain text
/// only, whatever it holds. The colour follows the palette and keeps its contrast.
class NoteLabel : public QLabel {
    Q_OBJECT
public:
    enum class Tone { plain, secondary, warning, error };

    explicit NoteLabel(const QString &text, Tone tone = Tone::secondary, QWidget *parent = nullptr);

    /// Draws a symbol in front of the first line, as decoration.
    void setSymbol(Symbol symbol);

protected:
    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void updateColor();
    void makeRoomForSymbol();
    int symbolSide() const;

    Tone m_tone;
    std::optional<Symbol> m_symbol;
};

} // namespace morvane
