#pragma once

#include <QVariant>
#include <boost/json/object.hpp>
#include <optional>

namespace morvane {

/// The JSON object that a script answers with as text; nothing for any other value, or one of a million
/// characters. Half of a character, as it comes of a text that was cut, reads as U+FFFD. Any thread.
std::optional<boost::json::object> readScriptAnswer(const QVariant &answer);

} // namespace morvane
