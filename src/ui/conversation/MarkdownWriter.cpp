#include "ui/conversation/MarkdownWriter.h"

#include "ui/markdown/SegmentText.h"

#include <QTextTable>
#include <array>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// Beyond these a table costs more than a frame to lay out, and nobody reads it as a table.
constexpr qsizetype tableColumnLimit = 24;
constexpr qsizetype tableCellLimit = 400;

/// Of a block without text, which takes the height of its font otherwise.
QTextCharFormat flat()
{
    QFont font;
    font.setPixelSize(1);
    QTextCharFormat format;
    format.setFont(font);
    return format;
}

Qt::Alignment alignmentOf(MarkdownCell::Alignment alignment)
{
    switch (alignment) {
    case MarkdownCell::Alignment::left:
        return Qt::AlignLeft | Qt::AlignAbsolute;
    case MarkdownCell::Alignment::center:
        return Qt::AlignHCenter;
    case MarkdownCell::Alignment::right:
        return Qt::AlignRight | Qt::AlignAbsolute;
    case MarkdownCell::Alignment::natural:
        break;
    }
    return Qt::AlignLeading;
}

} // namespace

MarkdownWriter::MarkdownWriter(QTextDocument &document, const ConversationStyle &style)
    : m_style(style), m_cursor(&document)
{
}

void MarkdownWriter::write(const QList<MarkdownBlock> &blocks)
{
    m_cursor.beginEditBlock();
    for (qsizetype i = 0; i < blocks.size(); ++i) {
        const MarkdownBlock &block = blocks.at(i);
        switch (block.kind) {
        case MarkdownBlock::Kind::rule:
            writeRule();
            break;
        case MarkdownBlock::Kind::table:
            writeTable(block, i + 1 < blocks.size() ? gapAbove(blocks.at(i + 1)) : 0);
            break;
        case MarkdownBlock::Kind::paragraph:
        case MarkdownBlock::Kind::heading:
        case MarkdownBlock::Kind::code:
            writeText(block);
            break;
        }
        m_isFirst = false;
    }
    m_cursor.endEditBlock();
}

void MarkdownWriter::startBlock(const QTextBlockFormat &format, const QTextCharFormat &characters)
{
    if (m_isBlockUsed) {
        m_cursor.insertBlock(format, characters);
    } else {
        m_cursor.setBlockFormat(format);
        m_cursor.setBlockCharFormat(characters);
    }
    m_isBlockUsed = true;
}

int MarkdownWriter::gapAbove(const MarkdownBlock &block) const
{
    using Joint = TextSegment::Joint;
    const bool isHeading = block.kind == MarkdownBlock::Kind::heading;
    return m_style.gapAbove(block.isTight ? Joint::item : isHeading ? Joint::heading : Joint::block);
}

QTextBlockFormat MarkdownWriter::blockFormat(const MarkdownBlock &block) const
{
    QTextBlockFormat format;
    format.setTopMargin(m_isFirst ? 0 : gapAbove(block));
    format.setProperty(standsApartProperty, !m_isFirst && !block.isTight);
    format.setLineHeight(112, QTextBlockFormat::ProportionalHeight);
    format.setIndent(block.indent);
    if (!block.marker.isEmpty()) {
        format.setTextIndent(-m_style.indentWidth);
        const qreal width = m_style.indentWidth;
        format.setTabPositions({{width, QTextOption::LeftTab}, {width * 2, QTextOption::LeftTab}});
    }
    if (block.kind == MarkdownBlock::Kind::code) {
        format.setBackground(m_style.colors.codeGround);
        format.setNonBreakableLines(false);
    }
    return format;
}

QTextCharFormat MarkdownWriter::textFormat(const MarkdownBlock &block) const
{
    QTextCharFormat format;
    if (block.kind == MarkdownBlock::Kind::heading) {
        constexpr std::array scales{1.5, 1.3, 1.15, 1.05, 1.0, 1.0};
        QFont font = m_style.font;
        const auto level = static_cast<std::size_t>(qBound(1, block.level, 6) - 1);
        if (font.pointSizeF() > 0)
            font.setPointSizeF(font.pointSizeF() * scales[level]);
        else
            font.setPixelSize(qRound(font.pixelSize() * scales[level]));
        font.setWeight(QFont::DemiBold);
        format.setFont(font);
    } else if (block.kind == MarkdownBlock::Kind::code) {
        format.setFont(m_style.codeFont);
    }
    return format;
}

void MarkdownWriter::writeText(const MarkdownBlock &block)
{
    const QTextCharFormat format = textFormat(block);
    startBlock(blockFormat(block), format);
    if (!block.marker.isEmpty())
        m_cursor.insertText(block.marker + u'\t', format);
    writeRuns(m_cursor, block.runs, format);
}

