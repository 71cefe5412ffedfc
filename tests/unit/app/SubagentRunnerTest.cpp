#include "support/AppFixture.h"

#include "providers/AIServiceError.h"

using namespace Qt::StringLiterals;

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
            if (response && response->name == "task"_L1)
                return response->content;
        }
        return u"no result"_s;
    }

    void mainLoopCallsTask(const char *arguments)
    {
        service.willTurn(Service::calls({toolCall(u"task"_s, arguments)}));
    }

    void runToEnd()
    {
        service.willTurn(Service::answer(u"combined"_s));
        sendAndFinish(u"delegate"_s);
    }
};

TEST_F(SubagentRunnerTest, ItsLaunchIsTheStatusBeforeItsWork)
{
    mainLoopCallsTask(R"({"description":"Find it","subagent":"researcher"})");
    service.willTurn(Service::answer(u"Report."_s));
    QStringList statuses;
    QObject::connect(&model->status(), &Status::statusTextChanged, model.get(),
                     [&] { statuses.append(model->status().statusText()); });
    runToEnd();
    EXPECT_THAT(statuses, Contains(u"Launching subagent…"_s));
}

TEST_F(SubagentRunnerTest, ReportsItsFinalTextToTheMainLoop)
{
    mainLoopCallsTask(R"({"description":"Find it","subagent":"RESEARCHER"})");
    Service::Turn turn = Service::answer(u" Report. \n"_s);
    QString labelDuringTurn;
    turn.atStart = [this, &labelDuringTurn] { labelDuringTurn = model->subagents().label(); };
    service.willTurn(turn);
    runToEnd();
    EXPECT_EQ(resultOfTask(), u"Report."_s);
    EXPECT_EQ(labelDuringTurn, u"Researcher is working…"_s);
    EXPECT_EQ(model->subagents().label(), QString());
    EXPECT_THAT(announcer.spoken, Contains(u"Launching a subagent to work on this."_s));
    EXPECT_THAT(announcer.spoken, Contains(u"A researcher subagent is working on this."_s));
    EXPECT_THAT(announcer.spoken, Contains(u"The researcher subagent finished."_s));
    EXPECT_THAT(activityTexts(),
                ElementsAre(u"Launching researcher subagent: Find it"_s, u"Researcher subagent finished."_s,
                            u"Finished. No tools were needed."_s));
    const auto request = service.requests().value(1);
    EXPECT_TRUE(request.config.systemPrompt.startsWith(u"You are a Researcher subagent."_s));
    EXPECT_EQ(request.context.size(), 1);
    EXPECT_EQ(request.config.tools.size(), 41);
}

TEST_F(SubagentRunnerTest, HasTheToolsOfTheServersBehindTheBuiltInOnes)
{
    toolServers.tools = {AITool{u"mcp_s_t"_s, u"serves"_s, {}}};
    mainLoopCallsTask(R"({"description":"Find it"})");
    service.willTurn(Service::answer(u"found"_s));
    runToEnd();
    const QList<AITool> tools = service.requests().value(1).config.tools;
    ASSERT_EQ(tools.size(), 42);
    EXPECT_EQ(tools.last().name, u"mcp_s_t"_s);
}

TEST_F(SubagentRunnerTest, WhatWasOnlyStreamedIsItsReport)
{
    mainLoopCallsTask(R"({"description":"Find it"})");
    Service::Turn turn;
    turn.tokens = {u"\nFound"_s, u" it. "_s};
    service.willTurn(turn);
    runToEnd();
    EXPECT_EQ(resultOfTask(), u"Found it."_s);
}

TEST_F(SubagentRunnerTest, UnknownRoleIsGeneralCalledAssistant)
{
    mainLoopCallsTask(R"({"description":"Do it","subagent":"wizard"})");
    service.willTurn(Service::answer(u"done"_s));
    runToEnd();
    EXPECT_THAT(activityTexts(), Contains(u"Launching assistant subagent: Do it"_s));
    EXPECT_THAT(activityTexts(), Contains(u"Assistant subagent finished."_s));
}

TEST_F(SubagentRunnerTest, EmptyDescriptionIsAnErrorWithoutATurn)
{
    mainLoopCallsTask(R"({"subagent":"verifier"})");
    runToEnd();
    EXPECT_EQ(resultOfTask(), u"Error: the task tool needs a description of what the subagent should do."_s);
    EXPECT_EQ(service.requests().size(), 2);
    EXPECT_THAT(announcer.spoken, Not(Contains(u"A verifier subagent is working on this."_s)));
}

TEST_F(SubagentRunnerTest, StopsAfterItsSixthTurn)
{
    mainLoopCallsTask(R"({"description":"Loop"})");
    for (int turn = 0; turn < 6; ++turn)
        service.willTurn(Service::calls({toolCall(u"calculate"_s)}));
    runToEnd();
    EXPECT_EQ(resultOfTask(),
              u"The subagent used all its steps and did not return a final answer. Its last tool "
              "outputs were recorded above."_s);
    EXPECT_EQ(executed.size(), 6);
    EXPECT_THAT(activityTexts(), Contains(u"The subagent used all its steps without a final answer."_s));
}

