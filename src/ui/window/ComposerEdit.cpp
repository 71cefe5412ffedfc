#include "ui/window/ComposerEdit.h"

#include <QAbstractTextDocumentLayout>
#include <QKeyEvent>
#include <QTextDocument>
#include <algorithm>
#include <cmath>

namespace morvane {

namespace {

constexpr int maximumLines = 8;

} // namespace

ComposerEdit::ComposerEdit(QWidget *parent) : QPlainTextEdit(parent)
{
    setTabChangesFocus(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setPlaceholderText(QStringLiteral("Message Morvane"));
    setAccessibleName(QStringLiteral("Message Morvane"));
    setAccessibleDescription(QStringLiteral("Type your message, then press Return to send it."));
    connect(document()->documentLayout(), &QAbstractTextDocumentLayout::documentSizeChanged, this,
            &ComposerEdit::fitHeight);
    fitHeight();
}

void ComposerEdit::keyPressEvent(QKeyEvent *event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn && !(event->modifiers() & (Qt::ShiftModifier | Qt::AltModifier))) {
        event->accept();
        // A key that is held down must not send the next draft too.
        if (!event->isAutoRepeat())
            Q_EMIT sendRequested();
        return;
    }
    QPlainTextEdit::keyPressEvent(event);
}

void ComposerEdit::resizeEvent(QResizeEvent *event)
{
    QPlainTextEdit::resizeEvent(event);
    fitHeight();
}

void ComposerEdit::changeEvent(QEvent *event)
{
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        fitHeight();
}

void ComposerEdit::fitHeight()
{
    // The layout of plain text measures its height in lines.
    const int lines = std::clamp(
        static_cast<int>(std::ceil(document()->documentLayout()->documentSize().height())), 1, maximumLines);
    const QMargins margins = contentsMargins();
    const int height = lines * fontMetrics().lineSpacing() +
                       2 * static_cast<int>(document()->documentMargin()) + margins.top() + margins.bottom() +
                       2 * frameWidth();
    setFixedHeight(height);
    setVerticalScrollBarPolicy(lines < maximumLines ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded);
}

} // namespace morvane
