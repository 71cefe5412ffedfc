#pragma once

#include "ui/markdown/MarkdownBlock.h"

#include <QList>
#include <QString>
#include <QStringView>

namespace morvane {

/// Reads GitHub flavoured Markdown. HTML is shown as the text that it is, images as links to them, line ends
/// are kept, and addresses other than http, https and mailto are no links. Any thread.
QList<MarkdownBlock> parseMarkdown(QStringView source);

/// The text of `blocks` without formatting: markers before items, tabs between cells, one line per row, an
/// empty line between blocks that stand apart.
QString markdownPlainText(const QList<MarkdownBlock> &blocks);

/// Whether pressing an address that a model wrote may open it.
bool isSafeLink(const QString &address);

} // namespace morvane
