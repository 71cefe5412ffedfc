#include "ui/controls/NoteLabel.h"

#include "ui/controls/AccessibleRole.h"
#include "ui/theme/ThemeColors.h"

#include <QApplication>
#include <QEvent>
#include <QPainter>
#include <algorithm>

namespace morvane {

namespace {

constexpr int symbolSpacing = 8;

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
    // A reader that enters a group reads all of its labels at once. A note is to be found, not to be listened
    // to each time.
    setAccessibleRole(this, QAccessible::Paragraph);
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
    if (event->type() == QEvent::FontChange)
        makeRoomForSymbol();
}

void NoteLabel::setSymbol(Symbol symbol)
{
    m_symbol = symbol;
    makeRoomForSymbol();
    update();
}

int NoteLabel::symbolSide() const
{
    return fontMetrics().height();
}

void NoteLabel::makeRoomForSymbol()
{
    if (!m_symbol)
        return;
    const int room = symbolSide() + symbolSpacing;
    setContentsMargins(isRightToLeft() ? 0 : room, 0, isRightToLeft() ? room : 0, 0);
}

void NoteLabel::paintEvent(QPaintEvent *event)
{
    QLabel::paintEvent(event);
    if (!m_symbol)
        return;
    const int side = symbolSide();
    // A text of one line stands in the middle of its label.
    const int top = std::max(0, (contentsRect().height() - heightForWidth(width())) / 2);
    QPainter painter(this);
    painter.drawPixmap(
        QPoint(isRightToLeft() ? width() - side : 0, top),
        symbolPixmap(*m_symbol, side, palette().color(QPalette::WindowText), devicePixelRatioF()));
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
