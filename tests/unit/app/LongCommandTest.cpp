#include "support/AppFixture.h"

#include "app/ApprovalGate.h"
#include "async/OneShot.h"
#include "base/Json.h"
#include "support/HeldPool.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// Calls that are so long that the gate looks at them off the main thread, and what comes meanwhile.
class LongCommandTest : public AppFixture {
protected:
    static AIToolCall shell(const QString &command)
    {
        return {u"run_shell_command"_s, boost::json::object{{"command", jsonFromText(command)}}, {}, {}};
    }
    static Task<> noteVerdict(QStringList *order, ApprovalGate *gate, AIToolCall call)
    {
        const ToolVerdict verdict = co_await gate->decide(call);
        order->append(verdict.approval() == ToolVerdict::Approval::asks ? "asks" : "runs");
    }
    static Task<> noteTurn(QStringList *order)
    {
        order->append("another's turn");
        co_return;
    }

    QStringList orderWith(const QString &command)
    {
        QStringList order;
        auto deciding = scheduler.spawn(noteVerdict(&order, &model->gate(), shell(command)));
        auto another = scheduler.spawn(noteTurn(&order));
        EXPECT_TRUE(waitUntil([&] { return deciding.done() && another.done(); }));
        return order;
    }

    static AIToolCall longShell(const QString &end) { return shell(QString("x ").repeated(500'000) + end); }

    /// A run whose command is held up on its way to a verdict.
    void beginCallThatIsBeingLookedAt(const AIToolCall &call = longShell("sudo ls"))
    {
        m_busyThreads.emplace();
        service.willTurn(FakeAIService::calls({call}));
        ASSERT_TRUE(model->send(u"go"_s, {}));
        ASSERT_TRUE(waitUntil([this] { return service.requests().size() == 1; }));
        morvane::settle();
        ASSERT_FALSE(model->gate().pendingToolCall());
    }

    void expectNothingBegunAtTheEnd()
    {
        model->prepareToQuit();
        m_busyThreads.reset();
        finishRun();
        EXPECT_TRUE(executed.isEmpty());
        EXPECT_FALSE(model->gate().pendingToolCall());
        EXPECT_FALSE(lastMessage().isStreaming);
    }

    Task<ToolResult> toolThatWaits(QString name, OneShot<bool> mayEnd)
    {
        executed.append(name);
        co_await mayEnd.wait();
        co_return u"tool result"_s;
    }

    std::optional<HeldPool> m_busyThreads;
};

TEST_F(LongCommandTest, AShortCommandIsDecidedAtOnce)
{
    m_busyThreads.emplace();
    EXPECT_EQ(orderWith(u"sudo ls"_s), (QStringList{"asks", "another's turn"}));
    EXPECT_EQ(orderWith(u"ls"_s), (QStringList{"runs", "another's turn"}));
}

TEST_F(LongCommandTest, ALongCommandHoldsUpNothingElse)
{
    for (const auto &[end, verdict] : {std::pair("sudo ls", "asks"), {"ls", "runs"}}) {
        m_busyThreads.emplace();
        QStringList order;
        auto deciding = scheduler.spawn(noteVerdict(&order, &model->gate(), longShell(end)));
        auto another = scheduler.spawn(noteTurn(&order));
        ASSERT_TRUE(waitUntil([&] { return another.done(); }));
        EXPECT_FALSE(deciding.done());
        m_busyThreads.reset();
        ASSERT_TRUE(waitUntil([&] { return deciding.done(); }));
        EXPECT_EQ(order, (QStringList{"another's turn", verdict}));
    }
}

TEST_F(LongCommandTest, ALongCommandIsAskedForWhenItWasLookedAt)
{
    beginCallThatIsBeingLookedAt();
    m_busyThreads.reset();
    ASSERT_TRUE(waitUntil([this] { return model->gate().pendingToolCall().has_value(); }));
    EXPECT_TRUE(model->gate().pendingToolCall()->destructive);
    service.willTurn(FakeAIService::answer(u"done"_s));
    model->gate().resolvePermission(true, false);
    finishRun();
    EXPECT_EQ(executed, QStringList{"run_shell_command"});
}

TEST_F(LongCommandTest, ACancelWhileACommandIsLookedAtIsItsNo)
{
    beginCallThatIsBeingLookedAt();
    model->cancel();
    m_busyThreads.reset();
    finishRun();
    EXPECT_FALSE(model->gate().pendingToolCall());
    EXPECT_TRUE(executed.isEmpty());
    EXPECT_EQ(service.requests().size(), 1);
    EXPECT_TRUE(lastStep().text.startsWith(u"Denied: run the command: x x"_s));
}

TEST_F(LongCommandTest, ANewConversationLeavesNoRequestOfACommandThatWasLookedAt)
{
    beginCallThatIsBeingLookedAt();
    model->newConversation();
    m_busyThreads.reset();
    finishRun();
    EXPECT_FALSE(model->gate().pendingToolCall());
    EXPECT_TRUE(executed.isEmpty());
}

TEST_F(LongCommandTest, ALongCommandAfterACancelStillAsks)
{
    // A cancel ends no call that comes after the one that runs; what asks then waits for its answer.
    OneShot<bool> toolMayEnd;
    tool = [this, toolMayEnd](ToolPermit permit) { return toolThatWaits(permit.call().name, toolMayEnd); };
    service.willTurn(FakeAIService::calls({toolCall("read_file"), longShell("sudo ls")}));
    ASSERT_TRUE(model->send(u"go"_s, {}));
    ASSERT_TRUE(waitUntil([this] { return executed == QStringList{"read_file"}; }));
    model->cancel();
    toolMayEnd.resume(true);
    ASSERT_TRUE(waitUntil([this] { return model->gate().pendingToolCall().has_value(); }));
    model->gate().resolvePermission(false, false);
    finishRun();
    EXPECT_EQ(executed, QStringList{"read_file"});
}

TEST_F(LongCommandTest, ALongCommandKeepsItsPlaceAmongTheCalls)
{
    service.willTurn(FakeAIService::calls({longShell("ls"), toolCall("read_file"), longShell("pwd")}));
    service.willTurn(FakeAIService::answer(u"done"_s));
    sendAndFinish(u"go"_s);
    EXPECT_EQ(executed, (QStringList{"run_shell_command", "read_file", "run_shell_command"}));
    const auto responses = contextEntries<APIMessage::FunctionResponse>();
    ASSERT_EQ(responses.size(), 3);
    EXPECT_EQ(responses.at(1).name, "read_file");
}

TEST_F(LongCommandTest, WhatIsAlwaysAllowedIsReadWhenALongCallWasLookedAt)
{
    settings->setAlwaysAllowedTools({u"write_file"_s});
    beginCallThatIsBeingLookedAt({u"write_file"_s,
                                  boost::json::object{{"path", "/x"}, {"content", std::string(100'000, 'x')}},
                                  {},
                                  {}});
    settings->setAlwaysAllowedTools({});
    m_busyThreads.reset();
    ASSERT_TRUE(waitUntil([this] { return model->gate().pendingToolCall().has_value(); }));
    EXPECT_TRUE(executed.isEmpty());
    model->cancel();
    finishRun();
}

TEST_F(LongCommandTest, ACancelIsTheNoToASubagentsLongCommandToo)
{
    m_busyThreads.emplace();
    service.willTurn(FakeAIService::calls({toolCall("task", R"({"description":"look"})")}));
    service.willTurn(FakeAIService::calls({longShell("sudo ls")}));
    ASSERT_TRUE(model->send(u"go"_s, {}));
    ASSERT_TRUE(waitUntil([this] { return service.requests().size() == 2; }));
    morvane::settle();
    model->cancel();
    m_busyThreads.reset();
    finishRun();
    EXPECT_FALSE(model->gate().pendingToolCall());
    EXPECT_TRUE(executed.isEmpty());
    EXPECT_EQ(service.requests().size(), 2);
    EXPECT_EQ(model->subagents().label(), QString());
}

TEST_F(LongCommandTest, NoCommandThatIsLookedAtAsksWhileTheProgramEnds)
{
    beginCallThatIsBeingLookedAt(longShell("sudo ls"));
    expectNothingBegunAtTheEnd();
}

TEST_F(LongCommandTest, NoHarmlessCommandThatIsLookedAtBeginsWhileTheProgramEnds)
{
    beginCallThatIsBeingLookedAt(longShell("ls"));
    expectNothingBegunAtTheEnd();
}

} // namespace
} // namespace morvane
