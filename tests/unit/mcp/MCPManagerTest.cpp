#include "mcp/MCPManager.h"

#include "base/Uuid.h"
#include "support/FakeClock.h"
#include "support/FakeToolServer.h"
#include "support/LogRecorder.h"
#include "support/RunTask.h"
#include "support/TemporaryHome.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <gtest/gtest.h>
#include <map>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace morvane {
namespace {

namespace json = boost::json;

json::array tools(std::initializer_list<const char *> names)
{
    json::array list;
    for (const char *name : names)
        list.push_back(json::object{{"name", name}, {"description", std::string("does ") + name}});
    return list;
}

class MCPManagerTest : public testing::Test {
protected:
    MCPManagerTest() { start(); }
    ~MCPManagerTest() override { scheduler.shutdown(1s); }

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

    /// A server in the list that offers these tools.
    MCPServerConfig add(const QString &name, json::array offered = {}, bool enabled = true)
    {
        const MCPServerConfig config{newUuid(), name, u"stdio"_s, u"run "_s + name, {}, {}, enabled};
        servers[name].answer = FakeToolServer::listing(std::move(offered));
        manager->appendServer(config);
        return config;
    }
    /// A refresh that has come to the server "Slow", which does not answer.
    TaskHandle<void> beginRefreshHeldBySlow()
    {
        servers[u"Slow"_s].answer = {};
        auto refreshing = scheduler.spawn(manager->refreshAll());
        EXPECT_TRUE(waitUntil([this] { return servers[u"Slow"_s].sent.size() == 1; }));
        return refreshing;
    }
    void refresh() { runTask(scheduler, manager->refreshAll()); }
    ToolResult execute(const QString &name)
    {
        return runTask(scheduler, manager->execute(name, json::object{{"x", 1}}));
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
        QFile file(folder + u"/mcp-servers.json"_s);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void writeFile(const QByteArray &text)
    {
        manager.reset(); // which may still be writing
        QFile file(folder + u"/mcp-servers.json"_s);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

    TemporaryHome home;
    const QString folder = home.path() + u"/data/Morvane"_s;
    FakeClock clock;
    Scheduler scheduler{clock};
    std::map<QString, FakeToolServer> servers;
    QList<MCPServerConfig> asked; ///< For which transports were made.
    std::unique_ptr<MCPManager> manager;
};

TEST_F(MCPManagerTest, TheFolderIsMadeAndNothingIsConnected)
{
    EXPECT_TRUE(QFileInfo(folder).isDir());
    EXPECT_TRUE(manager->servers().isEmpty());
    EXPECT_TRUE(asked.isEmpty());
}

TEST_F(MCPManagerTest, TheListIsKeptInOrderWithUpperCaseIdentifiersForTheUserAlone)
{
    const MCPServerConfig first = add(u"Files"_s);
    const MCPServerConfig second{newUuid(), u"Far"_s, u"http"_s, {}, {u"a b"_s}, u"https://example.com/mcp"_s,
                                 false};
    manager->appendServer(second);
    manager->saveServers();
    start();
    EXPECT_EQ(manager->servers(), (QList<MCPServerConfig>{first, second}));
    EXPECT_TRUE(fileText().contains(uuidText(first.id).toUtf8()));
    EXPECT_EQ(QFileInfo(folder + u"/mcp-servers.json"_s).permissions() &
                  (QFile::ReadGroup | QFile::ReadOther | QFile::WriteGroup | QFile::WriteOther),
              QFile::Permissions());
}

TEST_F(MCPManagerTest, OneRecordThatLacksAKeyEmptiesTheListAndTheNextSaveLosesTheOthers)
{
    writeFile(R"([{"id":"5C2D4B9E-0B51-4C4C-8B5B-2F6B7D0B4E11","name":"a","transport":"stdio","command":"a",
        "args":[],"url":"","enabled":true},{"id":"5C2D4B9E-0B51-4C4C-8B5B-2F6B7D0B4E12","name":"b",
        "transport":"stdio","command":"b","args":[],"url":""}])");
    start();
    EXPECT_TRUE(manager->servers().isEmpty());
    manager->saveServers();
    manager.reset();
    EXPECT_EQ(fileText(), "[]");
}

TEST_F(MCPManagerTest, EveryKeyOfARecordIsRequired)
{
    json::object record = parseJsonObject(R"({"id":"5C2D4B9E-0B51-4C4C-8B5B-2F6B7D0B4E11","name":"a",
        "transport":"stdio","command":"a","args":[],"url":"","enabled":true})")
                              .value();
    writeFile(serializeJson(json::array{record}));
    start();
    ASSERT_EQ(manager->servers().size(), 1);
    for (const char *key : {"id", "name", "transport", "command", "args", "url", "enabled"}) {
        json::object lacking = record;
        lacking.erase(key);
        writeFile(serializeJson(json::array{lacking}));
        start();
        EXPECT_TRUE(manager->servers().isEmpty()) << key;
    }
}

