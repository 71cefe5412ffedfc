#include "support/AppFixture.h"

using namespace Qt::StringLiterals;

using testing::Contains;
using testing::ElementsAre;

namespace morvane {
namespace {

using Service = FakeAIService;

using AgentLoopTest = AppFixture;

TEST_F(AgentLoopTest, AnswerStreamsIntoTheAssistantRow)
{
    Service::Turn turn;
    turn.tokens = {u"Hel"_s, u"lo"_s};
    turn.result.text = u"Hello"_s;
    service.willTurn(turn);
    sendAndFinish(u"hi"_s);
    ASSERT_EQ(model->messages().size(), 2);
    EXPECT_EQ(lastMessage().text, u"Hello"_s);
    EXPECT_FALSE(lastMessage().isStreaming);
    EXPECT_EQ(model->status().statusText(), u"Ready"_s);
    EXPECT_EQ(lastStep().text, u"Finished. No tools were needed."_s);
    EXPECT_EQ(lastStep().kind, ActivityStep::Kind::success);
}

TEST_F(AgentLoopTest, FinalTextOfAProviderWithoutTokensReachesTheMessage)
{
    Service::Turn turn;
    turn.result.text = u"All at once"_s;
    service.willTurn(turn);
    sendAndFinish(u"hi"_s);
    EXPECT_EQ(lastMessage().text, u"All at once"_s);
}

TEST_F(AgentLoopTest, ClosingAnswerIsNotAddedToTheContext)
{
    service.willTurn(Service::answer(u"Done."_s));
    sendAndFinish(u"hi"_s);
    ASSERT_EQ(model->context().size(), 1);
    EXPECT_TRUE(std::holds_alternative<APIMessage::User>(model->context().first().entry));
}

TEST_F(AgentLoopTest, NarrationMovesToTheActivityLogAndTheMessageStartsEmpty)
{
    QString textAtSecondTurn = u"unset"_s;
    service.willTurn(
        Service::calls({toolCall(u"calculate"_s, R"({"expression":"1+1"})")}, u"  I will\ncalculate. "_s));
    Service::Turn second = Service::answer(u"Two."_s);
    second.atStart = [this, &textAtSecondTurn] { textAtSecondTurn = lastMessage().text; };
    service.willTurn(second);
    sendAndFinish(u"1+1?"_s);
    EXPECT_EQ(textAtSecondTurn, QString());
    EXPECT_EQ(lastMessage().text, u"Two."_s);
    EXPECT_THAT(activityTexts(),
                ElementsAre(u"Says: I will calculate."_s, u"Running: use the calculate tool"_s,
                            u"calculate returned: tool result"_s, u"Finished. Completed: calculate."_s));
    EXPECT_EQ(contextEntries<APIMessage::Assistant>().value(0).text, u"  I will\ncalculate. "_s);
}

TEST_F(AgentLoopTest, NarrationIsCutAt220Characters)
{
    service.willTurn(Service::calls({toolCall(u"calculate"_s)}, QString(221, u'n')));
    service.willTurn(Service::calls({toolCall(u"todo_list"_s)}, QString(220, u'm')));
    service.willTurn(Service::answer(u"ok"_s));
    sendAndFinish(u"go"_s);
    EXPECT_THAT(activityTexts(), Contains(u"Says: "_s + QString(220, u'n') + u'…'));
    EXPECT_THAT(activityTexts(), Contains(u"Says: "_s + QString(220, u'm')));
}

TEST_F(AgentLoopTest, CallAndResultShareAnIdOfTheLoopsOwn)
{
    AIToolCall call = toolCall(u"calculate"_s, R"({"expression":"2"})");
    call.id = u"call_of_provider"_s;
    call.thoughtSignature = u"signature"_s;
    service.willTurn(Service::calls({call}));
    service.willTurn(Service::answer(u"ok"_s));
    sendAndFinish(u"go"_s);
    const auto calls = contextEntries<APIMessage::FunctionCall>();
    const auto responses = contextEntries<APIMessage::FunctionResponse>();
    ASSERT_EQ(calls.size(), 1);
    ASSERT_EQ(responses.size(), 1);
    EXPECT_EQ(calls[0].id, responses[0].id);
    EXPECT_NE(calls[0].id, u"call_of_provider"_s);
    EXPECT_EQ(calls[0].thoughtSignature, u"signature"_s);
    EXPECT_EQ(responses[0].content, u"tool result"_s);
}

TEST_F(AgentLoopTest, DeniedApprovalIsAResultAndTheRunGoesOn)
{
    service.willTurn(Service::calls({toolCall(u"write_file"_s, R"({"path":"/x"})")}));
    service.willTurn(Service::answer(u"Understood."_s));
    ASSERT_TRUE(model->send(u"write"_s, {}));
    ASSERT_TRUE(waitUntil([this] { return model->gate().pendingToolCall().has_value(); }));
    EXPECT_EQ(model->status().statusText(), u"Waiting for your approval…"_s);
    EXPECT_EQ(lastStep().text, u"Waiting for approval to write a file at /x"_s);
    EXPECT_EQ(lastStep().kind, ActivityStep::Kind::info);
    model->gate().resolvePermission(false, false);
    finishRun();
    EXPECT_TRUE(executed.isEmpty());
    EXPECT_EQ(contextEntries<APIMessage::FunctionResponse>().value(0).content,
              u"The user denied permission for this action. Do not attempt it again unless the user asks."_s);
    EXPECT_EQ(service.requests().size(), 2);
    EXPECT_THAT(activityTexts(), Contains(u"Denied: write a file at /x"_s));
    EXPECT_THAT(announcer.spoken, Contains(u"Morvane wants to write a file at /x. Do you allow it?"_s));
    EXPECT_THAT(announcer.spoken, Contains(u"Action denied. The assistant will continue."_s));
    EXPECT_EQ(lastStep().text, u"Finished. No tools were needed."_s);
}

TEST_F(AgentLoopTest, AllowedCallRunsAndAlwaysAllowIsRemembered)
{
    const AIToolCall call = toolCall(u"write_file"_s, R"({"path":"/x"})");
    service.willTurn(Service::calls({call}));
    service.willTurn(Service::calls({call}));
    service.willTurn(Service::answer(u"Written."_s));
    ASSERT_TRUE(model->send(u"write"_s, {}));
    ASSERT_TRUE(waitUntil([this] { return model->gate().pendingToolCall().has_value(); }));
    model->gate().resolvePermission(true, true);
    finishRun();
    EXPECT_EQ(executed.size(), 2);
    EXPECT_THAT(announcer.spoken, Contains(u"Approved. Running the action."_s));
    EXPECT_THAT(activityTexts(), Contains(u"Automatically allowed: write a file at /x"_s));
    EXPECT_TRUE(settings->alwaysAllowedTools().contains(u"write_file"_s));
}

TEST_F(AgentLoopTest, ToolsOfServersRunWithoutApproval)
{
    QStringList statuses;
    QObject::connect(&model->status(), &Status::statusTextChanged, model.get(),
                     [this, &statuses] { statuses.append(model->status().statusText()); });
    service.willTurn(Service::calls({toolCall(u"mcp_files_read"_s)}));
    service.willTurn(Service::answer(u"ok"_s));
    sendAndFinish(u"go"_s);
    EXPECT_THAT(statuses, testing::Contains(u"Running mcp_files_read…"_s));
    EXPECT_THAT(toolServers.executed, ElementsAre(u"mcp_files_read"_s));
    EXPECT_TRUE(executed.isEmpty());
    EXPECT_THAT(activityTexts(), ElementsAre(u"Running: use the mcp_files_read tool"_s,
                                             u"mcp files read returned: server result"_s,
                                             u"Finished. Completed: mcp files read."_s));
}

TEST_F(AgentLoopTest, AskUserGivesTheAnswerWhole)
{
    const QString answer = QString(200, u'a') + u"\nend "_s;
    service.willTurn(
        Service::calls({toolCall(u"ask_user"_s, R"({"question":"Which\none?","options":["a","b"]})")}));
    service.willTurn(Service::answer(u"ok"_s));
    ASSERT_TRUE(model->send(u"go"_s, {}));
    ASSERT_TRUE(waitUntil([this] { return model->questions().pendingQuestion().has_value(); }));
    EXPECT_EQ(model->status().statusText(), u"Waiting for your answer…"_s);
    EXPECT_THAT(model->questions().pendingQuestion()->options, ElementsAre(u"a", u"b"));
    model->questions().resolveQuestion(answer);
    finishRun();
    EXPECT_EQ(contextEntries<APIMessage::FunctionResponse>().value(0).content, answer);
    EXPECT_THAT(activityTexts(), Contains(u"Asks you: Which one?"_s));
    EXPECT_THAT(activityTexts(), Contains(u"You answered: "_s + QString(140, u'a') + u'…'));
    EXPECT_THAT(announcer.spoken, Contains(u"Morvane asks: Which\none?"_s));
}

TEST_F(AgentLoopTest, FailingToolIsAResultLikeAnyOther)
{
    toolResults = {u"Error: no such thing"_s};
    service.willTurn(Service::calls({toolCall(u"read_file"_s)}));
    service.willTurn(Service::answer(u"sorry"_s));
    sendAndFinish(u"go"_s);
    EXPECT_THAT(activityTexts(), Contains(u"read file failed: Error: no such thing"_s));
    EXPECT_EQ(lastMessage().text, u"sorry"_s);
}

TEST_F(AgentLoopTest, TextReachesTheMessageInBatchesOf200Characters)
{
    QList<qsizetype> lengths;
    QObject::connect(&model->transcript(), &Transcript::textAppended, model.get(),
                     [this, &lengths] { lengths.append(lastMessage().text.size()); });
    Service::Turn turn;
    for (int token = 0; token < 450; ++token)
        turn.tokens.append(u"x"_s);
    turn.result.text = QString(450, u'x');
    service.willTurn(turn);
    sendAndFinish(u"go"_s);
    EXPECT_THAT(lengths, ElementsAre(200, 400, 450));
}

TEST_F(AgentLoopTest, GeminiGoesToItsOwnClient)
{
    settings->setProviderID(ProviderID::gemini);
    settings->setApiKey(u"key"_s);
    service.willTurn(Service::answer(u"ok"_s));
    sendAndFinish(u"go"_s);
    EXPECT_TRUE(service.requests().value(0).gemini);
}

} // namespace
} // namespace morvane
