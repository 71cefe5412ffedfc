#pragma once

#include "model/ChatAttachment.h"

#include <QList>
#include <QString>
#include <QUuid>
#include <optional>

namespace morvane {

/// Author of a message. Stored as "user", "assistant".
enum class Role { user, assistant };

/// One row of the conversation: what the user sees and what is stored.
struct ChatMessage {
    QUuid id;
    Role role = Role::user;
    QString text;
    bool isStreaming = false;            ///< True while the agent still works on this message.
    std::optional<QString> errorMessage; ///< The friendly error that ended the request.
    QList<ChatAttachment> attachments;
    double date = 0; ///< Creation, in seconds since 2001-01-01T00:00:00Z (base/ReferenceDate.h).

    bool operator==(const ChatMessage &) const = default;

    /// The text that the row shows: placeholder, text, file names or the "no response" note.
    QString displayText() const;

    /// The sentence that a screen reader speaks for the row.
    QString accessibilityLabel() const;
};

} // namespace morvane
