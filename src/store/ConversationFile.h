#pragma once

#include "model/ChatMessage.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QUuid>
#include <optional>

namespace morvane {

/// The content of a conversation file.
struct ConversationFile {
    QUuid id;
    QString title;        ///< As it was given, also when empty.
    double createdAt = 0; ///< Seconds since 2001-01-01T00:00:00Z, as updatedAt.
    double updatedAt = 0;
    QList<ChatMessage> messages;

    bool operator==(const ConversationFile &) const = default;
};

/// Compact JSON, keys in the order of the fields.
QByteArray encodeConversation(const ConversationFile &file);

/// Nothing for anything but one JSON object with every key of the right type; unknown keys are ignored.
std::optional<ConversationFile> decodeConversation(QByteArrayView bytes);

} // namespace morvane
