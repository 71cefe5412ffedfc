#include "MCPManagerFixture.h"

#include "support/LogRecorder.h"

#include <QDir>
#include <QFileInfo>
#include <QSignalSpy>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace morvane {
namespace {

namespace json = boost::json;

class MCPManagerTest : public MCPManagerFixture {};

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
