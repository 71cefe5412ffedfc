#pragma once

#include "base/Json.h"
#include "base/Uuid.h"
#include "model/ChatMessageJson.h"

#include <optional>
#include <string_view>
#include <utility>

namespace morvane {

/// The value of an optional key: nullptr if it is absent or null.
inline const boost::json::value *presentMember(const boost::json::object &object, std::string_view key)
{
    const boost::json::value *const value = object.if_contains(key);
    return value && !value->is_null() ? value : nullptr;
}

inline std::optional<QUuid> uuidMember(const boost::json::object &object, std::string_view key)
{
    const auto text = stringMember(object, key);
    return text ? uuidFromText(*text) : std::nullopt;
}

template <class Value>
std::optional<Value> enumMember(const boost::json::object &object, std::string_view key,
                                std::optional<Value> (*fromText)(std::string_view))
{
    const boost::json::value *const value = object.if_contains(key);
    return value && value->is_string() ? fromText(value->get_string()) : std::nullopt;
}

/// Reads an optional text into `field`; false if it is there with another type.
inline bool readOptionalText(const boost::json::object &object, std::string_view key,
                             std::optional<QString> &field)
{
    const boost::json::value *const value = presentMember(object, key);
    if (!value)
        return true;
    if (!value->is_string())
        return false;
    field = textFromJson(value->get_string());
    return true;
}

inline bool readOptionalBytes(const boost::json::object &object, std::string_view key,
                              std::optional<QByteArray> &field)
{
    const boost::json::value *const value = presentMember(object, key);
    if (!value)
        return true;
    if (!value->is_string())
        return false;
    const boost::json::string &text = value->get_string();
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

inline std::optional<ChatAttachment> chatAttachmentFromJson(const boost::json::value &value)
{
    const boost::json::object *const object = value.if_object();
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

inline bool readAttachments(const boost::json::object &object, QList<ChatAttachment> &attachments)
{
    const boost::json::value *const value = presentMember(object, "attachments");
    if (!value)
        return true;
    if (!value->is_array())
        return false;
    for (const boost::json::value &element : value->get_array()) {
        auto attachment = chatAttachmentFromJson(element);
        if (!attachment)
            return false;
        attachments.append(std::move(*attachment));
    }
    return true;
}

/// What reading a stored message must give, worked out in the simplest way. Nothing if a required key is
/// missing or any known key has another type. Unknown keys are ignored; an integer may be written as a double
/// without a fraction.
inline std::optional<ChatMessage> chatMessageFromJson(const boost::json::value &value)
{
    const boost::json::object *const object = value.if_object();
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

} // namespace morvane
