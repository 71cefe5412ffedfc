#pragma once

#include "base/Json.h"
#include "base/Uuid.h"
#include "store/ConversationFile.h"
#include "support/ChatMessageFromJson.h"

namespace morvane {

/// What decoding must give, worked out in the simplest way: from the whole file as one JSON value.
inline std::optional<ConversationFile> conversationOfWholeValue(QByteArrayView bytes)
{
    const auto object = parseJsonObject(bytes);
    if (!object)
        return std::nullopt;
    const auto idText = stringMember(*object, "id");
    const auto id = idText ? uuidFromText(*idText) : std::nullopt;
    const auto title = stringMember(*object, "title");
    const auto createdAt = numberMember(*object, "createdAt");
    const auto updatedAt = numberMember(*object, "updatedAt");
    const boost::json::array *const messages = arrayMember(*object, "messages");
    if (!id || !title || !createdAt || !updatedAt || !messages)
        return std::nullopt;
    ConversationFile file{
        .id = *id, .title = *title, .createdAt = *createdAt, .updatedAt = *updatedAt, .messages = {}};
    for (const boost::json::value &element : *messages) {
        const auto message = chatMessageFromJson(element);
        if (!message)
            return std::nullopt;
        file.messages.append(*message);
    }
    return file;
}

} // namespace morvane
