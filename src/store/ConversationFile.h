#pragma once

#include "model/ChatMessage.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QUuid>
#include <functional>
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

/// Gives the next bytes of a file, valid until the next call: none at its end, nothing when it cannot be
/// read. The first piece has at least three bytes, or is the whole file.
using ConversationPieces = std::function<std::optional<QByteArrayView>()>;

/// Nothing for anything but one JSON object with every key of the right type; unknown keys are ignored.
std::optional<ConversationFile> decodeConversation(QByteArrayView bytes);

/// The same in pieces, so that the file need not stand in memory beside its messages.
std::optional<ConversationFile> decodeConversation(const ConversationPieces &nextPiece);

} // namespace morvane
