#include "store/ConversationFile.h"

#include "base/Json.h"
#include "base/Uuid.h"
#include "model/ChatMessageJson.h"

#include <boost/json/monotonic_resource.hpp>

namespace morvane {

namespace json = boost::json;

QByteArray encodeConversation(const ConversationFile &file)
{
    json::array messages;
    messages.reserve(static_cast<std::size_t>(file.messages.size()));
    for (const ChatMessage &message : file.messages)
        messages.emplace_back(toJson(message));

    json::object object;
    object.emplace("id", jsonFromText(uuidText(file.id)));
    object.emplace("title", jsonFromText(file.title));
    object.emplace("createdAt", file.createdAt);
    object.emplace("updatedAt", file.updatedAt);
    object.emplace("messages", std::move(messages));
    return serializeJson(object);
}

std::optional<ConversationFile> decodeConversation(QByteArrayView bytes)
{
    json::monotonic_resource memory;
    const auto value = parseJson(bytes, &memory);
    const json::object *const object = value ? value->if_object() : nullptr;
    if (!object)
        return std::nullopt;
    const auto idText = stringMember(*object, "id");
    const auto id = idText ? uuidFromText(*idText) : std::nullopt;
    auto title = stringMember(*object, "title");
    const auto createdAt = numberMember(*object, "createdAt");
    const auto updatedAt = numberMember(*object, "updatedAt");
    const json::array *const messages = arrayMember(*object, "messages");
    if (!id || !title || !createdAt || !updatedAt || !messages)
        return std::nullopt;

    ConversationFile file{.id = *id,
                          .title = std::move(*title),
                          .createdAt = *createdAt,
                          .updatedAt = *updatedAt,
                          .messages = {}};
    file.messages.reserve(static_cast<qsizetype>(messages->size()));
    for (const json::value &element : *messages) {
        auto message = chatMessageFromJson(element);
        if (!message)
            return std::nullopt;
        file.messages.append(std::move(*message));
    }
    return file;
}

} // namespace morvane
