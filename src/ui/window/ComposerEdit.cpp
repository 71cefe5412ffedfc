#include "ui/window/ComposerEdit.h"

#include "ui/controls/FieldPasting.h"
#include "ui/theme/FieldPainting.h"
#include "ui/theme/ThemeColors.h"
#include "ui/window/DraftPastePlace.h"
#include "ui/window/FileDropFilter.h"
#include "ui/window/PastedTextView.h"
#include "ui/window/PictureFormat.h"
#include "ui/window/TextInPieces.h"

#include <QAbstractTextDocumentLayout>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QStyleOption>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>
#include <QToolTip>
#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int maximumLines = 8;
/// However little room there is.
constexpr int fewestLines = 2;
constexpr int sideMargin = 6;
constexpr int topMargin = 3;

int linesOf(const QString &text, const QFontMetrics &metrics, int width)
{
    const QRect room(0, 0, std::max(width, 1), QWIDGETSIZE_MAX);
    return metrics.boundingRect(room, Qt::TextWordWrap, text).height() / metrics.lineSpacing();
}
} // namespace

ComposerEdit::ComposerEdit(QWidget *parent)
    : QPlainTextEdit(parent), m_folds(*document()), m_labels(*this, m_folds)
{
    setTabChangesFocus(true);
    // The field's frame is round, so that its ground is drawn with it.
    setFrameShape(QFrame::NoFrame);
    setViewportMargins(sideMargin, topMargin, sideMargin, topMargin);
    viewport()->setAutoFillBackground(false);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(document()->documentLayout(), &QAbstractTextDocumentLayout::documentSizeChanged, this,
            &ComposerEdit::fitHeight);
    connect(document(), &QTextDocument::contentsChange, this, [this](int at, int, int added) {
        if (FoldedTexts::isTooLong(added))
            m_tooLong = Written{at, added};
    });
    connect(this, &QPlainTextEdit::textChanged, this, &ComposerEdit::takeChange);
    connect(this, &QPlainTextEdit::cursorPositionChanged, this, [this] { m_labels.keepCaretOut(); });
    fitHeight();
}

QString ComposerEdit::draft() const
{
    return m_folds.textBetween(0, document()->characterCount() - 1);
}

void ComposerEdit::setDraft(const QString &text)
{
    if (m_pasting)
        m_pasting->drop(*this);
    clear();
    m_folds.clear();
    insertBounded(textCursor(), text, FoldedTexts::Origin::pasted);
    document()->clearUndoRedoStacks();
}

void ComposerEdit::replaceDraft(const QString &text)
{
    if (m_pasting)
        m_pasting->drop(*this);
    selectAll();
    insertBounded(textCursor(), text, FoldedTexts::Origin::pasted);
}

bool ComposerEdit::isPasteAwaited() const
{
    return m_pasting && m_pasting->isAwaited(*this);
}

void ComposerEdit::replaceBetween(int from, int to, const QString &text)
{
    const int end = document()->characterCount() - 1;
    QTextCursor place(document());
    place.setPosition(std::clamp(from, 0, end));
    place.setPosition(std::clamp(to, 0, end), QTextCursor::KeepAnchor);
    insertPieces(place, {text}, FoldedTexts::Origin::written);
}

void ComposerEdit::pasteAt(int position)
{
    QTextCursor place(document());
    place.setPosition(std::clamp(position, 0, document()->characterCount() - 1));
    if (const QMimeData *source = QApplication::clipboard()->mimeData())
        pasteFrom(*source, place);
}

void ComposerEdit::copy()
{
    const QTextCursor cursor = textCursor();
    if (cursor.hasSelection())
        m_copy.copy(m_folds.piecesBetween(cursor.selectionStart(), cursor.selectionEnd()));
}

void ComposerEdit::cut()
{
    copy();
    if (!isReadOnly())
        textCursor().removeSelectedText();
}

void ComposerEdit::insertPieces(const QTextCursor &place, const QStringList &pieces,
                                FoldedTexts::Origin origin)
{
    qsizetype size = 0;
    for (const QString &piece : pieces)
        size += piece.size();
    if (m_pasting && !isPasteAwaited() && FoldedTexts::isTooLong(size))
        m_pasting->begin(std::make_shared<DraftPastePlace>(*this, place), pieces);
    else
        insertBounded(place, pieces.join(QString()), origin);
}

