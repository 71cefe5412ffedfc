#include "support/AppFixture.h"

#include "providers/AIServiceError.h"

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

namespace morvane {
namespace {

using Service = FakeAIService;

class SubagentRunnerTest : public AppFixture {
protected:
    QString resultOfTask() const
    {
        for (const APIMessage &message : model->context()) {
            const auto *response = std::get_if<APIMessage::FunctionResponse>(&message.entry);
            if (response && response->name == QLatin1String("task"))
                return response->content;
        }
        return QStringLiteral("no result");
    }

    void mainLoopCallsTask(const char *arguments)
    {
        service.willTurn(Service::calls({toolCall(QStringLiteral("task"), arguments)}));
    }

    void runToEnd()
    {
        service.willTurn(Service::answer(QStringLiteral("combined")));
        sendAndFinish(QStringLiteral("delegate"));
    }
};

TEST_F(SubagentRunnerTest, ReportsItsFinalTextToTheMainLoop)
{
    mainLoopCallsTask(R"({"description":"Find it","subagent":"RESEARCHER"})");
    Service::Turn turn = Service::answer(QStringLiteral(" Report. \n"));
    QString labelDuringTurn;
    turn.atStart = [this, &labelDuringTurn] { labelDuringTurn = model->subagents().label(); };
    service.willTurn(turn);
    runToEnd();
    EXPECT_EQ(resultOfTask(), QStringLiteral("Report."));
    EXPECT_EQ(labelDuringTurn, QStringLiteral("Researcher is working…"));
    EXPECT_EQ(model->subagents().label(), QString());
    EXPECT_THAT(announcer.spoken, Contains(QStringLiteral("Launching a subagent to work on this.")));
    EXPECT_THAT(announcer.spoken, Contains(QStringLiteral("A researcher subagent is working on this.")));
    EXPECT_THAT(announcer.spoken, Contains(QStringLiteral("The researcher subagent finished.")));
    EXPECT_THAT(activityTexts(), ElementsAre(QStringLiteral("Launching researcher subagent: Find it"),
                                             QStringLiteral("Researcher subagent finished."),
                                             QStringLiteral("Finished. No tools were needed.")));
    const auto request = service.requests().value(1);
    EXPECT_TRUE(request.config.systemPrompt.startsWith(QStringLiteral("You are a Researcher subagent.")));
    EXPECT_EQ(request.context.size(), 1);
    EXPECT_EQ(request.config.tools.size(), 41);
}

TEST_F(SubagentRunnerTest, UnknownRoleIsGeneralCalledAssistant)
{
    mainLoopCallsTask(R"({"description":"Do it","subagent":"wizard"})");
    service.willTurn(Service::answer(QStringLiteral("done")));
    runToEnd();
    EXPECT_THAT(activityTexts(), Contains(QStringLiteral("Launching assistant subagent: Do it")));
    EXPECT_THAT(activityTexts(), Contains(QStringLiteral("Assistant subagent finished.")));
}

TEST_F(SubagentRunnerTest, EmptyDescriptionIsAnErrorWithoutATurn)
{
    mainLoopCallsTask(R"({"subagent":"verifier"})");
    runToEnd();
    EXPECT_EQ(resultOfTask(),
              QStringLiteral("Error: the task tool needs a description of what the subagent should do."));
    EXPECT_EQ(service.requests().size(), 2);
    EXPECT_THAT(announcer.spoken, Not(Contains(QStringLiteral("A verifier subagent is working on this."))));
}

TEST_F(SubagentRunnerTest, StopsAfterItsSixthTurn)
{
    mainLoopCallsTask(R"({"description":"Loop"})");
    for (int turn = 0; turn < 6; ++turn)
        service.willTurn(Service::calls({toolCall(QStringLiteral("calculate"))}));
    runToEnd();
    EXPECT_EQ(
        resultOfTask(),
        QStringLiteral("The subagent used all its steps and did not return a final answer. Its last tool "
                       "outputs were recorded above."));
    EXPECT_EQ(executed.size(), 6);
    EXPECT_THAT(activityTexts(),
                Contains(QStringLiteral("The subagent used all its steps without a final answer.")));
}

TEST_F(SubagentRunnerTest, CannotLaunchAnother)
{
    mainLoopCallsTask(R"({"description":"Nest"})");
    service.willTurn(Service::calls({toolCall(QStringLiteral("task"), R"({"description":"deeper"})")}));
    service.willTurn(Service::answer(QStringLiteral("alone then")));
    runToEnd();
    EXPECT_EQ(resultOfTask(), QStringLiteral("alone then"));
    const auto secondTurn = service.requests().value(2).context;
    EXPECT_EQ(std::get<APIMessage::FunctionResponse>(secondTurn.last().entry).content,
              QStringLiteral("Subagents cannot launch other subagents. Continue and finish the work yourself "
                             "using your other tools."));
}

TEST_F(SubagentRunnerTest, SilentLastTurnGivesAnEmptyReport)
{
    mainLoopCallsTask(R"({"description":"Be silent"})");
    service.willTurn(Service::Turn{});
    runToEnd();
    EXPECT_EQ(resultOfTask(), QString());
}

TEST_F(SubagentRunnerTest, ErrorIsATextForTheMainModelAndTheRunGoesOn)
{
    mainLoopCallsTask(R"({"description":"Fail"})");
    service.willTurn(Service::failure(std::make_exception_ptr(AIServiceError(AIServiceError::Blocked{}))));
    runToEnd();
    EXPECT_EQ(resultOfTask(),
              QStringLiteral("The subagent encountered an error: Morvane did not respond because the request "
                             "was blocked by the provider's content safety filter."));
    EXPECT_EQ(lastMessage().text, QStringLiteral("combined"));
    EXPECT_EQ(model->subagents().label(), QString());
}

TEST_F(SubagentRunnerTest, CancellationEndsItAndTheMainRun)
{
    mainLoopCallsTask(R"({"description":"Wait"})");
    Service::Turn turn;
    turn.silence = 1h;
    service.willTurn(turn);
    ASSERT_TRUE(model->send(QStringLiteral("delegate"), {}));
    ASSERT_TRUE(waitUntil([this] { return !model->subagents().label().isEmpty(); }));
    model->cancel();
    settle();
    EXPECT_EQ(model->subagents().label(), QString());
    EXPECT_EQ(model->status().statusText(), QStringLiteral("Cancelled"));
    EXPECT_EQ(service.requests().size(), 2);
}

TEST_F(SubagentRunnerTest, NarratesItsToolsInItsOwnWords)
{
    mainLoopCallsTask(R"({"description":"Read"})");
    service.willTurn(
        Service::calls({toolCall(QStringLiteral("read_file")), toolCall(QStringLiteral("mcp_s_t"))}));
    service.willTurn(Service::answer(QStringLiteral("read")));
    runToEnd();
    const QStringList texts = activityTexts();
    EXPECT_THAT(texts, Contains(QStringLiteral("Subagent: use the read_file tool")));
    EXPECT_THAT(texts, Contains(QStringLiteral("Subagent read file returned: tool result")));
    EXPECT_THAT(texts, Contains(QStringLiteral("Subagent: use the mcp_s_t tool")));
    EXPECT_THAT(texts, Contains(QStringLiteral("Subagent mcp s t returned: server result")));
    EXPECT_EQ(texts.last(), QStringLiteral("Finished. No tools were needed."));
}

TEST_F(SubagentRunnerTest, AsksForApprovalInItsOwnWords)
{
    mainLoopCallsTask(R"({"description":"Write"})");
    service.willTurn(Service::calls({toolCall(QStringLiteral("write_file"), R"({"path":"/y"})")}));
    service.willTurn(Service::answer(QStringLiteral("denied then")));
    service.willTurn(Service::answer(QStringLiteral("combined")));
    ASSERT_TRUE(model->send(QStringLiteral("delegate"), {}));
    ASSERT_TRUE(waitUntil([this] { return model->gate().pendingToolCall().has_value(); }));
    model->gate().resolvePermission(false, false);
    finishRun();
    EXPECT_THAT(announcer.spoken,
                Contains(QStringLiteral("A subagent wants to write a file at /y. Do you allow it?")));
    EXPECT_THAT(announcer.spoken, Contains(QStringLiteral("Action denied. The subagent will continue.")));
    EXPECT_THAT(activityTexts(),
                Contains(QStringLiteral("Subagent is waiting for approval to write a file at /y")));
    EXPECT_TRUE(executed.isEmpty());
}

TEST_F(SubagentRunnerTest, AsksTheUserInItsOwnWords)
{
    mainLoopCallsTask(R"({"description":"Ask"})");
    service.willTurn(Service::calls({toolCall(QStringLiteral("ask_user"), R"({"question":"Which?"})")}));
    service.willTurn(Service::answer(QStringLiteral("thanks")));
    service.willTurn(Service::answer(QStringLiteral("combined")));
    ASSERT_TRUE(model->send(QStringLiteral("delegate"), {}));
    ASSERT_TRUE(waitUntil([this] { return model->questions().pendingQuestion().has_value(); }));
    EXPECT_EQ(model->status().statusText(), QStringLiteral("Subagent is waiting for your answer…"));
    model->questions().resolveQuestion(QStringLiteral("that"));
    finishRun();
    EXPECT_THAT(activityTexts(), Contains(QStringLiteral("Subagent asks you: Which?")));
    EXPECT_THAT(activityTexts(), Contains(QStringLiteral("You answered: that")));
}

TEST_F(SubagentRunnerTest, ItsTextStreamsIntoTheMessageAndStaysThere)
{
    mainLoopCallsTask(R"({"description":"Talk"})");
    service.willTurn(Service::calls({toolCall(QStringLiteral("calculate"))}, QString(200, QLatin1Char('s'))));
    service.willTurn(Service::answer(QStringLiteral("end")));
    runToEnd();
    EXPECT_EQ(lastMessage().text,
              QString(200, QLatin1Char('s')) + QStringLiteral("end") + QStringLiteral("combined"));
}

} // namespace
} // namespace morvane
