#include "app/TokenBatch.h"

#include "app/Transcript.h"
#include "base/Text.h"

namespace morvane {

void TokenBatch::add(const QString &token)
{
    m_buffer.append(token);
    // A text never has more characters than UTF-16 units, so most tokens need no counting.
    if (m_buffer.size() >= batchLength && characterCount(m_buffer) >= batchLength)
        flush();
}

void TokenBatch::flush()
{
    if (m_buffer.isEmpty())
        return;
    m_transcript.appendToken(m_buffer);
    m_buffer.clear();
}

} // namespace morvane
