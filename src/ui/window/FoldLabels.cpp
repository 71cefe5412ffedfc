#include "ui/window/FoldLabels.h"

#include "ui/theme/ThemeColors.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPlainTextEdit>
#include <cstdlib>

namespace morvane {

void FoldLabels::keepCaretOut()
{
    QTextCursor cursor = m_edit.textCursor();
    int caret = cursor.position();
    int anchor = cursor.anchor();
    bool isBesideLabel = false;
    for (const FoldedTexts::Place &place : m_folds.places()) {
        const bool isAnchorWithin = place.start < anchor && anchor < place.end;
        const bool isCaretWithin = place.start < caret && caret < place.end;
        if (isCaretWithin)
            caret = isAnchorWithin && caret != anchor ? (caret > anchor ? place.end : place.start)
                                                      : edgeFor(place, caret, anchor);
        if (!cursor.hasSelection())
            anchor = caret;
        else if (isAnchorWithin)
            anchor = caret > anchor ? place.start : place.end;
        isBesideLabel |= place.start == caret || place.end == caret;
    }
    m_lastCaret = caret;
    if (caret != cursor.position() || anchor != cursor.anchor()) {
        cursor.setPosition(anchor);
        cursor.setPosition(caret, QTextCursor::KeepAnchor);
        m_edit.setTextCursor(cursor);
    }
    // What is typed takes the format of what stands in front of it otherwise.
    if (isBesideLabel && anchor == caret)
        m_edit.setCurrentCharFormat(QTextCharFormat());
}

int FoldLabels::edgeFor(const FoldedTexts::Place &place, int caret, int anchor) const
{
    bool goesOn = caret > m_lastCaret;
    if (QApplication::mouseButtons() != Qt::NoButton)
        goesOn = caret - place.start > place.end - caret;
    else if (caret != anchor && m_lastCaret != place.start && m_lastCaret != place.end)
        goesOn = caret > anchor;
    return goesOn ? place.end : place.start;
}

void FoldLabels::selectToDelete(const QKeyEvent &event)
{
    const bool deletesBack = event.matches(QKeySequence::DeleteStartOfWord) ||
                             (event.key() == Qt::Key_Backspace && !(event.modifiers() & Qt::AltModifier));
    const bool deletesOn =
        event.matches(QKeySequence::Delete) || event.matches(QKeySequence::DeleteEndOfWord);
    QTextCursor cursor = m_edit.textCursor();
    if (cursor.hasSelection() || (!deletesBack && !deletesOn))
        return;
    for (const FoldedTexts::Place &place : m_folds.places()) {
        if (cursor.position() != (deletesBack ? place.end : place.start))
            continue;
        cursor.setPosition(deletesBack ? place.start : place.end, QTextCursor::KeepAnchor);
        m_edit.setTextCursor(cursor);
        return;
    }
}

void FoldLabels::mark()
{
    const QList<FoldedTexts::Place> places = m_folds.places();
    if (places.isEmpty() && m_edit.extraSelections().isEmpty())
        return;
    const ThemeColors colors = ThemeColors::fromPalette(m_edit.palette());
    QTextCharFormat format;
    format.setForeground(colors.text);
    format.setBackground(colors.userBubble);
    QList<QTextEdit::ExtraSelection> marks;
    QTextCursor cursor(m_edit.document());
    for (const FoldedTexts::Place &place : places) {
        cursor.setPosition(place.start);
        cursor.setPosition(place.end, QTextCursor::KeepAnchor);
        marks.append({cursor, format});
    }
    m_edit.setExtraSelections(marks);
}

std::optional<FoldedTexts::Place> FoldLabels::under(const QPoint &point) const
{
    const QTextCursor cursor = m_edit.cursorForPosition(point);
    const auto place = m_folds.placeAt(cursor.position());
    // Beside a line the cursor is at its end.
    return place && std::abs(m_edit.cursorRect(cursor).center().x() - point.x()) <=
                        m_edit.fontMetrics().averageCharWidth()
               ? place
               : std::nullopt;
}

} // namespace morvane
