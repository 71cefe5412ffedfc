#pragma once

#include "base/VisibleText.h"

#include <QPlainTextEdit>
#include <QTimer>

namespace morvane {

/// A read-only field for a text of any length that someone else wrote. Long lines are cut into pieces that
/// are laid out one by one as they come into sight, and a long text goes in by slices, so that none holds the
/// window up. What is copied has no trace of the cuts.
class LongTextField : public QPlainTextEdit {
    Q_OBJECT
public:
    enum class Style {
        prose,
        /// From left to right whatever its letters, with a mark at each line's end, so that line feeds differ
        /// from wrapping.
        command
    };
    enum class Hidden { asTheyStand, escaped };

    explicit LongTextField(QWidget *parent = nullptr);

    /// Shows another text; the first slice of it at once.
    void setContent(const QString &text, Style style, Hidden hidden);
    /// Forgets the text, piece by piece: a megabyte of short lines takes a hundred, and time
    /// to be freed.
    void letGo();
    /// Whether all of the text is in the field.
    bool isComplete() const { return m_taken == m_source.size(); }
    /// UTF-16 units of the text that are not in the field yet.
    qsizetype left() const { return m_source.size() - m_taken; }
    /// Lines and characters of what is in the field so far; the cuts do not count.
    qsizetype lines() const { return m_lines; }
    qsizetype characters() const { return m_characters; }

    /// The text of the field between two positions of its document, without the cuts.
    QString textBetween(int from, int to) const;

Q_SIGNALS:
    /// The last slice went in.
    void completed();

protected:
    QMimeData *createMimeDataFromSelection() const override;
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    /// Length of the slice that goes in next.
    qsizetype nextSlice() const;
    void takeSlice();
    void dropSlice();
    void insert(const VisibleText &visible);
    void markEscapes();
    void paintLineEnds();

    QString m_source;
    Style m_style = Style::prose;
    Hidden m_hidden = Hidden::asTheyStand;
    qsizetype m_taken = 0; ///< Of the source.
    qsizetype m_lines = 0;
    qsizetype m_characters = 0;
    bool m_isWithinLine = false;  ///< What comes next goes on in the line that the last slice began.
    QList<QTextCursor> m_escapes; ///< What is marked.
    QTimer m_timer;
    QTimer m_dropTimer;
};

} // namespace morvane
