#pragma once

#include <QString>
#include <QStringList>

namespace morvane {

/// Longest text of one announcement in UTF-16 units. A bus message may be 128 MiB and a screen reader takes
/// any length, but a reader can only be told to skip whole announcements: this is about half an hour of
/// speech.
inline constexpr qsizetype maximumSpokenLength = 32 * 1024;

/// `text` as it can be spoken, in pieces of at most `limit` UTF-16 units that follow each other without
/// loss, cut after sentences where there are any. Control characters become blanks and lone surrogates
/// U+FFFD, since neither can be carried by the bus. Text without anything to speak gives no piece.
QStringList spokenPieces(const QString &text, qsizetype limit = maximumSpokenLength);

} // namespace morvane