TEST_F(MCPManagerTest, SwitchingAServerSavesTheList)
{
    const auto config = add(u"S"_s);
    manager->toggleServer(config.id, false);
    start();
    ASSERT_EQ(manager->servers().size(), 1);
    EXPECT_FALSE(manager->servers()[0].enabled);
}

TEST_F(MCPManagerTest, AFileThatIsNoListIsAnEmptyList)
{
    for (const char *text :
         {"", "{}", "[1]", "[", "null",
          R"([{"id":"x","name":"a","transport":"","command":"","args":[],"url":"","enabled":true}])",
          R"([{"id":"5C2D4B9E-0B51-4C4C-8B5B-2F6B7D0B4E11","name":"a","transport":"","command":"",
                                "args":[1],"url":"","enabled":true}])"}) {
        writeFile(text);
        const LogRecorder log;
        start();
        EXPECT_TRUE(manager->servers().isEmpty()) << text;
        EXPECT_EQ(log.lines().size(), 1) << text;
    }
}

TEST_F(MCPManagerTest, AListThatCannotBeReadOrSavedIsToldToTheLog)
{
    manager.reset();
    ASSERT_TRUE(QDir(folder).mkpath(u"mcp-servers.json"_s));
    const LogRecorder log;
    start();
    manager->saveServers();
    manager.reset();
    EXPECT_EQ(log.lines(), (QStringList{"morvane.mcp: no list of tool servers: \"Is a directory\"",
                                        "morvane.mcp: the list of tool servers could not be saved: \"Is a "
                                        "directory\""}));
}

TEST_F(MCPManagerTest, ARefreshConnectsAndExposesToolsUnderSafeNames)
{
    const auto config = add(u"My Server"_s, tools({"read.file", "list"}));
    refresh();
    EXPECT_EQ(exposed(), (QStringList{u"mcp_my_server_read_file"_s, u"mcp_my_server_list"_s}));
    EXPECT_EQ(manager->exposedAITools()[0].description, "[My Server] does read.file");
    EXPECT_EQ(manager->statusText(config.id), "Connected via command · 2 tools");
    EXPECT_FALSE(manager->hasTrouble());
}

TEST_F(MCPManagerTest, AToolWithoutDescriptionIsDescribedByItsName)
{
    add(u"S"_s, json::array{json::object{{"name", "bare"}}});
    refresh();
    EXPECT_EQ(manager->exposedAITools()[0].description, "[S] bare");
    EXPECT_EQ(serializeJson(manager->exposedAITools()[0].schema.get()),
              R"({"type":"object","properties":{}})");
}

TEST_F(MCPManagerTest, ACallReachesTheServerUnderTheToolsOwnName)
{
    add(u"S"_s, tools({"read.file"}));
    refresh();
    EXPECT_EQ(execute(u"mcp_s_read_file"_s), ToolResult(u"called"_s));
    const json::object &sent = servers[u"S"_s].sent.constLast();
    EXPECT_EQ(sent.at("params").at("name"), "read.file");
    EXPECT_EQ(sent.at("params").at("arguments"), (json::object{{"x", 1}}));
}

