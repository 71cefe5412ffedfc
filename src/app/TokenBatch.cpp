#include "app/TokenBatch.h"

#include "app/Transcript.h"
#include "base/Text.h"

#include <algorithm>

namespace morvane {

TokenBatch::TokenBatch(Transcript &transcript) : m_transcript(transcript)
{
    if (const auto row = transcript.newestAssistant())
        m_answer = transcript.messages().at(*row).id;
}

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
    const QList<ChatMessage> &messages = m_transcript.messages();
    const auto isAnswer = [this](const ChatMessage &message) { return message.id == m_answer; };
    // A cancelled request may bring what had arrived before. The answer is among the last.
    if (std::any_of(messages.rbegin(), messages.rend(), isAnswer))
        m_transcript.appendToken(m_buffer);
    m_buffer.clear();
}

} // namespace morvane
