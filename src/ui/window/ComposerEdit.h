#pragma once

#include "ui/window/FoldLabels.h"
#include "ui/window/FoldedTexts.h"
#include "ui/window/TextCopy.h"

#include <QImage>
#include <QList>
#include <QPlainTextEdit>
#include <QUrl>
#include <optional>

namespace morvane {

class FieldPasting;

/// The field in which the user writes: grows with its text up to eight lines, Return sends, Shift+Return
/// begins a new line, Tab leaves the field. Pasted files and pictures are not its own. The toolkit lays a
/// paragraph out anew, as a whole, with each key, so a text too long for that is folded: a label stands for
/// it, which the caret passes in one step and which goes as a whole.
class ComposerEdit : public QPlainTextEdit {
    Q_OBJECT
public:
    explicit ComposerEdit(QWidget *parent = nullptr);

    /// What the user has entered, all of it, with line feeds as line ends. `toPlainText` has labels instead
    /// of the folded texts.
    QString draft() const;
    /// Whether the draft holds anything besides white space. Costs nothing.
    bool hasContent() const { return m_hasContent; }
    /// Puts another text in the place of the draft and its history, with the caret behind it.
    void setDraft(const QString &text);
    /// The same, but undoing brings the draft back.
    void replaceDraft(const QString &text);
    /// Keeps the field to a height, in logical pixels; it never takes less than two lines.
    void setHeightLimit(int limit);
    /// What it takes with so many lines, in logical pixels.
    int heightOfLines(int lines) const;
    /// What stands for long texts.
    const FoldedTexts &folds() const { return m_folds; }

    /// From now on no other program is waited for when the user pastes. `pasting` must outlive the field.
    void setPasting(FieldPasting &pasting) { m_pasting = &pasting; }
    /// Whether the user has pasted something that is not there yet.
    bool isPasteAwaited() const;
    /// Puts a text that assistive technology has written in the place of what stands between two positions.
    void replaceBetween(int from, int to, const QString &text);
    /// Pastes the clipboard at a position; the caret stays where it is.
    void pasteAt(int position);
    /// Takes what was copied or dropped: text in the place of what `place` selects.
    void insertPasted(const QMimeData &source, const QTextCursor &place);
    void insertFold(QTextCursor place, const FoldedTexts::Fold &fold);

public Q_SLOTS:
    /// As the toolkit's, but a text of many megabytes comes on the clipboard without holding up the window.
    void copy();
    void cut();

Q_SIGNALS:
    void sendRequested();
    /// A page down (1) or up (-1) of what stands above the field.
    void pageRequested(int direction);
    void filesPasted(const QList<QUrl> &urls);
    /// A picture in the format of its name's extension.
    void imagePasted(const QByteArray &data, const QString &filename);
    /// A picture that this program itself has put on the clipboard.
    void ownImagePasted(const QImage &image, const QString &filename);

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    bool viewportEvent(QEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    QMimeData *createMimeDataFromSelection() const override;
    bool canInsertFromMimeData(const QMimeData *source) const override;
    void insertFromMimeData(const QMimeData *source) override;
    void dragEnterEvent(QDragEnterEvent *event) override;

private:
    void fitHeight();
    void insertBounded(QTextCursor place, const QString &text, FoldedTexts::Origin origin);
    /// Takes what is on a clipboard or dropped, asking other programs without waiting for them.
    void pasteFrom(const QMimeData &source, const QTextCursor &place);
    /// A text of any length; one that takes time comes when it has been looked at.
    void insertPieces(const QTextCursor &place, const QStringList &pieces, FoldedTexts::Origin origin);
    void showCaret();
    /// A piece of the document that came in by another way than pasting.
    struct Written {
        int at = 0;
        int size = 0;
    };
    void foldWritten(const Written &written);
    void takeChange();
    void takeOver(QAction *action, void (ComposerEdit::*slot)());
    void showFold(const FoldedTexts::Place &place);

    FieldPasting *m_pasting = nullptr;
    FoldedTexts m_folds;
    FoldLabels m_labels;
    std::optional<Written> m_tooLong; ///< Written since the last change was taken.
    TextCopy m_copy;
    int m_heightLimit = QWIDGETSIZE_MAX;
    bool m_hasContent = false;
};

} // namespace morvane
