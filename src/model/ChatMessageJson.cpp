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
