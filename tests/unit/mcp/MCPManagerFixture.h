#pragma once

#include "mcp/MCPManager.h"

#include "base/Uuid.h"
#include "support/FakeClock.h"
#include "support/FakeToolServer.h"
#include "support/RunTask.h"
#include "support/TemporaryHome.h"

#include <QFile>
#include <gtest/gtest.h>
#include <map>

namespace morvane {

/// The list of servers of a temporary home, with servers that answer as the test says.
class MCPManagerFixture : public testing::Test {
protected:
    MCPManagerFixture() { start(); }
    ~MCPManagerFixture() override { scheduler.shutdown(std::chrono::seconds(1)); }

    void start()
    {
        manager.reset();
        manager = std::make_unique<MCPManager>(
            scheduler, folder,
            [this](const MCPServerConfig &config, const std::shared_ptr<PendingRequests> &requests) {
                asked.append(config);
                return servers[config.name].transport()(requests);
            });
    }

    /// Of a server: tools of these names.
    static boost::json::array tools(std::initializer_list<const char *> names)
    {
        boost::json::array list;
        for (const char *name : names)
            list.push_back(boost::json::object{{"name", name}, {"description", std::string("does ") + name}});
        return list;
    }
    /// A server in the list that offers these tools.
    MCPServerConfig add(const QString &name, boost::json::array offered = {}, bool enabled = true)
    {
        const MCPServerConfig config{
            newUuid(), name, QStringLiteral("stdio"), QStringLiteral("run ") + name, {}, {}, enabled};
        servers[name].answer = FakeToolServer::listing(std::move(offered));
        manager->appendServer(config);
        return config;
    }
    /// A refresh that has come to the server "Slow", which does not answer.
    TaskHandle<void> beginRefreshHeldBySlow()
    {
        servers[QStringLiteral("Slow")].answer = {};
        auto refreshing = scheduler.spawn(manager->refreshAll());
        EXPECT_TRUE(waitUntil([this] { return servers[QStringLiteral("Slow")].sent.size() == 1; }));
        return refreshing;
    }
    void refresh() { runTask(scheduler, manager->refreshAll()); }
    ToolResult execute(const QString &name)
    {
        return runTask(scheduler, manager->execute(name, boost::json::object{{"x", 1}}));
    }
    QStringList exposed() const
    {
        QStringList names;
        for (const AITool &tool : manager->exposedAITools())
            names.append(tool.name);
        return names;
    }
    QByteArray fileText() const
    {
        QFile file(folder + QStringLiteral("/mcp-servers.json"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void writeFile(const QByteArray &text)
    {
        manager.reset(); // which may still be writing
        QFile file(folder + QStringLiteral("/mcp-servers.json"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

    TemporaryHome home;
    const QString folder = home.path() + QStringLiteral("/data/Morvane");
    FakeClock clock;
    Scheduler scheduler{clock};
    std::map<QString, FakeToolServer> servers;
    QList<MCPServerConfig> asked; ///< For which transports were made.
    std::unique_ptr<MCPManager> manager;
};

} // namespace morvane
