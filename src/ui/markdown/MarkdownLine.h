#pragma once

#include <QString>
#include <QStringView>
#include <optional>

namespace morvane {

/// What the segmenter needs to know of one line of Markdown.
struct MarkdownLine {
    QStringView text;    ///< Without leading ">" marks and the blanks after them.
    QStringView trimmed; ///< Without white space at both ends.
    int indent = 0;      ///< Columns of leading white space; a tab ends at the next multiple of four.
    bool isQuoted = false;

    explicit MarkdownLine(QStringView line);

    bool isBlank() const { return trimmed.isEmpty(); }
    bool isListItem() const;
    /// The number of an item of an ordered list.
    std::optional<int> itemNumber() const;
    bool isHeading() const;
    bool isTableDelimiter() const;
    /// Lines that begin with three backticks are never shown, whether they open, close or do neither.
    bool isBacktickLine() const { return trimmed.startsWith(u"```"); }
};

/// `line` without up to `columns` columns of leading white space.
QStringView dedented(QStringView line, int columns);

/// The line that opens or closes a fenced code block.
struct CodeFence {
    QChar mark;
    qsizetype length = 0;
    int indent = 0;
    bool isQuoted = false;
    QString language;

    /// The fence that `line` opens, or nothing.
    static std::optional<CodeFence> opening(const MarkdownLine &line);
    bool isClosedBy(const MarkdownLine &line) const;
};

} // namespace morvane