TEST_F(MCPManagerTest, OfTwoServersWithTheSameSafeNameTheFirstAnswers)
{
    add(u"My Server"_s, tools({"read"}));
    add(u"my-server"_s, tools({"read"}));
    refresh();
    EXPECT_EQ(exposed(), (QStringList{u"mcp_my_server_read"_s, u"mcp_my_server_read"_s}));
    execute(u"mcp_my_server_read"_s);
    EXPECT_EQ(servers[u"My Server"_s].sent.constLast().at("method"), "tools/call");
    EXPECT_EQ(servers[u"my-server"_s].sent.constLast().at("method"), "tools/list");
}

TEST_F(MCPManagerTest, ADisabledServersToolsVanishAtOnceAndACallSaysSo)
{
    const auto config = add(u"S"_s, tools({"read"}));
    refresh();
    manager->toggleServer(config.id, false);
    EXPECT_TRUE(exposed().isEmpty());
    EXPECT_EQ(execute(u"mcp_s_read"_s),
              ToolResult(u"Error: that tool's MCP server is not connected right now."_s));
    EXPECT_EQ(servers[u"S"_s].shutdowns, 0);
    refresh();
    EXPECT_EQ(servers[u"S"_s].shutdowns, 1);
    EXPECT_EQ(manager->statusText(config.id), "Off");
}

TEST_F(MCPManagerTest, ARefreshConnectsAConnectedServerOverItsOwnConnectionAgain)
{
    add(u"S"_s, tools({"read"}));
    refresh();
    refresh();
    EXPECT_EQ(servers[u"S"_s].connections, 1);
    EXPECT_EQ(servers[u"S"_s].starts, 2);
    EXPECT_EQ(servers[u"S"_s].shutdowns, 0);
    EXPECT_EQ(servers[u"S"_s].idOf(3), 3) << "the ids go on";
}

TEST_F(MCPManagerTest, AFailingServerDoesNotStopTheOnesBehindIt)
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

TEST_F(MCPManagerTest, AServerThatFailsItsNextRefreshLosesItsTools)
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

TEST_F(MCPManagerTest, ARefreshDuringARefreshReturnsAtOnceAndChangesNothing)
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

TEST_F(MCPManagerTest, ServersAreConnectedOneAfterTheOther)
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

TEST_F(MCPManagerTest, AServerRemovedWhileItConnectsIsEndedAndStaysGone)
{
    const auto config = add(u"Slow"_s);
    auto handle = beginRefreshHeldBySlow();
    manager->removeServer(config.id);
    ASSERT_TRUE(waitUntil([&] { return handle.done(); }));
    EXPECT_EQ(servers[u"Slow"_s].shutdowns, 1);
    EXPECT_EQ(manager->statusText(config.id), QString());
    EXPECT_TRUE(manager->servers().isEmpty());
}

TEST_F(MCPManagerTest, AServerRemovedBeforeARefreshReachesItIsNotStarted)
{
    add(u"Slow"_s);
    const auto behind = add(u"Behind"_s);
    auto handle = beginRefreshHeldBySlow();
    manager->removeServer(behind.id);
    clock.advance(20s);
    ASSERT_TRUE(waitUntil([&] { return handle.done(); }));
    EXPECT_EQ(servers[u"Behind"_s].starts, 0);
}

TEST_F(MCPManagerTest, AServerSwitchedOffDuringARefreshIsEndedAtOnce)
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

TEST_F(MCPManagerTest, AServerSwitchedOffBeforeARefreshReachesItIsNotStarted)
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

TEST_F(MCPManagerTest, AServerAddedOrSwitchedOnDuringARefreshSaysNothingUntilTheNext)
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

TEST_F(MCPManagerTest, AServerSwitchedOffAndOnDuringItsHandshakeSaysNothingUntilTheNextRefresh)
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

