#pragma once

#include <QString>
#include <QStringList>
#include <boost/json/object.hpp>
#include <optional>
#include <string_view>

namespace morvane {

using ToolArguments = boost::json::object;

// Lenient readers of a tool call's arguments: models send the wrong type now and then, and a tool answers
// better for an empty value than a call fails. A missing argument, or one of another type, reads as absent or
// as the default; nothing here fails. Any thread.

std::optional<QString> optionalStringArgument(const ToolArguments &arguments, std::string_view name);
QString stringArgument(const ToolArguments &arguments, std::string_view name,
                       const QString &fallback = QString());

/// An array whose elements all are strings; any other value reads as the empty list.
QStringList stringListArgument(const ToolArguments &arguments, std::string_view name);

/// A JSON boolean; anything else, 1 and "true" included, is false.
bool booleanArgument(const ToolArguments &arguments, std::string_view name);

/// An integer as it stands, a boolean as 1 or 0, a double cut off towards zero (3.9 is 3, -3.9 is -3). Absent
/// for anything else, strings included, and for numbers beyond 64 signed bits.
std::optional<qint64> intArgument(const ToolArguments &arguments, std::string_view name);

/// Any finite JSON number; a boolean is none.
std::optional<double> numberArgument(const ToolArguments &arguments, std::string_view name);

} // namespace morvane
