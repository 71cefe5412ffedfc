#pragma once

#include <QString>
#include <boost/json/object.hpp>
#include <expected>
#include <span>

namespace morvane {

/// As parseJsonObject of base/Json.h, for a text that may be most of what the memory holds: what has been
/// read of it is the room in which its strings are put together, so that these are not held a second time
/// meanwhile. Leaves anything in `text`.
std::expected<boost::json::object, QString> parseJsonObjectInPlace(std::span<char> text);

} // namespace morvane
