#include "support/AppFixture.h"

using testing::Contains;
using testing::ElementsAre;

namespace morvane {
namespace {

using Service = FakeAIService;

using AgentLoopTest = AppFixture;

TEST_F(AgentLoopTest, AnswerStreamsIntoTheAssistantRow)
{
    Service::Turn turn;
    turn.tokens = {QStringLiteral("Hel"), QStringLiteral("lo")};
    turn.result.text = QStringLiteral("Hello");
    service.willTurn(turn);
    sendAndFinish(QStringLiteral("hi"));
    ASSERT_EQ(model->messages().size(), 2);
    EXPECT_EQ(lastMessage().text, QStringLiteral("Hello"));
    EXPECT_FALSE(lastMessage().isStreaming);
    EXPECT_EQ(model->status().statusText(), QStringLiteral("Ready"));
    EXPECT_EQ(lastStep().text, QStringLiteral("Finished. No tools were needed."));
    EXPECT_EQ(lastStep().kind, ActivityStep::Kind::success);
}

TEST_F(AgentLoopTest, FinalTextOfAProviderWithoutTokensReachesTheMessage)
{
    Service::Turn turn;
    turn.result.text = QStringLiteral("All at once");
    service.willTurn(turn);
    sendAndFinish(QStringLiteral("hi"));
    EXPECT_EQ(lastMessage().text, QStringLiteral("All at once"));
}

TEST_F(AgentLoopTest, ClosingAnswerIsNotAddedToTheContext)
{
    service.willTurn(Service::answer(QStringLiteral("Done.")));
    sendAndFinish(QStringLiteral("hi"));
    ASSERT_EQ(model->context().size(), 1);
    EXPECT_TRUE(std::holds_alternative<APIMessage::User>(model->context().first().entry));
}

TEST_F(AgentLoopTest, NarrationMovesToTheActivityLogAndTheMessageStartsEmpty)
{
    QString textAtSecondTurn = QStringLiteral("unset");
    service.willTurn(Service::calls({toolCall(QStringLiteral("calculate"), R"({"expression":"1+1"})")},
                                    QStringLiteral("  I will\ncalculate. ")));
    Service::Turn second = Service::answer(QStringLiteral("Two."));
    second.atStart = [this, &textAtSecondTurn] { textAtSecondTurn = lastMessage().text; };
    service.willTurn(second);
    sendAndFinish(QStringLiteral("1+1?"));
    EXPECT_EQ(textAtSecondTurn, QString());
    EXPECT_EQ(lastMessage().text, QStringLiteral("Two."));
    EXPECT_THAT(activityTexts(), ElementsAre(QStringLiteral("Says: I will calculate."),
                                             QStringLiteral("Running: use the calculate tool"),
                                             QStringLiteral("calculate returned: tool result"),
                                             QStringLiteral("Finished. Completed: calculate.")));
    EXPECT_EQ(contextEntries<APIMessage::Assistant>().value(0).text, QStringLiteral("  I will\ncalculate. "));
}

TEST_F(AgentLoopTest, NarrationIsCutAt220Characters)
{
    service.willTurn(Service::calls({toolCall(QStringLiteral("calculate"))}, QString(221, QLatin1Char('n'))));
    service.willTurn(Service::calls({toolCall(QStringLiteral("todo_list"))}, QString(220, QLatin1Char('m'))));
    service.willTurn(Service::answer(QStringLiteral("ok")));
    sendAndFinish(QStringLiteral("go"));
    EXPECT_THAT(activityTexts(), Contains(QStringLiteral("Says: ") + QString(220, QLatin1Char('n')) + u'…'));
    EXPECT_THAT(activityTexts(), Contains(QStringLiteral("Says: ") + QString(220, QLatin1Char('m'))));
}

TEST_F(AgentLoopTest, CallAndResultShareAnIdOfTheLoopsOwn)
{
    AIToolCall call = toolCall(QStringLiteral("calculate"), R"({"expression":"2"})");
    call.id = QStringLiteral("call_of_provider");
    call.thoughtSignature = QStringLiteral("signature");
    service.willTurn(Service::calls({call}));
    service.willTurn(Service::answer(QStringLiteral("ok")));
    sendAndFinish(QStringLiteral("go"));
    const auto calls = contextEntries<APIMessage::FunctionCall>();
    const auto responses = contextEntries<APIMessage::FunctionResponse>();
    ASSERT_EQ(calls.size(), 1);
    ASSERT_EQ(responses.size(), 1);
    EXPECT_EQ(calls[0].id, responses[0].id);
    EXPECT_NE(calls[0].id, QStringLiteral("call_of_provider"));
    EXPECT_EQ(calls[0].thoughtSignature, QStringLiteral("signature"));
    EXPECT_EQ(responses[0].content, QStringLiteral("tool result"));
}

TEST_F(AgentLoopTest, DeniedApprovalIsAResultAndTheRunGoesOn)
{
    service.willTurn(Service::calls({toolCall(QStringLiteral("write_file"), R"({"path":"/x"})")}));
    service.willTurn(Service::answer(QStringLiteral("Understood.")));
    ASSERT_TRUE(model->send(QStringLiteral("write"), {}));
    ASSERT_TRUE(waitUntil([this] { return model->gate().pendingToolCall().has_value(); }));
    EXPECT_EQ(model->status().statusText(), QStringLiteral("Waiting for your approval…"));
    model->gate().resolvePermission(false, false);
    finishRun();
    EXPECT_TRUE(executed.isEmpty());
    EXPECT_EQ(
        contextEntries<APIMessage::FunctionResponse>().value(0).content,
        QStringLiteral(
            "The user denied permission for this action. Do not attempt it again unless the user asks."));
    EXPECT_EQ(service.requests().size(), 2);
    EXPECT_THAT(activityTexts(), Contains(QStringLiteral("Denied: write a file at /x")));
    EXPECT_THAT(announcer.spoken,
                Contains(QStringLiteral("Morvane wants to write a file at /x. Do you allow it?")));
    EXPECT_THAT(announcer.spoken, Contains(QStringLiteral("Action denied. The assistant will continue.")));
    EXPECT_EQ(lastStep().text, QStringLiteral("Finished. No tools were needed."));
}

TEST_F(AgentLoopTest, AllowedCallRunsAndAlwaysAllowIsRemembered)
{
    const AIToolCall call = toolCall(QStringLiteral("write_file"), R"({"path":"/x"})");
    service.willTurn(Service::calls({call}));
    service.willTurn(Service::calls({call}));
    service.willTurn(Service::answer(QStringLiteral("Written.")));
    ASSERT_TRUE(model->send(QStringLiteral("write"), {}));
    ASSERT_TRUE(waitUntil([this] { return model->gate().pendingToolCall().has_value(); }));
    model->gate().resolvePermission(true, true);
    finishRun();
    EXPECT_EQ(executed.size(), 2);
    EXPECT_THAT(announcer.spoken, Contains(QStringLiteral("Approved. Running the action.")));
    EXPECT_THAT(activityTexts(), Contains(QStringLiteral("Automatically allowed: write a file at /x")));
    EXPECT_TRUE(settings->alwaysAllowedTools().contains(QStringLiteral("write_file")));
}

TEST_F(AgentLoopTest, ToolsOfServersRunWithoutApproval)
{
    service.willTurn(Service::calls({toolCall(QStringLiteral("mcp_files_read"))}));
    service.willTurn(Service::answer(QStringLiteral("ok")));
    sendAndFinish(QStringLiteral("go"));
    EXPECT_THAT(toolServers.executed, ElementsAre(QStringLiteral("mcp_files_read")));
    EXPECT_TRUE(executed.isEmpty());
    EXPECT_THAT(activityTexts(), ElementsAre(QStringLiteral("Running: use the mcp_files_read tool"),
                                             QStringLiteral("mcp files read returned: server result"),
                                             QStringLiteral("Finished. Completed: mcp files read.")));
}

TEST_F(AgentLoopTest, AskUserGivesTheAnswerWhole)
{
    const QString answer = QString(200, QLatin1Char('a')) + QStringLiteral("\nend ");
    service.willTurn(Service::calls(
        {toolCall(QStringLiteral("ask_user"), R"({"question":"Which\none?","options":["a","b"]})")}));
    service.willTurn(Service::answer(QStringLiteral("ok")));
    ASSERT_TRUE(model->send(QStringLiteral("go"), {}));
    ASSERT_TRUE(waitUntil([this] { return model->questions().pendingQuestion().has_value(); }));
    EXPECT_EQ(model->status().statusText(), QStringLiteral("Waiting for your answer…"));
    EXPECT_THAT(model->questions().pendingQuestion()->options, ElementsAre(u"a", u"b"));
    model->questions().resolveQuestion(answer);
    finishRun();
    EXPECT_EQ(contextEntries<APIMessage::FunctionResponse>().value(0).content, answer);
    EXPECT_THAT(activityTexts(), Contains(QStringLiteral("Asks you: Which one?")));
    EXPECT_THAT(activityTexts(),
                Contains(QStringLiteral("You answered: ") + QString(140, QLatin1Char('a')) + u'…'));
    EXPECT_THAT(announcer.spoken, Contains(QStringLiteral("Morvane asks: Which\none?")));
}

TEST_F(AgentLoopTest, FailingToolIsAResultLikeAnyOther)
{
    toolResults = {QStringLiteral("Error: no such thing")};
    service.willTurn(Service::calls({toolCall(QStringLiteral("read_file"))}));
    service.willTurn(Service::answer(QStringLiteral("sorry")));
    sendAndFinish(QStringLiteral("go"));
    EXPECT_THAT(activityTexts(), Contains(QStringLiteral("read file failed: Error: no such thing")));
    EXPECT_EQ(lastMessage().text, QStringLiteral("sorry"));
}

TEST_F(AgentLoopTest, TextReachesTheMessageInBatchesOf200Characters)
{
    QList<qsizetype> lengths;
    QObject::connect(&model->transcript(), &Transcript::textAppended, model.get(),
                     [this, &lengths] { lengths.append(lastMessage().text.size()); });
    Service::Turn turn;
    for (int token = 0; token < 450; ++token)
        turn.tokens.append(QStringLiteral("x"));
    turn.result.text = QString(450, QLatin1Char('x'));
    service.willTurn(turn);
    sendAndFinish(QStringLiteral("go"));
    EXPECT_THAT(lengths, ElementsAre(200, 400, 450));
}

TEST_F(AgentLoopTest, GeminiGoesToItsOwnClient)
{
    settings->setProviderID(ProviderID::gemini);
    settings->setApiKey(QStringLiteral("key"));
    service.willTurn(Service::answer(QStringLiteral("ok")));
    sendAndFinish(QStringLiteral("go"));
    EXPECT_TRUE(service.requests().value(0).gemini);
}

} // namespace
} // namespace morvane
