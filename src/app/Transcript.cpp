#include "app/Transcript.h"

#include "base/Text.h"

#include <utility>

namespace morvane {

void Transcript::reset(QList<ChatMessage> messages)
{
    m_messages = std::move(messages);
    Q_EMIT messagesReset();
}

void Transcript::append(ChatMessage message)
{
    m_messages.append(std::move(message));
    Q_EMIT messageAppended(m_messages.size() - 1);
}

std::optional<qsizetype> Transcript::newestAssistant() const
{
    for (qsizetype row = m_messages.size() - 1; row >= 0; --row)
        if (m_messages.at(row).role == Role::assistant)
            return row;
    return std::nullopt;
}

void Transcript::appendToken(const QString &text)
{
    const auto row = newestAssistant();
    if (!row || text.isEmpty())
        return;
    QString &grown = m_messages[*row].text;
    const qsizetype from = grown.size();
    grown.append(text);
    Q_EMIT textAppended(*row, from);
}

qsizetype Transcript::currentAssistantTextLength() const
{
    const auto row = newestAssistant();
    return row ? characterCount(m_messages.at(*row).text) : 0;
}

void Transcript::setText(qsizetype row, const QString &text)
{
    m_messages[row].text = text;
    Q_EMIT messageChanged(row);
}

void Transcript::setStreaming(qsizetype row, bool streaming)
{
    if (m_messages.at(row).isStreaming == streaming)
        return;
    m_messages[row].isStreaming = streaming;
    Q_EMIT messageChanged(row);
}

void Transcript::setErrorMessage(qsizetype row, const QString &error)
{
    m_messages[row].errorMessage = error;
    Q_EMIT messageChanged(row);
}

} // namespace morvane
