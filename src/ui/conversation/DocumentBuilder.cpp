#include "ui/conversation/DocumentBuilder.h"

#include "ui/conversation/MarkdownWriter.h"
#include "ui/markdown/SegmentText.h"

#include <QTextBlock>
#include <QTextCursor>
#include <QTextOption>

namespace morvane {

namespace {

std::unique_ptr<QTextDocument> emptyDocument(const QFont &font)
{
    auto document = std::make_unique<QTextDocument>();
    document->setUndoRedoEnabled(false);
    document->setDocumentMargin(0);
    document->setDefaultFont(font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    document->setDefaultTextOption(option);
    return document;
}

} // namespace

std::unique_ptr<QTextDocument> plainDocument(const QString &text, const QFont &font, const QColor &color)
{
    auto document = emptyDocument(font);
    QTextCharFormat characters;
    characters.setForeground(color);
    QTextBlockFormat block;
    block.setLineHeight(112, QTextBlockFormat::ProportionalHeight);
    QTextCursor cursor(document.get());
    cursor.setBlockFormat(block);
    cursor.setBlockCharFormat(characters);
    cursor.insertText(documentText(text), characters);
    return document;
}

bool standsApart(const QTextBlock &block)
{
    return block.blockFormat().boolProperty(MarkdownWriter::standsApartProperty);
}

void appendPlainText(QTextDocument &document, const QString &text)
{
    QTextCursor cursor(&document);
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(documentText(text), cursor.charFormat());
}

std::unique_ptr<QTextDocument> markdownDocument(const QList<MarkdownBlock> &blocks,
                                                const ConversationStyle &style)
{
    auto document = emptyDocument(style.font);
    document->setIndentWidth(style.indentWidth);
    MarkdownWriter(*document, style).write(blocks);
    return document;
}

} // namespace morvane
