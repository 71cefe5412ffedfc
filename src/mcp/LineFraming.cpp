#include "mcp/LineFraming.h"

namespace morvane {

QList<QByteArray> LineFraming::consume(QByteArrayView chunk)
{
    QList<QByteArray> lines;
    if (!chunk.isValidUtf8())
        return lines;
    m_buffer.append(chunk);
    qsizetype start = 0;
    while (true) {
        const qsizetype end = lineEnd();
        if (end < 0)
            break;
        // The only line there is takes the buffer along: it may be all that fits into memory once.
        if (start == 0 && end + 1 == m_buffer.size()) {
            m_buffer.chop(1);
            lines.append(std::exchange(m_buffer, {}));
        } else {
            lines.append(m_buffer.sliced(start, end - start));
        }
        if (std::exchange(m_skipping, false))
            lines.removeLast();
        start = m_buffer.isEmpty() ? 0 : end + 1;
        m_searched = start;
    }
    if (start > 0) {
        m_buffer = m_buffer.sliced(start);
        m_searched -= start;
    }
    if (m_buffer.size() > m_longest) {
        m_skipping = true;
        // What the next line feed follows still counts.
        m_buffer = m_buffer.last(1);
        m_searched = 0;
    }
    return lines;
}

qsizetype LineFraming::lineEnd()
{
    while (true) {
        const qsizetype feed = m_buffer.indexOf('\n', m_searched);
        if (feed < 0) {
            m_searched = m_buffer.size();
            return -1;
        }
        m_searched = feed + 1;
        if (feed == 0 || m_buffer.at(feed - 1) != '\r')
            return feed;
    }
}

} // namespace morvane
