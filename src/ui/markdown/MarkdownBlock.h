#pragma once

#include <QFlags>
#include <QList>
#include <QString>

namespace morvane {

/// A stretch of text in one style.
struct MarkdownRun {
    enum StyleFlag { none = 0, bold = 1, italic = 2, code = 4, strikethrough = 8, aside = 16 };
    Q_DECLARE_FLAGS(Style, StyleFlag)

    QString text;
    Style style;  ///< An aside is not in the source: where a link leads.
    QString link; ///< A http, https or mailto address; empty for plain text.

    bool operator==(const MarkdownRun &) const = default;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(MarkdownRun::Style)

/// One cell of a table.
struct MarkdownCell {
    enum class Alignment { natural, left, center, right };

    QList<MarkdownRun> runs;
    Alignment alignment = Alignment::natural;

    bool operator==(const MarkdownCell &) const = default;
};

/// One block of formatted text. Nesting is flattened: a list item is a paragraph with a marker and an indent.
struct MarkdownBlock {
    enum class Kind { paragraph, heading, code, rule, table };

    Kind kind = Kind::paragraph;
    int level = 0;        ///< Heading level, 1 to 6.
    int indent = 0;       ///< Depth of the enclosing lists and quotes.
    QString marker;       ///< "•", "3.", "☑" or "☐" before a list item's first paragraph.
    bool isTight = false; ///< Whether the block stands close to the one above.
    QList<MarkdownRun> runs;
    QList<QList<MarkdownCell>> rows; ///< Of a table; the first is its heading.

    bool operator==(const MarkdownBlock &) const = default;
};

} // namespace morvane
