#pragma once

#include "ui/controls/PastePlace.h"
#include "ui/window/FoldedTexts.h"

#include <QPointer>
#include <QTextCursor>
#include <optional>

namespace morvane {

class ComposerEdit;

/// A place in the draft, or a part of it that is to go.
class DraftPastePlace final : public PastePlace {
public:
    /// `place` is of the field's document.
    DraftPastePlace(ComposerEdit &edit, const QTextCursor &place);

    QWidget *field() const override;
    /// Counts a text that is going to be folded.
    Task<void> prepare(PasteContent content) override;
    void insert(const PasteContent &content) override;

private:
    /// What the content goes to by now.
    QTextCursor place() const;

    QPointer<ComposerEdit> m_edit;
    QTextCursor m_at;
    const QTextCursor m_selection; ///< Goes, unless the user has written something since.
    const int m_revision;
    std::optional<FoldedTexts::Fold> m_fold;
};

} // namespace morvane
