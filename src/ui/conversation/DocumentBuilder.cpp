#include "ui/conversation/DocumentBuilder.h"

#include "ui/conversation/MarkdownWriter.h"
#include "ui/markdown/SegmentText.h"

#include <QTextBlock>
#include <QTextCursor>
#include <QTextLayout>
#include <QTextOption>
#include <QtMath>

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

void setDocumentWidth(QTextDocument &document, int width, DocumentFit fit)
{
    // The toolkit forgets the shapes of the letters otherwise, and finds them again for each drawing.
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
        block.layout()->setCacheEnabled(true);
    document.setTextWidth(width);
    // A short message gets a narrow bubble, in which text from right to left must find its edge.
    constexpr double fullLine = 0.9;
    if (fit == DocumentFit::narrow && document.idealWidth() < fullLine * width)
        document.setTextWidth(qCeil(document.idealWidth()));
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