TEST_F(SubagentRunnerTest, CannotLaunchAnother)
{
    mainLoopCallsTask(R"({"description":"Nest"})");
    service.willTurn(Service::calls({toolCall(u"task"_s, R"({"description":"deeper"})")}, u"Deeper now."_s));
    service.willTurn(Service::answer(u"alone then"_s));
    runToEnd();
    EXPECT_EQ(resultOfTask(), u"alone then"_s);
    const auto secondTurn = service.requests().value(2).context;
    ASSERT_EQ(secondTurn.size(), 4);
    EXPECT_EQ(std::get<APIMessage::Assistant>(secondTurn.at(1).entry).text, u"Deeper now."_s);
    EXPECT_EQ(std::get<APIMessage::FunctionResponse>(secondTurn.last().entry).content,
              u"Subagents cannot launch other subagents. Continue and finish the work yourself "
              "using your other tools."_s);
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
              u"The subagent encountered an error: Morvane did not respond because the request "
              "was blocked by the provider's content safety filter."_s);
    EXPECT_EQ(lastMessage().text, u"combined"_s);
    EXPECT_EQ(model->subagents().label(), QString());
    EXPECT_THAT(announcer.spoken, Not(Contains(u"The assistant subagent finished."_s)));
}

TEST_F(SubagentRunnerTest, CancellationEndsItAndTheMainRun)
{
    mainLoopCallsTask(R"({"description":"Wait"})");
    Service::Turn turn;
    turn.silence = 1h;
    service.willTurn(turn);
    ASSERT_TRUE(model->send(u"delegate"_s, {}));
    ASSERT_TRUE(waitUntil([this] { return !model->subagents().label().isEmpty(); }));
    model->cancel();
    settle();
    EXPECT_EQ(model->subagents().label(), QString());
    EXPECT_EQ(model->status().statusText(), u"Cancelled"_s);
    EXPECT_EQ(service.requests().size(), 2);
}

TEST_F(SubagentRunnerTest, NarratesItsToolsInItsOwnWords)
{
    QStringList statuses;
    QObject::connect(&model->status(), &Status::statusTextChanged, model.get(),
                     [this, &statuses] { statuses.append(model->status().statusText()); });
    mainLoopCallsTask(R"({"description":"Read"})");
    service.willTurn(Service::calls({toolCall(u"read_file"_s), toolCall(u"mcp_s_t"_s)}));
    service.willTurn(Service::answer(u"read"_s));
    runToEnd();
    const QStringList texts = activityTexts();
    EXPECT_THAT(statuses, Contains(u"Subagent: use the read_file tool"_s));
    EXPECT_THAT(statuses, Contains(u"Subagent: use the mcp_s_t tool"_s));
    EXPECT_THAT(texts, Contains(u"Subagent: use the read_file tool"_s));
    EXPECT_THAT(texts, Contains(u"Subagent read file returned: tool result"_s));
    EXPECT_THAT(texts, Contains(u"Subagent: use the mcp_s_t tool"_s));
    EXPECT_THAT(texts, Contains(u"Subagent mcp s t returned: server result"_s));
    EXPECT_EQ(texts.last(), u"Finished. No tools were needed."_s);
}

TEST_F(SubagentRunnerTest, AsksForApprovalInItsOwnWords)
{
    mainLoopCallsTask(R"({"description":"Write"})");
    service.willTurn(Service::calls({toolCall(u"write_file"_s, R"({"path":"/y"})")}));
    service.willTurn(Service::answer(u"denied then"_s));
    service.willTurn(Service::answer(u"combined"_s));
    ASSERT_TRUE(model->send(u"delegate"_s, {}));
    ASSERT_TRUE(waitUntil([this] { return model->gate().pendingToolCall().has_value(); }));
    model->gate().resolvePermission(false, false);
    finishRun();
    EXPECT_THAT(announcer.spoken, Contains(u"A subagent wants to write a file at /y. Do you allow it?"_s));
    EXPECT_THAT(announcer.spoken, Contains(u"Action denied. The subagent will continue."_s));
    EXPECT_THAT(activityTexts(), Contains(u"Subagent is waiting for approval to write a file at /y"_s));
    EXPECT_TRUE(executed.isEmpty());
}

TEST_F(SubagentRunnerTest, AsksTheUserInItsOwnWords)
{
    mainLoopCallsTask(R"({"description":"Ask"})");
    service.willTurn(Service::calls({toolCall(u"ask_user"_s, R"({"question":"Which?"})")}));
    service.willTurn(Service::answer(u"thanks"_s));
    service.willTurn(Service::answer(u"combined"_s));
    ASSERT_TRUE(model->send(u"delegate"_s, {}));
    ASSERT_TRUE(waitUntil([this] { return model->questions().pendingQuestion().has_value(); }));
    EXPECT_EQ(model->status().statusText(), u"Subagent is waiting for your answer…"_s);
    model->questions().resolveQuestion(u"that"_s);
    finishRun();
    EXPECT_THAT(activityTexts(), Contains(u"Subagent asks you: Which?"_s));
    EXPECT_THAT(activityTexts(), Contains(u"You answered: that"_s));
}

TEST_F(SubagentRunnerTest, ItsTextStreamsIntoTheMessageAndStaysThere)
{
    mainLoopCallsTask(R"({"description":"Talk"})");
    service.willTurn(Service::calls({toolCall(u"calculate"_s)}, QString(200, u's')));
    service.willTurn(Service::answer(u"end"_s));
    runToEnd();
    EXPECT_EQ(lastMessage().text, QString(200, u's') + u"end"_s + u"combined"_s);
}

TEST_F(SubagentRunnerTest, WhatIsLeftOfATurnWithToolsIsDropped)
{
    mainLoopCallsTask(R"({"description":"Talk"})");
    service.willTurn(Service::calls({toolCall(u"calculate"_s)}, u"dropped"_s));
    service.willTurn(Service::answer(u"end"_s));
    runToEnd();
    EXPECT_EQ(lastMessage().text, u"endcombined"_s);
}

} // namespace
} // namespace morvane
