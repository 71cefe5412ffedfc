#include "MCPManagerFixture.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace morvane {
namespace {

namespace json = boost::json;

class MCPManagerRefreshTest : public MCPManagerFixture {};

TEST_F(MCPManagerRefreshTest, ARefreshConnectsAndExposesToolsUnderSafeNames)
{
    const auto config = add(u"My Server"_s, tools({"read.file", "list"}));
    refresh();
    EXPECT_EQ(exposed(), (QStringList{u"mcp_my_server_read_file"_s, u"mcp_my_server_list"_s}));
    EXPECT_EQ(manager->exposedAITools()[0].description, "[My Server] does read.file");
    EXPECT_EQ(manager->statusText(config.id), "Connected via command · 2 tools");
    EXPECT_FALSE(manager->hasTrouble());
}

TEST_F(MCPManagerRefreshTest, ARefreshConnectsAConnectedServerOverItsOwnConnectionAgain)
{
    add(u"S"_s, tools({"read"}));
    refresh();
    refresh();
    EXPECT_EQ(servers[u"S"_s].connections, 1);
    EXPECT_EQ(servers[u"S"_s].starts, 2);
    EXPECT_EQ(servers[u"S"_s].shutdowns, 0);
    EXPECT_EQ(servers[u"S"_s].idOf(3), 3) << "the ids go on";
}

TEST_F(MCPManagerRefreshTest, AFailingServerDoesNotStopTheOnesBehindIt)
{
    const auto bad = add(u"Bad"_s);
    servers[u"Bad"_s].startFailure = u"No such file or directory"_s;
    const auto good = add(u"Good"_s, tools({"read"}));
    refresh();
    EXPECT_EQ(manager->statusText(bad.id), "Could not connect: No such file or directory");
    EXPECT_TRUE(manager->hasTrouble());
    EXPECT_EQ(manager->statusText(good.id), "Connected via command · 1 tool");
    EXPECT_EQ(servers[u"Bad"_s].shutdowns, 1);
    refresh();
    EXPECT_EQ(servers[u"Bad"_s].connections, 2) << "a new connection for the next attempt";
}

TEST_F(MCPManagerRefreshTest, AServerThatFailsItsNextRefreshLosesItsTools)
{
    const auto config = add(u"S"_s, tools({"read"}));
    refresh();
    servers[u"S"_s].answer = [](const json::object &) {
        return json::object{{"error", {{"message", "out of order"}}}};
    };
    refresh();
    EXPECT_EQ(manager->statusText(config.id), "Could not connect: out of order");
    EXPECT_TRUE(exposed().isEmpty());
    EXPECT_EQ(servers[u"S"_s].shutdowns, 1);
}

TEST_F(MCPManagerRefreshTest, ARefreshDuringARefreshReturnsAtOnceAndChangesNothing)
{
    const auto config = add(u"Slow"_s);
    auto first = beginRefreshHeldBySlow();
    EXPECT_EQ(manager->statusText(config.id), "Connecting…");
    refresh();
    EXPECT_EQ(servers[u"Slow"_s].starts, 1);
    clock.advance(20s);
    ASSERT_TRUE(waitUntil([&] { return first.done(); }));
    EXPECT_EQ(manager->statusText(config.id), "Could not connect: The MCP server did not respond in time.");
}

TEST_F(MCPManagerRefreshTest, ServersAreConnectedOneAfterTheOther)
{
    add(u"Slow"_s);
    const auto behind = add(u"Behind"_s);
    auto handle = beginRefreshHeldBySlow();
    EXPECT_EQ(manager->statusText(behind.id), QString());
    EXPECT_EQ(servers[u"Behind"_s].starts, 0);
    clock.advance(20s);
    ASSERT_TRUE(waitUntil([&] { return handle.done(); }));
    EXPECT_EQ(servers[u"Behind"_s].starts, 1);
}

TEST_F(MCPManagerRefreshTest, AServerRemovedWhileItConnectsIsEndedAndStaysGone)
{
    const auto config = add(u"Slow"_s);
    auto handle = beginRefreshHeldBySlow();
    manager->removeServer(config.id);
    ASSERT_TRUE(waitUntil([&] { return handle.done(); }));
    EXPECT_EQ(servers[u"Slow"_s].shutdowns, 1);
    EXPECT_EQ(manager->statusText(config.id), QString());
    EXPECT_TRUE(manager->servers().isEmpty());
}

TEST_F(MCPManagerRefreshTest, AServerRemovedBeforeARefreshReachesItIsNotStarted)
{
    add(u"Slow"_s);
    const auto behind = add(u"Behind"_s);
    auto handle = beginRefreshHeldBySlow();
    manager->removeServer(behind.id);
    clock.advance(20s);
    ASSERT_TRUE(waitUntil([&] { return handle.done(); }));
    EXPECT_EQ(servers[u"Behind"_s].starts, 0);
}

TEST_F(MCPManagerRefreshTest, AServerSwitchedOffDuringARefreshIsEndedAtOnce)
{
    const auto quick = add(u"Quick"_s, tools({"read"}));
    const auto slow = add(u"Slow"_s);
    auto handle = beginRefreshHeldBySlow();
    for (const auto &config : {quick, slow}) {
        manager->toggleServer(config.id, false);
        EXPECT_EQ(servers[config.name].shutdowns, 1) << "though its handshake may take 20 seconds";
        EXPECT_EQ(manager->statusText(config.id), "Off");
    }
    ASSERT_TRUE(waitUntil([&] { return handle.done(); }));
    for (const auto &config : {quick, slow})
        EXPECT_EQ(manager->statusText(config.id), "Off");
}

TEST_F(MCPManagerRefreshTest, AServerSwitchedOffBeforeARefreshReachesItIsNotStarted)
{
    add(u"Slow"_s);
    const auto behind = add(u"Behind"_s);
    auto handle = beginRefreshHeldBySlow();
    manager->toggleServer(behind.id, false);
    clock.advance(20s);
    ASSERT_TRUE(waitUntil([&] { return handle.done(); }));
    EXPECT_EQ(servers[u"Behind"_s].starts, 0);
    EXPECT_EQ(manager->statusText(behind.id), "Off");
}

TEST_F(MCPManagerRefreshTest, AServerAddedOrSwitchedOnDuringARefreshSaysNothingUntilTheNext)
{
    const auto slow = add(u"Slow"_s);
    const auto off = add(u"Off before"_s, tools({"read"}), false);
    const auto past = add(u"Off past"_s, tools({"read"}), false);
    refresh();
    EXPECT_EQ(manager->statusText(off.id), "Off");
    servers[u"Slow"_s].answer = {};
    auto handle = scheduler.spawn(manager->refreshAll());
    ASSERT_TRUE(waitUntil([&] { return servers[u"Slow"_s].sent.constLast().at("method") == "initialize"; }));
    manager->toggleServer(off.id, true);
    const auto added = add(u"Added"_s, tools({"read"}));
    refresh();
    clock.advance(20s);
    ASSERT_TRUE(waitUntil([&] { return handle.done(); }));
    for (const auto &config : {off, added}) {
        EXPECT_EQ(manager->statusText(config.id), QString()) << qPrintable(config.name);
        EXPECT_EQ(servers[config.name].starts, 0);
    }
    EXPECT_EQ(manager->statusText(past.id), "Off");
    servers[u"Slow"_s].answer = FakeToolServer::listing({});
    refresh();
    for (const auto &config : {slow, off, added})
        EXPECT_TRUE(manager->statusText(config.id).startsWith(u"Connected"_s)) << qPrintable(config.name);
}

TEST_F(MCPManagerRefreshTest, AServerSwitchedOffAndOnDuringItsHandshakeSaysNothingUntilTheNextRefresh)
{
    const auto slow = add(u"Slow"_s);
    auto handle = beginRefreshHeldBySlow();
    manager->toggleServer(slow.id, false);
    manager->toggleServer(slow.id, true);
    ASSERT_TRUE(waitUntil([&] { return handle.done(); }));
    EXPECT_EQ(servers[u"Slow"_s].shutdowns, 1);
    EXPECT_EQ(manager->statusText(slow.id), QString());
    servers[u"Slow"_s].answer = FakeToolServer::listing({});
    refresh();
    EXPECT_EQ(servers[u"Slow"_s].connections, 2);
    EXPECT_EQ(manager->statusText(slow.id), "Connected via command · 0 tools");
}

} // namespace
} // namespace morvane
