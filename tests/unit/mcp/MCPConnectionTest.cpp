#include "mcp/MCPConnection.h"

#include "async/Cancelled.h"
#include "support/FakeClock.h"
#include "support/FakeToolServer.h"
#include "support/RunTask.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace morvane {
namespace {

namespace json = boost::json;

class MCPConnectionTest : public testing::Test {
protected:
    ~MCPConnectionTest() override { scheduler.shutdown(1s); }

    /// A call under way.
    TaskHandle<ToolResult> call(const QString &name = u"tool"_s)
    {
        auto handle = scheduler.spawn(connection.callTool(name, json::object{{"a", 1}}));
        const qsizetype before = server.sent.size();
        EXPECT_TRUE(waitUntil([&] { return server.sent.size() > before || handle.done(); }));
        return handle;
    }
    QString resultOf(TaskHandle<ToolResult> handle)
    {
        EXPECT_TRUE(waitUntil([&] { return handle.done(); }));
        try {
            return handle.result().text;
        } catch (const MCPError &error) {
            return u"thrown: "_s + error.message();
        }
    }
    template <class T> QString failureOf(Task<T> task)
    {
        try {
            runTask(scheduler, std::move(task));
        } catch (const MCPError &error) {
            return error.message();
        }
        return u"no failure"_s;
    }
    static json::object text(const char *words)
    {
        return {{"result", {{"content", json::array{json::object{{"type", "text"}, {"text", words}}}}}}};
    }

    FakeClock clock;
    Scheduler scheduler{clock};
    FakeToolServer server;
    MCPConnection connection{server.transport()};
};

TEST_F(MCPConnectionTest, ConstructionStartsNothing)
{
    EXPECT_EQ(server.starts, 0);
    EXPECT_TRUE(server.sent.isEmpty());
}

TEST_F(MCPConnectionTest, TheHandshakeIsInitializeWithIdOneAndThenTheNotification)
{
    server.answer = FakeToolServer::listing({});
    runTask(scheduler, connection.connect());
    ASSERT_EQ(server.sent.size(), 2);
    EXPECT_EQ(server.sent[0], parseJsonObject(R"({"jsonrpc":"2.0","id":1,"method":"initialize","params":{
        "protocolVersion":"2025-03-26","capabilities":{},"clientInfo":{"name":"Morvane","version":"1.2"}}})")
                                  .value());
    EXPECT_EQ(
        server.sent[1],
        parseJsonObject(R"({"jsonrpc":"2.0","method":"notifications/initialized","params":{}})").value());
}

TEST_F(MCPConnectionTest, WhatAHandshakeAnswersIsNotLookedAt)
{
    server.answer = [](const json::object &) {
        return json::object{{"result", {{"protocolVersion", "1066"}, {"capabilities", json::array()}}}};
    };
    EXPECT_EQ(failureOf(connection.connect()), "no failure");
}

TEST_F(MCPConnectionTest, WhatBecomesOfTheNotificationIsNotLookedAt)
{
    server.answer = [this](const json::object &) {
        server.takesMessages = false;
        return json::object{{"result", json::object()}};
    };
    EXPECT_EQ(failureOf(connection.connect()), "no failure");
    EXPECT_EQ(server.sent.size(), 1);
}

TEST_F(MCPConnectionTest, AFailedLaunchIsThrownAndNothingIsSent)
{
    server.startFailure = u"No such file or directory"_s;
    EXPECT_EQ(failureOf(connection.connect()), "No such file or directory");
    EXPECT_TRUE(server.sent.isEmpty());
}

TEST_F(MCPConnectionTest, NeitherCursorNorSecondPageIsAskedFor)
{
    server.answer = [](const json::object &) {
        const json::object tool{{"name", "one"}};
        return json::object{{"result", {{"tools", json::array{tool}}, {"nextCursor", "more"}}}};
    };
    EXPECT_EQ(runTask(scheduler, connection.listTools()).size(), 1);
    ASSERT_EQ(server.sent.size(), 1);
    EXPECT_EQ(server.sent[0].at("params"), json::object());
}

TEST_F(MCPConnectionTest, AnArrayAsResultIsNoToolList)
{
    server.answer = [](const json::object &) { return json::object{{"result", json::array()}}; };
    EXPECT_EQ(failureOf(connection.listTools()), "The server did not return a tool list.");
}

TEST_F(MCPConnectionTest, ACallSendsTheToolsOwnNameAndItsArguments)
{
    auto handle = call(u"read \"file\""_s);
    EXPECT_EQ(server.sent[0].at("method"), "tools/call");
    EXPECT_EQ(server.sent[0].at("params"),
              (json::object{{"name", "read \"file\""}, {"arguments", {{"a", 1}}}}));
    server.replyTo(0, text("fine"));
    EXPECT_EQ(resultOf(handle), "fine");
}

TEST_F(MCPConnectionTest, LargeArgumentsArriveWhole)
{
    server.answer = FakeToolServer::listing({});
    const json::object arguments{{"text", std::string(3'000'000, 'x')}, {"list", json::array{1, 2, 3}}};
    EXPECT_EQ(runTask(scheduler, connection.callTool(u"write"_s, arguments)).text, "called");
    EXPECT_EQ(server.sent[0].at("params").at("arguments"), arguments);
}

TEST_F(MCPConnectionTest, AnswersMayComeInAnyOrder)
{
    auto first = call();
    auto second = call();
    server.replyTo(1, text("second"));
    server.replyTo(0, text("first"));
    EXPECT_EQ(resultOf(first), "first");
    EXPECT_EQ(resultOf(second), "second");
}

