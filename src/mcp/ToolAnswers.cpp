#include "mcp/ToolAnswers.h"

#include "base/Json.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace json = boost::json;

namespace morvane {

namespace {

bool isArrayOfObjects(const json::value *value)
{
    return value && value->is_array() &&
           std::all_of(value->get_array().begin(), value->get_array().end(),
                       [](const json::value &element) { return element.is_object(); });
}

json::object defaultSchema()
{
    return {{"type", "object"}, {"properties", json::object()}};
}

} // namespace

std::expected<json::object, MCPError> resultOf(std::optional<json::object> message)
{
    if (!message)
        return std::unexpected(MCPError(u"The MCP server did not respond in time."_s));
    if (const json::object *const error = objectMember(*message, "error"))
        return std::unexpected(
            MCPError(stringMember(*error, "message").value_or(u"the server returned an error"_s)));
    json::value *const result = message->if_contains("result");
    return result && result->is_object() ? std::move(result->get_object()) : json::object();
}

std::expected<QList<MCPTool>, MCPError> listedTools(const json::object &result)
{
    const json::value *const list = result.if_contains("tools");
    if (!isArrayOfObjects(list))
        return std::unexpected(MCPError(u"The server did not return a tool list."_s));
    QList<MCPTool> tools;
    for (const json::value &element : list->get_array()) {
        const json::object &entry = element.get_object();
        const auto name = stringMember(entry, "name");
        if (!name)
            continue;
        const json::object *const schema = objectMember(entry, "inputSchema");
        tools.append({*name, stringMember(entry, "description").value_or(QString()),
                      schema ? *schema : defaultSchema()});
    }
    return tools;
}

QString textContent(const json::value *content)
{
    if (!isArrayOfObjects(content))
        return {};
    std::string_view separator;
    QByteArray text;
    const json::array &items = content->get_array();
    for (const json::value &item : items) {
        const json::object &entry = item.get_object();
        const json::value *const type = entry.if_contains("type");
        const json::value *const words = entry.if_contains("text");
        if (!type || !type->is_string() || type->get_string() != "text" || !words || !words->is_string())
            continue;
        if (items.size() == 1)
            return textFromJson(words->get_string());
        text.append(separator.data(), qsizetype(separator.size()));
        text.append(words->get_string().data(), qsizetype(words->get_string().size()));
        separator = "\n";
    }
    return QString::fromUtf8(text);
}

ToolResult toolResult(const json::object &result)
{
    const QString text = textContent(result.if_contains("content"));
    if (booleanMember(result, "isError") == true)
        return u"Error: "_s + (text.isEmpty() ? u"the tool reported a failure"_s : text);
    return text.isEmpty() ? u"(no output)"_s : text;
}

} // namespace morvane
