#pragma once

#include "model/ChatMessage.h"
#include "ui/conversation/RowLayout.h"

#include <QList>
#include <QString>

namespace morvane {

/// The texts that a message's row shows, from the top. Any thread.
QList<RowPart> messageParts(const ChatMessage &message);

/// One of them; empty for a part that the message does not have.
QString partText(const ChatMessage &message, RowPart part);

/// Whether the body is Markdown that is to be formatted.
bool isFormatted(const ChatMessage &message);

/// The pictures that stand below a message's text, the first twenty; only those that the user sent.
QList<ChatAttachment> shownPictures(const ChatMessage &message);
qsizetype shownPictureCount(const ChatMessage &message);

/// How a part is cut into segments; the definitions of its links go into `references`.
QList<TextSegment> partSegments(const ChatMessage &message, RowPart part, QString &references);

/// What is copied between two segments of a row; `text` is that of the lower one's part.
QString separatorBetween(QStringView text, const SegmentLayout &above, const SegmentLayout &below);

/// A message's row, cut into segments and not laid out. Any thread.
RowLayout rowOf(const ChatMessage &message);

/// The row of a plain text.
RowLayout rowOf(const QString &text);

/// Adds the segments of a part with that text to a row. Any thread.
void addSegments(RowLayout &row, RowPart part, const QList<TextSegment> &segments, QStringView text);

} // namespace morvane
