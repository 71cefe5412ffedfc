#include "model/ChatMessageJson.h"

#include "base/Json.h"
#include "base/Uuid.h"

#include <utility>

namespace morvane {

namespace {

namespace json = boost::json;

std::string_view textOf(Role role)
{
    switch (role) {
    case Role::user:
        return "user";
    case Role::assistant:
        return "assistant";
    }
    std::unreachable();
}

std::string_view textOf(AttachmentKind kind)
{
    switch (kind) {
    case AttachmentKind::image:
        return "image";
    case AttachmentKind::pdf:
        return "pdf";
    case AttachmentKind::text:
        return "text";
    }
    std::unreachable();
}

/// The value of an optional key: nullptr if it is absent or null.
const json::value *presentMember(const json::object &object, std::string_view key)
{
    const json::value *const value = object.if_contains(key);
    return value && !value->is_null() ? value : nullptr;
}

std::optional<QUuid> uuidMember(const json::object &object, std::string_view key)
{
    const auto text = stringMember(object, key);
    return text ? uuidFromText(*text) : std::nullopt;
}

template <class Value>
std::optional<Value> enumMember(const json::object &object, std::string_view key,
                                std::optional<Value> (*fromText)(std::string_view))
{
    const json::value *const value = object.if_contains(key);
    return value && value->is_string() ? fromText(value->get_string()) : std::nullopt;
}

/// Reads an optional text into `field`; false if it is there with another type.
bool readOptionalText(const json::object &object, std::string_view key, std::optional<QString> &field)
{
    const json::value *const value = presentMember(object, key);
    if (!value)
        return true;
    if (!value->is_string())
        return false;
    field = textFromJson(value->get_string());
    return true;
}

bool readOptionalBytes(const json::object &object, std::string_view key, std::optional<QByteArray> &field)
{
    const json::value *const value = presentMember(object, key);
    if (!value)
        return true;
    if (!value->is_string())
        return false;
    const json::string &text = value->get_string();
    if (text.size() % 4 != 0) // Qt reads base64 without its padding, too.
        return false;
    const auto encoded = QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size()));
    auto decoded = QByteArray::fromBase64Encoding(encoded, QByteArray::Base64Encoding |
                                                               QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded)
        return false;
    field = std::move(decoded.decoded);
    return true;
}

bool readAttachments(const json::object &object, QList<ChatAttachment> &attachments)
{
    const json::value *const value = presentMember(object, "attachments");
    if (!value)
        return true;
    if (!value->is_array())
        return false;
    for (const json::value &element : value->get_array()) {
        auto attachment = chatAttachmentFromJson(element);
        if (!attachment)
            return false;
        attachments.append(std::move(*attachment));
    }
    return true;
}

} // namespace

json::object toJson(const ChatAttachment &attachment)
{
    json::object object;
    object.emplace("id", jsonFromText(uuidText(attachment.id)));
    object.emplace("filename", jsonFromText(attachment.filename));
    object.emplace("kind", textOf(attachment.kind));
    if (attachment.data)
        object.emplace("data", std::string_view(attachment.data->toBase64()));
    object.emplace("extractedText", jsonFromText(attachment.extractedText));
    if (attachment.mimeType)
        object.emplace("mimeType", jsonFromText(*attachment.mimeType));
    object.emplace("byteSize", attachment.byteSize);
    return object;
}

json::object toJson(const ChatMessage &message)
{
    json::array attachments;
    attachments.reserve(static_cast<std::size_t>(message.attachments.size()));
    for (const ChatAttachment &attachment : message.attachments)
        attachments.emplace_back(toJson(attachment));

    json::object object;
    object.emplace("id", jsonFromText(uuidText(message.id)));
    object.emplace("role", textOf(message.role));
    object.emplace("text", jsonFromText(message.text));
    object.emplace("isStreaming", message.isStreaming);
    if (message.errorMessage)
        object.emplace("errorMessage", jsonFromText(*message.errorMessage));
    object.emplace("attachments", std::move(attachments));
    object.emplace("date", message.date);
    return object;
}

std::optional<ChatAttachment> chatAttachmentFromJson(const json::value &value)
{
    const json::object *const object = value.if_object();
    if (!object)
        return std::nullopt;
    const auto id = uuidMember(*object, "id");
    auto filename = stringMember(*object, "filename");
    const auto kind = enumMember(*object, "kind", attachmentKindFromText);
    auto extractedText = stringMember(*object, "extractedText");
    const auto byteSize = integerMember(*object, "byteSize");
    if (!id || !filename || !kind || !extractedText || !byteSize)
        return std::nullopt;

    ChatAttachment attachment{.id = *id,
                              .filename = std::move(*filename),
                              .kind = *kind,
                              .data = {},
                              .extractedText = std::move(*extractedText),
                              .mimeType = {},
                              .byteSize = *byteSize};
    if (!readOptionalBytes(*object, "data", attachment.data) ||
        !readOptionalText(*object, "mimeType", attachment.mimeType))
        return std::nullopt;
    return attachment;
}

std::optional<ChatMessage> chatMessageFromJson(const json::value &value)
{
    const json::object *const object = value.if_object();
    if (!object)
        return std::nullopt;
    const auto id = uuidMember(*object, "id");
    const auto role = enumMember(*object, "role", roleFromText);
    auto text = stringMember(*object, "text");
    const auto isStreaming = booleanMember(*object, "isStreaming");
    const auto date = numberMember(*object, "date");
    if (!id || !role || !text || !isStreaming || !date)
        return std::nullopt;

    ChatMessage message{.id = *id,
                        .role = *role,
                        .text = std::move(*text),
                        .isStreaming = *isStreaming,
                        .errorMessage = {},
                        .attachments = {},
                        .date = *date};
    if (!readOptionalText(*object, "errorMessage", message.errorMessage) ||
        !readAttachments(*object, message.attachments))
        return std::nullopt;
    return message;
}

std::optional<Role> roleFromText(std::string_view text)
{
    for (const Role role : {Role::user, Role::assistant})
        if (text == textOf(role))
            return role;
    return std::nullopt;
}

std::optional<AttachmentKind> attachmentKindFromText(std::string_view text)
{
    for (const AttachmentKind kind : {AttachmentKind::image, AttachmentKind::pdf, AttachmentKind::text})
        if (text == textOf(kind))
            return kind;
    return std::nullopt;
}

} // namespace morvane
