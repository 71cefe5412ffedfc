#include "ui/controls/NoteLabel.h"

#include "ui/theme/ThemeColors.h"

#include <QApplication>
#include <QEvent>

namespace morvane {

namespace {

QColor colorOf(NoteLabel::Tone tone, const ThemeColors &colors)
{
    switch (tone) {
    case NoteLabel::Tone::plain:
        return colors.text;
    case NoteLabel::Tone::secondary:
        return colors.secondaryText;
    case NoteLabel::Tone::warning:
        return colors.warning;
    case NoteLabel::Tone::error:
        return colors.error;
    }
    Q_UNREACHABLE();
}

} // namespace

NoteLabel::NoteLabel(const QString &text, Tone tone, QWidget *parent) : QLabel(parent), m_tone(tone)
{
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setText(text);
    updateColor();
}

void NoteLabel::changeEvent(QEvent *event)
{
    QLabel::changeEvent(event);
    if (event->type() == QEvent::ApplicationPaletteChange)
        updateColor();
}

void NoteLabel::updateColor()
{
    // Read from the program's palette: the label's own holds the colour that is set here.
    QPalette changed = palette();
    const QColor color = colorOf(m_tone, ThemeColors::fromPalette(QApplication::palette()));
    changed.setColor(QPalette::WindowText, color);
    setPalette(changed);
}

} // namespace morvane