void ComposerEdit::insertBounded(QTextCursor place, const QString &text, FoldedTexts::Origin origin)
{
    if (m_folds.isTooLong(place, text, origin))
        return insertFold(place, FoldedTexts::fold(text));
    place.insertText(text, QTextCharFormat());
    showCaret();
}

void ComposerEdit::insertFold(QTextCursor place, const FoldedTexts::Fold &fold)
{
    m_folds.insert(place, fold);
    showCaret();
    // A reader says the letters that are new; what they stand for would go unnoticed in a row of words.
    if (m_pasting)
        m_pasting->announce(fold.label.sliced(1).chopped(1));
}

void ComposerEdit::showCaret()
{
    // What is inserted next takes the format of a label otherwise.
    QTextCursor cursor = textCursor();
    cursor.setCharFormat(QTextCharFormat());
    setTextCursor(cursor);
    ensureCursorVisible();
}

void ComposerEdit::foldWritten(const Written &written)
{
    // The document counts its own end among what was written.
    const int end = std::min(written.at + written.size, document()->characterCount() - 1);
    QTextCursor cursor(document());
    cursor.setPosition(written.at);
    cursor.setPosition(end, QTextCursor::KeepAnchor);
    m_folds.insert(cursor, FoldedTexts::fold(m_folds.textBetween(written.at, end)));
    // Undoing would lay out the text again.
    document()->clearUndoRedoStacks();
}

void ComposerEdit::takeChange()
{
    if (const auto written = std::exchange(m_tooLong, std::nullopt))
        return foldWritten(*written);
    m_folds.mend();
    m_hasContent = m_folds.hasContent();
    // The toolkit shapes the letters anew for each drawing otherwise.
    textCursor().block().layout()->setCacheEnabled(true);
    m_labels.mark();
}

void ComposerEdit::showFold(const FoldedTexts::Place &place)
{
    auto *view = new PastedTextView(m_folds.text(place), window());
    connect(view, &QDialog::finished, this, [this] { setFocus(Qt::OtherFocusReason); });
    view->open();
}

bool ComposerEdit::viewportEvent(QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return QPlainTextEdit::viewportEvent(event);
    const auto *help = static_cast<QHelpEvent *>(event);
    if (m_labels.under(help->pos()))
        QToolTip::showText(help->globalPos(), u"Double-click to read the pasted text."_s, this);
    else
        QToolTip::hideText();
    return true;
}

void ComposerEdit::contextMenuEvent(QContextMenuEvent *event)
{
    const auto place = event->reason() == QContextMenuEvent::Keyboard
                           ? m_folds.placeAt(textCursor().position())
                           : m_labels.under(event->pos());
    QMenu *menu = createStandardContextMenu(event->pos());
    menu->setAttribute(Qt::WA_DeleteOnClose);
    takeOver(menu->findChild<QAction *>(u"edit-copy"_s), &ComposerEdit::copy);
    takeOver(menu->findChild<QAction *>(u"edit-cut"_s), &ComposerEdit::cut);
    if (place) {
        auto *show = new QAction(u"Show Pasted Text…"_s, menu);
        connect(show, &QAction::triggered, this, [this, place] { showFold(*place); });
        menu->insertAction(menu->actions().value(0), show);
        menu->insertSeparator(menu->actions().value(1));
    }
    menu->popup(event->globalPos());
    if (event->reason() == QContextMenuEvent::Keyboard)
        menu->setActiveAction(menu->actions().constFirst());
}

void ComposerEdit::takeOver(QAction *action, void (ComposerEdit::*slot)())
{
    if (action == nullptr)
        return;
    disconnect(action, &QAction::triggered, nullptr, nullptr);
    connect(action, &QAction::triggered, this, slot);
}

void ComposerEdit::mouseDoubleClickEvent(QMouseEvent *event)
{
    const auto place = m_labels.under(event->position().toPoint());
    if (place && event->button() == Qt::LeftButton)
        showFold(*place);
    else
        QPlainTextEdit::mouseDoubleClickEvent(event);
}

QMimeData *ComposerEdit::createMimeDataFromSelection() const
{
    const QTextCursor cursor = textCursor();
    return new TextInPieces(m_folds.piecesBetween(cursor.selectionStart(), cursor.selectionEnd()));
}

