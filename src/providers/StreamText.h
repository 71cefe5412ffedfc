#pragma once

#include <QChar>
#include <QString>
#include <optional>
#include <string>
#include <string_view>

namespace morvane {

/// One text of a stream, put together from pieces that may cut a character, between the bytes of its UTF-8 or
/// between the two escapes of its surrogates: the first part waits for the rest. What is no UTF-8 becomes
/// U+FFFD, and so does a surrogate without its partner.
class StreamText {
public:
    /// Adds a piece and gives what is whole now, which may be nothing. An escaped surrogate stands in the
    /// piece as three bytes (see StreamChunk).
    QString add(std::string_view piece);

    /// No piece follows: gives what becomes of a character whose rest never came.
    QString end();

    /// All that was given so far.
    const QString &text() const { return m_text; }

private:
    QString decoded(std::string_view bytes);
    QString paired(const QString &text);

    QString m_text;
    std::string m_cutBytes;               ///< Of a character that the last piece began and did not end.
    std::optional<QChar> m_highSurrogate; ///< The same, for a character in two escapes.
};

} // namespace morvane
