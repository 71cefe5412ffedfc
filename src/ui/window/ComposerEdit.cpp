#include "ui/window/ComposerEdit.h"

#include "ui/window/FileDropFilter.h"

#include <QAbstractTextDocumentLayout>
#include <QKeyEvent>
#include <QMimeData>
#include <QTextDocument>
#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int maximumLines = 8;

/// The extension of the best format in which the data holds a picture; empty if in none.
QString imageExtension(const QMimeData *data)
{
    // A cell of a spreadsheet or a paragraph also comes as a picture of itself; it is meant as text.
    if (data->hasFormat(u"text/plain"_s))
        return {};
    for (const char *extension : {"png", "jpeg", "webp", "gif", "tiff", "bmp"}) {
        const QString name = QString::fromLatin1(extension);
        if (data->formats().contains(u"image/"_s + name))
            return name;
    }
    return {};
}

} // namespace

ComposerEdit::ComposerEdit(QWidget *parent) : QPlainTextEdit(parent)
{
    setTabChangesFocus(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setPlaceholderText(u"Message Morvane"_s);
    setAccessibleName(u"Message Morvane"_s);
    setAccessibleDescription(u"Type your message, then press Return to send it."_s);
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
    const bool isPage = event->key() == Qt::Key_PageUp || event->key() == Qt::Key_PageDown;
    if (isPage && event->modifiers() == Qt::NoModifier) {
        Q_EMIT pageRequested(event->key() == Qt::Key_PageUp ? -1 : 1);
        return;
    }
    QPlainTextEdit::keyPressEvent(event);
}

bool ComposerEdit::canInsertFromMimeData(const QMimeData *source) const
{
    return QPlainTextEdit::canInsertFromMimeData(source) || source->hasImage() ||
           !imageExtension(source).isEmpty() || !FileDropFilter::filesOf(source).isEmpty();
}

void ComposerEdit::insertFromMimeData(const QMimeData *source)
{
    const auto pastedName = u"Pasted image."_s;
    if (const QList<QUrl> files = FileDropFilter::filesOf(source); !files.isEmpty())
        Q_EMIT filesPasted(files);
    else if (const QString extension = imageExtension(source); !extension.isEmpty())
        Q_EMIT imagePasted(source->data(u"image/"_s + extension), pastedName + extension);
    else if (source->hasImage() && !source->hasText())
        Q_EMIT ownImagePasted(qvariant_cast<QImage>(source->imageData()), pastedName + u"png"_s);
    else
        QPlainTextEdit::insertFromMimeData(source);
}

void ComposerEdit::dragEnterEvent(QDragEnterEvent *event)
{
    // Files go to whoever takes them for the whole window.
    if (FileDropFilter::filesOf(event->mimeData()).isEmpty())
        QPlainTextEdit::dragEnterEvent(event);
    else
        event->ignore();
}

void ComposerEdit::dragMoveEvent(QDragMoveEvent *event)
{
    if (FileDropFilter::filesOf(event->mimeData()).isEmpty())
        QPlainTextEdit::dragMoveEvent(event);
    else
        event->ignore();
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
