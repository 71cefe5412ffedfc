#pragma once

#include "ui/conversation/SelectedRow.h"

#include <QList>
#include <QString>
#include <optional>

namespace morvane {

/// Puts the text of selected rows together as it is shown, with an empty line between paragraphs and between
/// rows: so much at a time that nobody is held up. The rows are as they were when they were selected,
/// whatever becomes of the conversation.
class SelectionReader {
public:
    explicit SelectionReader(QList<SelectedRow> rows = {}) : m_rows(std::move(rows)) {}

    bool isAtEnd() const { return !m_stretch && m_next >= m_rows.size(); }
    /// Reads on until some `letters` more are there or the end has come.
    void read(qsizetype letters);
    /// What has been read; everything at the end.
    const QString &text() const { return m_text; }

    /// All of it, at once.
    static QString wholeText(QList<SelectedRow> rows);

private:
    void append(QStringView text);
    void begin(SelectedStretch stretch);
    void readSegment();

    QList<SelectedRow> m_rows;
    qsizetype m_next = 0;
    std::optional<SelectedStretch> m_stretch; ///< The message that is being read,
    qsizetype m_segment = 0;                  ///< from here on.
    QString m_partText;
    std::optional<RowPart> m_part;
    bool m_hasRowText = false;
    QString m_text;
};

} // namespace morvane
