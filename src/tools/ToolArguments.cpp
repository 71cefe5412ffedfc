#include "tools/ToolArguments.h"

#include "base/Json.h"

#include <boost/json/array.hpp>
#include <cmath>
#include <limits>

namespace morvane {
namespace {

std::optional<qint64> cutOff(double value)
{
    // 2^63 is a double, the largest signed 64-bit number is none. False for what is not a number.
    constexpr double bound = 9223372036854775808.0;
    if (value >= -bound && value < bound)
        return static_cast<qint64>(value);
    return std::nullopt;
}

} // namespace

std::optional<QString> optionalStringArgument(const ToolArguments &arguments, std::string_view name)
{
    return stringMember(arguments, name);
}

QString stringArgument(const ToolArguments &arguments, std::string_view name, const QString &fallback)
{
    return stringMember(arguments, name).value_or(fallback);
}

QStringList stringListArgument(const ToolArguments &arguments, std::string_view name)
{
    const boost::json::array *const array = arrayMember(arguments, name);
    if (!array)
        return {};
    QStringList list;
    list.reserve(static_cast<qsizetype>(array->size()));
    for (const boost::json::value &element : *array) {
        if (!element.is_string())
            return {};
        list.append(textFromJson(element.get_string()));
    }
    return list;
}

bool booleanArgument(const ToolArguments &arguments, std::string_view name)
{
    return booleanMember(arguments, name).value_or(false);
}

std::optional<qint64> intArgument(const ToolArguments &arguments, std::string_view name)
{
    const boost::json::value *const value = arguments.if_contains(name);
    if (!value)
        return std::nullopt;
    switch (value->kind()) {
    case boost::json::kind::int64:
        return value->get_int64();
    case boost::json::kind::uint64:
        if (value->get_uint64() > static_cast<quint64>(std::numeric_limits<qint64>::max()))
            return std::nullopt;
        return static_cast<qint64>(value->get_uint64());
    case boost::json::kind::bool_:
        return value->get_bool() ? 1 : 0;
    case boost::json::kind::double_:
        return cutOff(value->get_double());
    case boost::json::kind::null:
    case boost::json::kind::string:
    case boost::json::kind::array:
    case boost::json::kind::object:
        return std::nullopt;
    }
    return std::nullopt;
}

std::optional<double> numberArgument(const ToolArguments &arguments, std::string_view name)
{
    const std::optional<double> value = numberMember(arguments, name);
    return value && std::isfinite(*value) ? value : std::nullopt;
}

} // namespace morvane
