#pragma once

#include "net/LineBatch.h"

namespace morvane {

/// Cuts a stream of bytes, however it is divided, into lines. A line ends with LF, CR LF or CR; empty lines
/// are left out. Not thread-safe.
class LineBuffer {
public:
    explicit LineBuffer(qsizetype maximumLineBytes) : m_maximumLineBytes(maximumLineBytes) {}

    /// Adds bytes; false when a line is longer than the limit, after which only the lines before it count.
    [[nodiscard]] bool append(QByteArrayView bytes);

    /// The stream is over: what has come since the last line end is a line too.
    void finish();

    bool hasLines() const { return !m_batch.ends.empty(); }
    /// Memory taken by the lines and by what has come of the next one, in bytes.
    qsizetype size() const;

    /// Moves the whole lines out.
    LineBatch takeLines();

private:
    bool extendLine(QByteArrayView piece);
    void endLine();

    qsizetype m_maximumLineBytes;
    LineBatch m_batch; ///< Its bytes may go on behind the last end, with the line that is still open.
    qsizetype m_lineBegin = 0;
};

} // namespace morvane
