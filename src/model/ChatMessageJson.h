#pragma once

#include "model/ChatMessage.h"

#include <boost/json/object.hpp>
#include <optional>
#include <string_view>

namespace morvane {

// The stored form of messages. Keys are the field names. Identifiers are upper-case text, dates are seconds
// since 2001-01-01T00:00:00Z as a number, bytes are base64 with padding. Absent optional fields are left out;
// `attachments` is always written, but may be missing or null when read, since older files have none.

boost::json::object toJson(const ChatAttachment &attachment);
boost::json::object toJson(const ChatMessage &message);

// The stored texts of the enumerations; nothing for any other text.
std::optional<Role> roleFromText(std::string_view text);
std::optional<AttachmentKind> attachmentKindFromText(std::string_view text);

} // namespace morvane