void MarkdownWriter::writeRuns(QTextCursor &cursor, const QList<MarkdownRun> &runs,
                               const QTextCharFormat &base) const
{
    for (const MarkdownRun &run : runs) {
        QTextCharFormat format = base;
        if (run.style.testFlag(MarkdownRun::code)) {
            QFont font = m_style.codeFont;
            if (base.hasProperty(QTextFormat::FontPointSize)) {
                font.setPointSizeF(base.fontPointSize() * m_style.codeFont.pointSizeF() /
                                   m_style.font.pointSizeF());
            }
            format.setFont(font);
            format.setBackground(m_style.colors.codeGround);
        }
        if (run.style.testFlag(MarkdownRun::bold))
            format.setFontWeight(QFont::Bold);
        if (run.style.testFlag(MarkdownRun::italic))
            format.setFontItalic(true);
        if (run.style.testFlag(MarkdownRun::strikethrough))
            format.setFontStrikeOut(true);
        if (run.style.testFlag(MarkdownRun::aside))
            format.setForeground(m_style.colors.secondaryText);
        if (!run.link.isEmpty()) {
            format.setAnchor(true);
            format.setAnchorHref(run.link);
            format.setForeground(m_style.colors.accent);
            format.setFontUnderline(true);
        }
        // Code blocks bring line feeds; within a document a line feed would start a block of its own format.
        cursor.insertText(documentText(QString(run.text).replace(u'\n', QChar::LineSeparator)), format);
    }
}

void MarkdownWriter::writeRule()
{
    QTextBlockFormat format;
    format.setTopMargin(m_isFirst ? 0 : m_style.segmentGap);
    const int below = m_style.segmentGap / 3;
    format.setBottomMargin(below);
    format.setBackground(m_style.colors.border);
    format.setLineHeight(1, QTextBlockFormat::FixedHeight);
    startBlock(format, flat());
}

void MarkdownWriter::writeTable(const MarkdownBlock &block, int gapBelow)
{
    qsizetype columns = 0;
    for (const auto &row : block.rows)
        columns = qMax(columns, row.size());
    if (columns == 0)
        return;
    if (columns > tableColumnLimit || columns * block.rows.size() > tableCellLimit) {
        writeTableAsText(block);
        return;
    }
    if (m_isBlockUsed)
        m_cursor.insertBlock(QTextBlockFormat(), QTextCharFormat());
    QTextTableFormat format;
    format.setBorder(1);
    format.setBorderBrush(m_style.colors.border);
    format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
    format.setBorderCollapse(true);
    format.setCellSpacing(0);
    format.setCellPadding(m_style.segmentGap * 0.6);
    format.setTopMargin(m_isFirst ? 1 : m_style.segmentGap);
    // The toolkit leaves out the upper margin of what follows a table.
    format.setBottomMargin(gapBelow);
    format.setLeftMargin(1);
    QTextTable *table =
        m_cursor.insertTable(static_cast<int>(block.rows.size()), static_cast<int>(columns), format);
    for (int row = 0; row < table->rows(); ++row) {
        const auto &cells = block.rows.at(row);
        for (int column = 0; column < cells.size(); ++column) {
            QTextTableCell cell = table->cellAt(row, column);
            QTextCharFormat characters;
            if (row == 0) {
                characters.setFontWeight(QFont::DemiBold);
                QTextTableCellFormat cellFormat;
                cellFormat.setBackground(m_style.colors.codeGround);
                cell.setFormat(cellFormat);
            }
            QTextCursor cursor = cell.firstCursorPosition();
            QTextBlockFormat alignment;
            alignment.setAlignment(alignmentOf(cells.at(column).alignment));
            cursor.setBlockFormat(alignment);
            writeRuns(cursor, cells.at(column).runs, characters);
        }
    }
    m_cursor.movePosition(QTextCursor::End);
    // The block behind a table cannot be left out; as long as nothing follows it must not take up a line.
    QTextBlockFormat nothing;
    nothing.setLineHeight(1, QTextBlockFormat::FixedHeight);
    m_cursor.setBlockFormat(nothing);
    m_cursor.setBlockCharFormat(flat());
    m_isBlockUsed = false;
}

void MarkdownWriter::writeTableAsText(const MarkdownBlock &block)
{
    MarkdownBlock lines;
    lines.kind = MarkdownBlock::Kind::code;
    for (const auto &row : block.rows) {
        for (const MarkdownCell &cell : row) {
            lines.runs += cell.runs;
            lines.runs.append({.text = u" | "_s, .style = {}, .link = {}});
        }
        lines.runs.append({.text = QString(QChar::LineSeparator), .style = {}, .link = {}});
    }
    writeText(lines);
}

} // namespace morvane
