#include "store/ConversationFile.h"

#include "base/Json.h"
#include "base/Uuid.h"
#include "model/ChatMessageJson.h"
#include "store/ConversationScanner.h"

#include <utility>

namespace morvane {

namespace json = boost::json;

QByteArray encodeConversation(const ConversationFile &file)
{
    json::object object;
    object.emplace("id", jsonFromText(uuidText(file.id)));
    object.emplace("title", jsonFromText(file.title));
    object.emplace("createdAt", file.createdAt);
    object.emplace("updatedAt", file.updatedAt);
    object.emplace("messages", json::array());
    QByteArray bytes = serializeJson(object);
    bytes.chop(2); // the brackets of the list and of all
    // One by one, so that the values of all messages never stand in memory beside their text.
    for (const ChatMessage &message : file.messages) {
        if (&message != &file.messages.front())
            bytes += ',';
        bytes += serializeJson(toJson(message));
    }
    return bytes + "]}";
}

std::optional<ConversationFile> decodeConversation(const ConversationPieces &nextPiece)
{
    ConversationBuilder builder;
    ConversationScanner scanner(builder);
    while (true) {
        const auto piece = nextPiece();
        if (!piece || (!piece->isEmpty() && !scanner.feed(*piece)))
            return std::nullopt;
        if (piece->isEmpty())
            break;
    }
    auto summary = scanner.finish();
    if (!summary)
        return std::nullopt;
    return ConversationFile{.id = summary->id,
                            .title = std::move(summary->title),
                            .createdAt = summary->createdAt,
                            .updatedAt = summary->updatedAt,
                            .messages = builder.takeMessages()};
}

std::optional<ConversationFile> decodeConversation(QByteArrayView bytes)
{
    return decodeConversation([bytes]() mutable { return std::optional(std::exchange(bytes, {})); });
}

} // namespace morvane
