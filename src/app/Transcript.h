#pragma once

#include "model/ChatMessage.h"

#include <QList>
#include <QObject>
#include <QString>
#include <optional>

namespace morvane {

/// The rows of the open conversation. Views follow the signals, which say exactly what changed. Main thread.
class Transcript : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    const QList<ChatMessage> &messages() const { return m_messages; }

    /// Replaces every row.
    void reset(QList<ChatMessage> messages);
    void append(ChatMessage message);

    /// Index of the newest assistant message, or nothing.
    std::optional<qsizetype> newestAssistant() const;

    /// Appends `text` to the newest assistant message; without one it does nothing.
    void appendToken(const QString &text);
    /// Length of the newest assistant message in characters; 0 without one.
    qsizetype currentAssistantTextLength() const;

    void setText(qsizetype row, const QString &text);
    void setStreaming(qsizetype row, bool streaming);
    void setErrorMessage(qsizetype row, const QString &error);

Q_SIGNALS:
    void messagesReset();
    void messageAppended(qsizetype row);
    /// The text of `row` grew; what is new begins at UTF-16 index `from`.
    void textAppended(qsizetype row, qsizetype from);
    /// Anything else about `row` changed (shortened text, streaming flag, error).
    void messageChanged(qsizetype row);

private:
    QList<ChatMessage> m_messages;
};

} // namespace morvane
