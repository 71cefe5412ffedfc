#include "net/LineReader.h"

#include <utility>

namespace morvane {

bool LineReader::refill()
{
    if (m_index < m_batch.count())
        return true;
    m_index = 0;
    m_batch = {};
    return m_body.takeLines(m_batch);
}

std::optional<QByteArray> LineReader::take()
{
    if (!refill() || m_batch.count() == 0)
        return std::nullopt;
    const QByteArrayView line = m_batch.line(m_index++);
    if (m_index < m_batch.count())
        return line.toByteArray();
    // The last one takes the bytes along: it may be too long to be copied here.
    m_batch.bytes.remove(0, m_batch.bytes.size() - line.size());
    return std::move(m_batch.bytes);
}

} // namespace morvane