TEST_F(MCPManagerTest, RemovingEndsTheServerAndSaves)
{
    const auto config = add(u"S"_s, tools({"read"}));
    add(u"T"_s);
    refresh();
    manager->removeServer(config.id);
    EXPECT_EQ(servers[u"S"_s].shutdowns, 1);
    EXPECT_TRUE(exposed().isEmpty());
    EXPECT_EQ(manager->statusText(config.id), QString());
    start();
    ASSERT_EQ(manager->servers().size(), 1);
    EXPECT_EQ(manager->servers()[0].name, "T");
}

TEST_F(MCPManagerTest, TogglingAnUnknownServerDoesNothing)
{
    add(u"S"_s);
    QSignalSpy changes(manager.get(), &MCPManager::serversChanged);
    manager->toggleServer(newUuid(), false);
    EXPECT_EQ(changes.count(), 0);
}

TEST_F(MCPManagerTest, AfterTheEndOfAllServersTheToolsStayAndACallSaysThatTheServerIsGone)
{
    add(u"My Server"_s, tools({"read"}));
    refresh();
    manager->shutdownAll();
    EXPECT_EQ(servers[u"My Server"_s].shutdowns, 1);
    EXPECT_EQ(exposed(), QStringList{u"mcp_my_server_read"_s});
    EXPECT_EQ(execute(u"mcp_my_server_read"_s),
              ToolResult(u"Error: the MCP server \"My Server\" is not connected right now."_s));
}

TEST_F(MCPManagerTest, AThrownFailureIsAResultText)
{
    add(u"S"_s, tools({"read"}));
    refresh();
    servers[u"S"_s].answer = [](const json::object &) {
        return json::object{{"error", {{"message", "no such tool"}}}};
    };
    EXPECT_EQ(execute(u"mcp_s_read"_s), ToolResult(u"Error: no such tool"_s));
    EXPECT_EQ(servers[u"S"_s].starts, 1) << "no retry and no reconnect";
}

TEST_F(MCPManagerTest, ACancelledCallEndsAtOnceWithAResult)
{
    add(u"S"_s, tools({"read"}));
    refresh();
    servers[u"S"_s].answer = {};
    auto handle = scheduler.spawn(manager->execute(u"mcp_s_read"_s, {}));
    ASSERT_TRUE(waitUntil([&] { return servers[u"S"_s].sent.constLast().at("method") == "tools/call"; }));
    handle.cancel();
    ASSERT_TRUE(waitUntil([&] { return handle.done(); }));
    EXPECT_TRUE(handle.result().failed);
}

TEST_F(MCPManagerTest, AServerRemovedDuringACallFailsTheCall)
{
    const auto config = add(u"S"_s, tools({"read"}));
    refresh();
    servers[u"S"_s].answer = {};
    auto handle = scheduler.spawn(manager->execute(u"mcp_s_read"_s, {}));
    ASSERT_TRUE(waitUntil([&] { return servers[u"S"_s].sent.constLast().at("method") == "tools/call"; }));
    manager->removeServer(config.id);
    ASSERT_TRUE(waitUntil([&] { return handle.done(); }));
    EXPECT_EQ(handle.result(), ToolResult(u"Error: The MCP server did not respond in time."_s));
}

TEST_F(MCPManagerTest, AskingForTheToolsAgainCopiesNothing)
{
    add(u"S"_s, tools({"a", "b"}));
    refresh();
    const QList<AITool> first = manager->exposedAITools();
    const QList<AITool> second = manager->exposedAITools();
    EXPECT_EQ(first.constData(), second.constData());
}

TEST_F(MCPManagerTest, AReasonOfAMillionCharactersIsCut)
{
    const auto config = add(u"S"_s);
    servers[u"S"_s].startFailure = QString(1'000'000, u'x');
    refresh();
    EXPECT_LT(manager->statusText(config.id).size(), 5'000);
}

TEST_F(MCPManagerTest, LabelsCountTools)
{
    EXPECT_EQ(connectedLabel(0, u"http"_s), "Connected via remote server · 0 tools");
    EXPECT_EQ(connectedLabel(1, u"stdio"_s), "Connected via command · 1 tool");
    EXPECT_EQ(connectedLabel(2, u"carrier pigeon"_s), "Connected via command · 2 tools");
}

} // namespace
} // namespace morvane
