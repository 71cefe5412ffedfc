#pragma once

#include "ui/window/FoldedTexts.h"

#include <optional>

class QKeyEvent;
class QPlainTextEdit;
class QPoint;

namespace morvane {

/// How the caret, the keys, the mouse and the eye meet the labels of folded texts in a field. The caret
/// passes a label in one step, and it goes as a whole.
class FoldLabels {
public:
    /// Both must outlive the object.
    FoldLabels(QPlainTextEdit &edit, const FoldedTexts &folds) : m_edit(edit), m_folds(folds) {}

    /// To be called when the caret has moved.
    void keepCaretOut();
    /// Selects the label that the key is about to delete a character of.
    void selectToDelete(const QKeyEvent &event);
    /// Shows where the labels stand.
    void mark();
    /// The label at a point of the field's viewport.
    std::optional<FoldedTexts::Place> under(const QPoint &point) const;

private:
    /// The edge of a label to which a caret within it goes.
    int edgeFor(const FoldedTexts::Place &place, int caret, int anchor) const;

    QPlainTextEdit &m_edit;
    const FoldedTexts &m_folds;
    int m_lastCaret = 0;
};

} // namespace morvane
