#include "tools/ToolRecord.h"

namespace morvane {
namespace {

const char *schemaType(ParameterKind kind)
{
    switch (kind) {
    case ParameterKind::string:
        return "string";
    case ParameterKind::integer:
        return "integer";
    case ParameterKind::number:
        return "number";
    case ParameterKind::boolean:
        return "boolean";
    case ParameterKind::stringArray:
        return "array";
    }
    return "string";
}

boost::json::object propertySchema(const ToolParameter &parameter)
{
    boost::json::object schema{{"type", schemaType(parameter.kind)}};
    if (parameter.description)
        schema.emplace("description", parameter.description);
    if (parameter.kind == ParameterKind::stringArray)
        schema.emplace("items", boost::json::object{{"type", "string"}});
    return schema;
}

} // namespace

AITool declareTool(const char *name, const char *description, std::initializer_list<ToolParameter> parameters)
{
    boost::json::object properties;
    boost::json::array requiredNames;
    for (const ToolParameter &parameter : parameters) {
        properties.emplace(parameter.name, propertySchema(parameter));
        if (parameter.presence == Presence::required)
            requiredNames.emplace_back(parameter.name);
    }
    return {QString::fromUtf8(name), QString::fromUtf8(description),
            boost::json::object{{"type", "object"},
                                {"properties", std::move(properties)},
                                {"required", std::move(requiredNames)}}};
}

} // namespace morvane