TEST_F(MCPConnectionTest, AnAnswerMayBringItsIdAsText)
{
    auto handle = call();
    json::object answer = text("fine");
    answer["id"] = "1";
    server.reply(answer);
    EXPECT_EQ(resultOf(handle), "fine");
}

TEST_F(MCPConnectionTest, ASecondAnswerAndOneToNobodyAreDropped)
{
    auto handle = call();
    server.reply({{"id", 99}, {"result", json::object()}});
    server.reply({{"id", "1x"}, {"result", json::object()}});
    server.replyTo(0, text("first"));
    server.replyTo(0, text("second"));
    EXPECT_EQ(resultOf(handle), "first");
    EXPECT_EQ(server.requests->count(), 0u);
}

TEST_F(MCPConnectionTest, AServersOwnRequestWithAPendingIdIsNoAnswerAndGetsNone)
{
    auto handle = call();
    server.reply({{"id", 1}, {"method", "roots/list"}, {"result", json::object()}});
    settle();
    EXPECT_FALSE(handle.done());
    EXPECT_EQ(server.sent.size(), 1) << "nothing is said to that";
    server.replyTo(0, text("fine"));
    EXPECT_EQ(resultOf(handle), "fine");
}

TEST_F(MCPConnectionTest, TimesAreThoseOfTheRequests)
{
    const auto stillWaitsAfter = [this](auto handle, Clock::Duration time) {
        settle();
        clock.advance(time - 1ms);
        settle();
        EXPECT_FALSE(handle.done());
        clock.advance(1ms);
        EXPECT_TRUE(waitUntil([&] { return handle.done(); }));
    };
    stillWaitsAfter(scheduler.spawn(connection.connect()), 20s);
    stillWaitsAfter(scheduler.spawn(connection.listTools()), 30s);
    stillWaitsAfter(scheduler.spawn(connection.callTool(u"t"_s, {})), 120s);
    EXPECT_EQ(server.abandoned, (QList<qint64>{1, 2, 3}));
}

TEST_F(MCPConnectionTest, AnAnswerAfterItsTimeIsDroppedAndTheConnectionStaysOpen)
{
    auto late = call();
    clock.advance(120s);
    EXPECT_EQ(resultOf(late), "thrown: The MCP server did not respond in time.");
    auto next = call();
    server.replyTo(0, text("late"));
    EXPECT_EQ(server.requests->count(), 1u) << "the late one has changed nothing";
    EXPECT_EQ(server.idOf(1), 2);
    server.replyTo(1, text("fine"));
    EXPECT_EQ(resultOf(next), "fine");
    EXPECT_EQ(server.shutdowns, 0);
}

TEST_F(MCPConnectionTest, AMessageThatCannotBeSentFailsAtOnce)
{
    server.takesMessages = false;
    EXPECT_EQ(failureOf(connection.callTool(u"t"_s, {})), "The MCP server did not respond in time.");
    EXPECT_EQ(server.requests->count(), 0u);
}

TEST_F(MCPConnectionTest, AServersEndFailsWhatWasSentToThatServerOnly)
{
    server.answer = FakeToolServer::listing({});
    runTask(scheduler, connection.connect());
    server.answer = {};
    auto old = call();
    auto handshake = scheduler.spawn(connection.connect());
    settle();
    server.requests->failSentTo(1);
    EXPECT_EQ(resultOf(old), "thrown: The MCP server did not respond in time.");
    settle();
    EXPECT_FALSE(handshake.done());
    server.replyTo(server.sent.size() - 1, {{"result", json::object()}});
    EXPECT_TRUE(waitUntil([&] { return handshake.done(); }));
    EXPECT_NO_THROW(handshake.result());
}

TEST_F(MCPConnectionTest, ShutdownEndsEveryRequestAndMayComeTwice)
{
    auto first = call();
    auto second = call();
    connection.shutdown();
    connection.shutdown();
    EXPECT_EQ(resultOf(first), "thrown: The MCP server did not respond in time.");
    EXPECT_EQ(resultOf(second), "thrown: The MCP server did not respond in time.");
    EXPECT_EQ(server.shutdowns, 1);
    EXPECT_EQ(failureOf(connection.callTool(u"t"_s, {})), "The MCP server did not respond in time.");
}

TEST_F(MCPConnectionTest, CancellingEndsACallAtOnceAndTheLateAnswerIsDropped)
{
    auto handle = call();
    handle.cancel();
    ASSERT_TRUE(waitUntil([&] { return handle.done(); }));
    EXPECT_THROW(handle.result(), Cancelled);
    EXPECT_EQ(server.abandoned, QList<qint64>{1});
    server.replyTo(0, text("late"));
    EXPECT_EQ(server.requests->count(), 0u);
    EXPECT_EQ(clock.pendingTimers(), 0u);
}

TEST_F(MCPConnectionTest, AReleasedConnectionShutsDown)
{
    {
        const MCPConnection other(server.transport());
    }
    EXPECT_EQ(server.shutdowns, 1);
}

TEST_F(MCPConnectionTest, ManyCallsAtOnceEachGetTheirAnswer)
{
    std::vector<TaskHandle<ToolResult>> handles;
    for (int i = 0; i < 64; ++i)
        handles.push_back(call());
    for (qsizetype i = 63; i >= 0; --i)
        server.replyTo(i, text(QByteArray::number(i).constData()));
    for (int i = 0; i < 64; ++i)
        EXPECT_EQ(resultOf(handles[std::size_t(i)]), QString::number(i));
}

} // namespace
} // namespace morvane
