#pragma once

#include "ui/conversation/ConversationStyle.h"
#include "ui/markdown/MarkdownBlock.h"

#include <QTextBlockFormat>
#include <QTextCharFormat>
#include <QTextCursor>
#include <QTextDocument>

namespace morvane {

/// Writes blocks of Markdown into an empty document.
class MarkdownWriter {
public:
    /// True of a block above which an empty line stands.
    static constexpr int standsApartProperty = QTextFormat::UserProperty + 1;

    /// Both must outlive the writer.
    MarkdownWriter(QTextDocument &document, const ConversationStyle &style);

    void write(const QList<MarkdownBlock> &blocks);

private:
    void writeText(const MarkdownBlock &block);
    void writeRuns(QTextCursor &cursor, const QList<MarkdownRun> &runs, const QTextCharFormat &base) const;
    void writeRule();
    /// The space below a table is its own: it is what the block behind it wants above itself.
    void writeTable(const MarkdownBlock &block, int gapBelow);
    int gapAbove(const MarkdownBlock &block) const;
    void writeTableAsText(const MarkdownBlock &block);
    void startBlock(const QTextBlockFormat &format, const QTextCharFormat &characters);
    QTextBlockFormat blockFormat(const MarkdownBlock &block) const;
    QTextCharFormat textFormat(const MarkdownBlock &block) const;

    const ConversationStyle &m_style;
    QTextCursor m_cursor;
    bool m_isBlockUsed = false; ///< Whether the block at the cursor holds something.
    bool m_isFirst = true;
};

} // namespace morvane
