#pragma once

#include "tools/ToolRecord.h"

#include <QString>
#include <string_view>

namespace morvane {

// Pieces of the phrases of tool calls. Arguments of the wrong type read as their defaults. Any thread.

/// A text between quotation marks, cut after 60 characters without a mark.
QString quotedArgument(const ToolArguments &arguments, std::string_view name);
/// An integer; 0 if it is absent.
QString integerArgument(const ToolArguments &arguments, std::string_view name);
/// "element [{number}]".
QString elementArgument(const ToolArguments &arguments, std::string_view name);

} // namespace morvane
