#pragma once

#include <QString>
#include <QStringView>

namespace morvane {

// A character here is what a user perceives as one: an extended grapheme cluster as ICU finds it. CR LF is
// one character. Every limit that a user or a model sees counts these. All functions are thread-safe.

/// A cluster of more UTF-16 units than this counts as several characters. Nothing that people write comes
/// near it, but a letter with three million marks on it would pass every limit.
inline constexpr qsizetype longestCharacterUnits = 64;

/// Number of characters. ASCII costs well under a nanosecond each, other text about 12.
qsizetype characterCount(QStringView text);

/// UTF-16 offset behind the first `count` characters; the size of the text if it has no more than that.
qsizetype characterOffset(QStringView text, qsizetype count);

/// The first `count` characters, or the text itself if it has no more than that.
QString firstCharacters(const QString &text, qsizetype count);

/// Without Unicode white space and line ends at both ends.
QString trimmed(QStringView text);

/// The text with every line end replaced by one blank (CR LF counts as one line end).
QString singleLine(QStringView text);

/// One line for a log or for speech: every line end becomes one blank (CR LF counts as one line end), the
/// result is trimmed, and if it then has more than `limit` characters it is its first `limit` and "…".
QString flattened(QStringView text, qsizetype limit);

} // namespace morvane