bool ComposerEdit::event(QEvent *event)
{
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut)
        update();
    if (event->type() != QEvent::Paint)
        return QPlainTextEdit::event(event);
    QStyleOption option;
    option.initFrom(this);
    QPainter painter(this);
    drawFieldFrame(painter, rect(), palette(), option.state);
    return true;
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
    // The other key for menus; the toolkit knows only the one that many keyboards lack.
    if (event->key() == Qt::Key_F10 && event->modifiers() == Qt::ShiftModifier) {
        const QPoint caret = cursorRect().center();
        QContextMenuEvent menu(QContextMenuEvent::Keyboard, caret, viewport()->mapToGlobal(caret));
        contextMenuEvent(&menu);
        return;
    }
    if (event->matches(QKeySequence::Copy))
        return copy();
    if (event->matches(QKeySequence::Cut))
        return cut();
    m_labels.selectToDelete(*event);
    QPlainTextEdit::keyPressEvent(event);
}

bool ComposerEdit::canInsertFromMimeData(const QMimeData *source) const
{
    // Whether the clipboard has something is not asked: the program that owns it may be slow to answer.
    return (m_pasting && m_pasting->foreign(source)) ||
           (!source->formats().isEmpty() &&
            (source->hasText() || source->hasImage() || !pictureExtension(*source).isEmpty() ||
             !FileDropFilter::filesOf(source).isEmpty()));
}

void ComposerEdit::insertFromMimeData(const QMimeData *source)
{
    pasteFrom(*source, textCursor());
}

void ComposerEdit::pasteFrom(const QMimeData &source, const QTextCursor &place)
{
    const auto mode = m_pasting ? m_pasting->foreign(&source) : std::nullopt;
    if (mode)
        m_pasting->begin(std::make_shared<DraftPastePlace>(*this, place), *mode);
    // An owner of the clipboard that hangs is waited for anew with each question, for seconds.
    else if (!source.formats().isEmpty())
        insertPasted(source, place);
}

void ComposerEdit::insertPasted(const QMimeData &source, const QTextCursor &place)
{
    const auto pastedName = u"Pasted image."_s;
    const auto *own = qobject_cast<const TextInPieces *>(&source);
    if (const QList<QUrl> files = FileDropFilter::filesOf(&source); !files.isEmpty())
        Q_EMIT filesPasted(files);
    else if (const QString extension = pictureExtension(source); !extension.isEmpty())
        Q_EMIT imagePasted(source.data(u"image/"_s + extension), pastedName + extension);
    else if (source.hasImage() && !source.hasText())
        Q_EMIT ownImagePasted(qvariant_cast<QImage>(source.imageData()), pastedName + u"png"_s);
    else if (source.hasText() && !isReadOnly())
        insertPieces(place, own ? own->pieces() : QStringList{source.text()}, FoldedTexts::Origin::pasted);
}

void ComposerEdit::dragEnterEvent(QDragEnterEvent *event)
{
    // Files go to whoever takes them for the whole window.
    if (FileDropFilter::filesOf(event->mimeData()).isEmpty())
        QPlainTextEdit::dragEnterEvent(event);
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
    if (event->type() == QEvent::PaletteChange)
        m_labels.mark();
}

void ComposerEdit::fitHeight()
{
    // The layout takes a paragraph that it has not come to yet for a single line.
    int lines = 0;
    for (QTextBlock block = document()->begin(); block.isValid() && lines < maximumLines;
         block = block.next()) {
        document()->documentLayout()->blockBoundingRect(block);
        lines += block.layout()->lineCount();
    }
    // What the empty field says of itself wraps, too.
    if (document()->isEmpty())
        lines = linesOf(placeholderText(), fontMetrics(),
                        viewport()->width() - 2 * qRound(document()->documentMargin()));
    const int most = std::clamp((m_heightLimit - heightOfLines(0)) / fontMetrics().lineSpacing(), fewestLines,
                                maximumLines);
    setFixedHeight(heightOfLines(std::clamp(lines, 1, most)));
    setVerticalScrollBarPolicy(lines < most ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded);
}

int ComposerEdit::heightOfLines(int lines) const
{
    const QMargins margins = contentsMargins() + viewportMargins();
    return lines * fontMetrics().lineSpacing() + 2 * static_cast<int>(document()->documentMargin()) +
           margins.top() + margins.bottom() + 2 * frameWidth();
}

void ComposerEdit::setHeightLimit(int limit)
{
    if (std::exchange(m_heightLimit, limit) == limit)
        return;
    fitHeight();
    // What is being written stays in sight.
    ensureCursorVisible();
}

} // namespace morvane
