#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

class QTextCursor;
class QTextDocument;

namespace morvane {

/// Long texts that are part of a document of plain text but stand in it as labels of a few words, such as
/// "[Pasted text, 40,000 characters]". Labels are text, so that carets, selections, undoing and screen
/// readers meet nothing that they do not know; what makes them labels is their format, which the document's
/// history keeps. Main thread.
class FoldedTexts {
public:
    /// Where a label stands in the document.
    struct Place {
        int start = 0;
        int end = 0;
        int id = 0;
    };

    /// A long text and its label.
    struct Fold {
        QString text; ///< With line feeds as line ends.
        QString label;
        bool hasContent = false;
    };

    /// `document` must outlive the object.
    explicit FoldedTexts(QTextDocument &document) : m_document(document) {}

    enum class Origin {
        pasted,
        written, ///< As a person types or dictates, who goes on behind the limits.
    };

    /// The label for a text of any length. Any thread, and better not the main one for many megabytes.
    static Fold fold(const QString &text);
    /// Whether `text` in the place of what `cursor` selects would make the document slow.
    bool isTooLong(const QTextCursor &cursor, const QString &text, Origin origin) const;
    /// Whether a text is so long whatever there is beside it.
    static bool isTooLong(qsizetype size);
    /// Puts a label in the place of what `cursor` selects. It stands for the text, also when it is undone and
    /// redone.
    void insert(QTextCursor &cursor, const Fold &fold);
    /// Forgets every text; for a document that has just been emptied together with its history.
    void clear() { m_folds.clear(); }

    /// The labels from the beginning to the end.
    QList<Place> places() const;
    /// The label that `position` is within or beside.
    std::optional<Place> placeAt(int position) const;
    QString text(const Place &place) const { return m_folds.value(place.id).text; }

    /// What stands between two positions of the document, with the texts in the place of their labels and
    /// line feeds as line ends.
    QString textBetween(int from, int to) const;
    /// The same in pieces, of which none is empty and those that are long are shared and not copied.
    QStringList piecesBetween(int from, int to) const;
    /// Whether the document holds anything besides white space. Reads no further than to where it does.
    bool hasContent() const;

    /// To be called after each change, for what others than the user do to the document: what was written
    /// beside a label in its format is text of its own, and of a label that has lost a part nothing stays.
    void mend();

private:
    QString ownText(int from, int to) const;
    QTextCursor cursorOver(int from, int to) const;
    void release(int from, int to);

    QTextDocument &m_document;
    QHash<int, Fold> m_folds; ///< Also those that can come back by undoing.
    int m_lastID = 0;
};

} // namespace morvane
