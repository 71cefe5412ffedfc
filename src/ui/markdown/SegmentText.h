#pragma once

#include "ui/markdown/TextSegment.h"

#include <QString>
#include <QStringView>

namespace morvane {

/// The Markdown to parse for a segment of `text`: without quote marks, indent and lines of backticks, with
/// the repeated heading of its table, the number that its first list item has in the whole list, and the
/// message's link `references`.
QString markdownSource(QStringView text, const TextSegment &segment, const QString &references);

/// The lines of a code segment as they are shown.
QString codeText(QStringView text, const TextSegment &segment);

/// What a segment of `text` shows, without formatting and without the line end that closes it. Any thread.
QString shownText(QStringView text, const TextSegment &segment, const QString &references);

/// A code block as it is copied, given as one segment from its first line to its last: ">" marks belong to
/// the code unless the block itself stands in a quote.
QString copiedCode(QStringView text, const TextSegment &block);

/// The language named by the line that opens a code block, such as "python"; empty if it names none.
QString codeLanguage(QStringView text, const TextSegment &segment);

/// `text` without the few characters that the toolkit's documents take for structure of their own.
QString documentText(QString text);

} // namespace morvane
