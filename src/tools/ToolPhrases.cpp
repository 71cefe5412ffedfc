#include "tools/ToolPhrases.h"

#include "base/Text.h"
#include "tools/ToolArguments.h"

using namespace Qt::StringLiterals;

namespace morvane {

QString quotedArgument(const ToolArguments &arguments, std::string_view name)
{
    constexpr qsizetype limit = 60;
    return u'"' + firstCharacters(stringArgument(arguments, name), limit) + u'"';
}

QString integerArgument(const ToolArguments &arguments, std::string_view name)
{
    return QString::number(intArgument(arguments, name).value_or(0));
}

QString elementArgument(const ToolArguments &arguments, std::string_view name)
{
    return u"element ["_s + integerArgument(arguments, name) + u']';
}

} // namespace morvane
