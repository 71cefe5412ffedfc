#pragma once

#include "ui/conversation/ConversationStyle.h"
#include "ui/markdown/MarkdownBlock.h"

#include <QColor>
#include <QFont>
#include <QList>
#include <QString>
#include <QTextDocument>
#include <memory>

class QTextBlock;

namespace morvane {

/// A document with `text` as it stands, a block for each line.
/// Documents have no margin and no undo, and load nothing from anywhere.
std::unique_ptr<QTextDocument> plainDocument(const QString &text, const QFont &font, const QColor &color);

/// A document with formatted text.
std::unique_ptr<QTextDocument> markdownDocument(const QList<MarkdownBlock> &blocks,
                                                const ConversationStyle &style);

/// Whether an empty line stands above a block of formatted text where it is copied.
bool standsApart(const QTextBlock &block);

/// Adds to the end of a plain document what its text grew by.
void appendPlainText(QTextDocument &document, const QString &text);

enum class DocumentFit {
    full,
    narrow ///< A text that is shorter than a line gets no more than its own width.
};

/// Lays a document out in `width` logical pixels.
void setDocumentWidth(QTextDocument &document, int width, DocumentFit fit);

} // namespace morvane
