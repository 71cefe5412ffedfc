#include "providers/SchemaTools.h"

#include <boost/json/value.hpp>

namespace morvane {
namespace {

namespace json = boost::json;

void removeDescription(json::object &object)
{
    object.stable_erase("description");
}

void compactProperty(json::object &property)
{
    removeDescription(property);
    if (auto *items = property.if_contains("items"); items && items->is_object())
        *items = compactSchema(items->get_object());
    if (auto *nested = property.if_contains("properties"); nested && nested->is_object()) {
        for (auto &member : nested->get_object())
            if (auto *object = member.value().if_object())
                removeDescription(*object);
    }
}

} // namespace

json::object compactSchema(const json::object &schema)
{
    json::object result = schema;
    removeDescription(result);
    if (auto *properties = result.if_contains("properties"); properties && properties->is_object()) {
        for (auto &member : properties->get_object())
            if (auto *property = member.value().if_object())
                compactProperty(*property);
    }
    return result;
}

void deepMerge(json::object &target, const json::object &source)
{
    for (const auto &[key, value] : source) {
        json::value &present = target[key];
        if (present.is_object() && value.is_object())
            deepMerge(present.get_object(), value.get_object());
        else
            present = value;
    }
}

} // namespace morvane
