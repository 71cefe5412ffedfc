#pragma once

#include "ui/markdown/MarkdownLine.h"
#include "ui/markdown/TextSegment.h"

#include <QList>
#include <QString>
#include <QStringView>
#include <array>
#include <optional>

namespace morvane {

/// A finished message cut into segments that can be formatted one by one.
struct MarkdownSegments {
    QList<TextSegment> segments;
    QString references; ///< Its link reference definitions, which every segment may need.
};

/// Cuts Markdown at the ends of its blocks; where a block is longer than a segment may be, between the items
/// of a list, the rows of a table (whose heading is repeated), lines or words. Code blocks become segments of
/// their own; the lines that open and close them belong to none. Linear in the length of the text.
class MarkdownSegmenter {
public:
    static MarkdownSegments segments(QStringView text);

private:
    explicit MarkdownSegmenter(QStringView text) : m_text(text) {}

    /// How a segment begins; see TextSegment.
    struct Opening {
        TextSegment::Joint joint = TextSegment::Joint::block;
        int number = -1;
    };
    /// A line before which the segment under way may end.
    struct Cut {
        qsizetype at = -1;
        qsizetype line = 0;
        qsizetype cost = 0;
        qsizetype tableHead = -1;
        Opening opening;
    };
    /// How well a segment ends before a line, best last.
    enum Rank { betweenLines, betweenItems, betweenBlocks, rankCount };

    void run();
    void addEmptyLine(qsizetype at);
    void addLine(const MarkdownLine &line, qsizetype from, qsizetype end);
    void addTextLine(const MarkdownLine &line, qsizetype from, qsizetype end);
    void addCodeLine(qsizetype from, qsizetype end);
    void closeCode();
    void noteTable(const MarkdownLine &line, qsizetype from);
    void noteReference(const MarkdownLine &line);
    bool opensIndentedCode(const MarkdownLine &line) const;
    Rank rankBefore(const MarkdownLine &line) const;
    void noteItem(const MarkdownLine &line);
    Opening openingOf(const MarkdownLine &line, Rank rank) const;
    void start(qsizetype from, const Opening &opening);
    bool isFull() const;
    void cut(qsizetype end);
    void cutWithinLine(qsizetype end, TextSegment::Kind kind);
    void flushText();
    void append(qsizetype from, qsizetype end, TextSegment::Kind kind);

    QStringView m_text;
    MarkdownSegments m_result;

    qsizetype m_from = -1; ///< Start of the segment under way; -1 between segments.
    qsizetype m_end = -1;  ///< End of its last line that is not blank.
    qsizetype m_line = 0;  ///< Lines read so far, and how many of them before the segment.
    qsizetype m_firstLine = 0;
    qsizetype m_cost = 0; ///< Of those lines, of the line under way, and of what stands before the segment.
    qsizetype m_lineCost = 0;
    qsizetype m_firstCost = 0;
    std::array<Cut, rankCount> m_cuts;

    std::optional<CodeFence> m_fence;
    bool m_inIndentedCode = false;
    qsizetype m_opening = -1;   ///< Of the segments under way, see TextSegment::opening.
    qsizetype m_firstCode = -1; ///< Index of the first segment of the code block under way.

    Opening m_begins;      ///< Of the segment under way.
    int m_itemNumber = -1; ///< Of the ordered list's item under way; -1 outside of one.
    bool m_inList = false;
    bool m_afterBlank = true;
    bool m_afterHeading = false;
    int m_indent = 0; ///< Indent of text that goes on after a code block inside a list item.
    qsizetype m_previousLine = -1;
    qsizetype m_tableHead = -1;
    qsizetype m_tableDelimiter = -1;
};

} // namespace morvane
