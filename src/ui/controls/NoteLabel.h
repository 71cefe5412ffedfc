#pragma once

#include <QLabel>

namespace morvane {

/// An explaining line that wraps: quieter than the text, or coloured as a warning or an error. Plain text
/// only, whatever it holds. The colour follows the palette and keeps its contrast.
class NoteLabel : public QLabel {
    Q_OBJECT
public:
    enum class Tone { plain, secondary, warning, error };

    explicit NoteLabel(const QString &text, Tone tone = Tone::secondary, QWidget *parent = nullptr);

protected:
    void changeEvent(QEvent *event) override;

private:
    void updateColor();

    Tone m_tone;
};

} // namespace morvane
