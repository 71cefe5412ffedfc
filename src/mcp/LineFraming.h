#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

namespace morvane {

/// Cuts what a tool server prints into its messages, one a line. A line ends with a line feed that does not
/// follow a carriage return: the two together are one character, and not this one. A chunk that is no UTF-8
/// by itself, such as one cut inside a character, is dropped whole. Takes time in proportion to what comes.
/// Used by one thread at a time.
class LineFraming {
public:
    /// No JSON text of that length can be read; of a longer line nothing is kept but its end.
    static constexpr qsizetype longestLine = qsizetype(1) << 30;

    explicit LineFraming(qsizetype longest = longestLine) : m_longest(longest) {}

    /// What one read gave; the lines that it completes, in order.
    QList<QByteArray> consume(QByteArrayView chunk);

    /// Bytes that do not form a whole line yet.
    qsizetype pendingBytes() const { return m_buffer.size(); }

private:
    /// Where the next line ends; -1 if it does not.
    qsizetype lineEnd();

    qsizetype m_longest;
    QByteArray m_buffer;
    qsizetype m_searched = 0; ///< Of the buffer, known to hold no line end.
    bool m_skipping = false;  ///< The present line was too long.
};

} // namespace morvane
