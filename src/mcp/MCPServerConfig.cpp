#include "mcp/MCPServerConfig.h"

#include "base/Json.h"
#include "base/Uuid.h"
#include "mcp/Log.h"

#include <optional>

namespace json = boost::json;

namespace morvane {

namespace {

std::optional<QStringList> texts(const json::array *array)
{
    if (!array)
        return std::nullopt;
    QStringList list;
    for (const json::value &element : *array) {
        if (!element.is_string())
            return std::nullopt;
        list.append(textFromJson(element.get_string()));
    }
    return list;
}

std::optional<MCPServerConfig> serverFromJson(const json::value &value)
{
    const json::object *const record = value.if_object();
    if (!record)
        return std::nullopt;
    const auto id = uuidFromText(stringMember(*record, "id").value_or(QString()));
    const auto name = stringMember(*record, "name");
    const auto transport = stringMember(*record, "transport");
    const auto command = stringMember(*record, "command");
    const auto args = texts(arrayMember(*record, "args"));
    const auto url = stringMember(*record, "url");
    const auto enabled = booleanMember(*record, "enabled");
    if (!id || !name || !transport || !command || !args || !url || !enabled)
        return std::nullopt;
    return MCPServerConfig{*id, *name, *transport, *command, *args, *url, *enabled};
}

} // namespace

QList<MCPServerConfig> serversFromJson(QByteArrayView text)
{
    const auto list = parseJson(text);
    if (!list || !list->is_array()) {
        qCWarning(mcpLog) << "the list of tool servers is none, and is taken for an empty one";
        return {};
    }
    QList<MCPServerConfig> servers;
    for (const json::value &record : list->get_array()) {
        const auto server = serverFromJson(record);
        if (!server) {
            qCWarning(mcpLog) << "the list of tool servers lacks something, and is taken for an empty one";
            return {};
        }
        servers.append(*server);
    }
    return servers;
}

QByteArray serversToJson(const QList<MCPServerConfig> &servers)
{
    json::array list;
    for (const MCPServerConfig &server : servers) {
        json::array args;
        for (const QString &argument : server.args)
            args.emplace_back(jsonFromText(argument));
        list.push_back(json::object{{"id", jsonFromText(uuidText(server.id))},
                                    {"name", jsonFromText(server.name)},
                                    {"transport", jsonFromText(server.transport)},
                                    {"command", jsonFromText(server.command)},
                                    {"args", std::move(args)},
                                    {"url", jsonFromText(server.url)},
                                    {"enabled", server.enabled}});
    }
    return serializeJson(list);
}

} // namespace morvane
