#pragma once

#include "base/Uuid.h"
#include "mcp/MCPManager.h"
#include "support/FakeToolServer.h"

#include <map>

namespace morvane {

/// A manager of tool servers without wires, each found by its name.
class FakeToolServerList {
public:
    /// The list is kept in `folder`.
    FakeToolServerList(Scheduler &scheduler, const QString &folder)
        : manager(scheduler, folder,
                  [this](const MCPServerConfig &config, const std::shared_ptr<PendingRequests> &requests) {
                      return servers[config.name].transport()(requests);
                  })
    {
    }

    /// A local server in the list, not connected yet, that offers this many tools.
    MCPServerConfig add(const QString &name, int tools = 1, const QString &failure = {})
    {
        boost::json::array list;
        for (int i = 0; i < tools; ++i)
            list.push_back(boost::json::object{{"name", "tool-" + std::to_string(i)}});
        servers[name].answer = FakeToolServer::listing(std::move(list));
        servers[name].startFailure = failure;
        const MCPServerConfig config{newUuid(),
                                     name,
                                     QStringLiteral("stdio"),
                                     QStringLiteral("npx -y @modelcontextprotocol/server-filesystem"),
                                     {QStringLiteral("~/Documents")},
                                     {},
                                     true};
        manager.appendServer(config);
        return config;
    }

    std::map<QString, FakeToolServer> servers;
    MCPManager manager;
};

} // namespace morvane
