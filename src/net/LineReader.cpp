#include "net/LineReader.h"

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
    return m_batch.line(m_index++).toByteArray();
}

} // namespace morvane
