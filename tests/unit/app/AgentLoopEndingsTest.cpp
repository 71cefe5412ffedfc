#include "support/AppFixture.h"

#include "async/OneShot.h"
#include "providers/AIServiceError.h"

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;
using testing::Contains;

namespace morvane {
namespace {

using Service = FakeAIService;

const QString repetitionNote =
    u"I noticed I was repeating the same action without progress, so I stopped to avoid going in circles. "
    u"The "
    "obstacle did not respond to that approach — tell me what you would like me to try instead."_s;

QString limitNote(int steps)
{
    return u"I reached the limit of %1 steps while working on this and stopped to avoid running "
           "forever. Ask me to continue and I'll pick up where I left off — or raise the limit "
           "in Settings under Behaviour."_s.arg(steps);
}

using AgentLoopEndingsTest = AppFixture;

Task<ToolResult> resultOf(QString text)
{
    co_return text;
}

Task<ToolResult> textOf(OneShot<QString> text)
{
    co_return co_await text.wait();
}

TEST_F(AgentLoopEndingsTest, ThirdIdenticalCallOfOneTurnIsNotRun)
{
    const AIToolCall call = toolCall(u"calculate"_s, R"({"expression":"1"})");
    service.willTurn(Service::calls({call, call, call}));
    sendAndFinish(u"go"_s);
    EXPECT_EQ(executed.size(), 2);
    EXPECT_EQ(contextEntries<APIMessage::FunctionCall>().size(), 3);
    EXPECT_EQ(contextEntries<APIMessage::FunctionResponse>().size(), 2);
    EXPECT_EQ(lastMessage().text, repetitionNote);
    EXPECT_EQ(lastStep().text, u"Stopped: the same action repeated without progress."_s);
    EXPECT_EQ(lastStep().kind, ActivityStep::Kind::error);
    EXPECT_TRUE(activityTexts().filter(u"Finished."_s).isEmpty());
    EXPECT_EQ(model->status().statusText(), u"Ready"_s);
    EXPECT_EQ(service.requests().size(), 1);
}

TEST_F(AgentLoopEndingsTest, RepetitionIsCountedAcrossTurns)
{
    const AIToolCall call = toolCall(u"calculate"_s, R"({"expression":"1"})");
    for (int turn = 0; turn < 3; ++turn)
        service.willTurn(Service::calls({call}));
    sendAndFinish(u"go"_s);
    EXPECT_EQ(executed.size(), 2);
    EXPECT_EQ(lastMessage().text, repetitionNote);
}

TEST_F(AgentLoopEndingsTest, TheNotesAreAppendedToWhatASubagentHasSaid)
{
    const AIToolCall subagent = toolCall(u"task"_s, R"({"description":"look"})");
    const AIToolCall call = toolCall(u"calculate"_s, R"({"expression":"1"})");
    service.willTurn(Service::calls({subagent}));
    service.willTurn(Service::answer(u"All is well."_s));
    service.willTurn(Service::calls({call, call, call}));
    sendAndFinish(u"go"_s);
    EXPECT_EQ(lastMessage().text, u"All is well.\n\n"_s + repetitionNote);

    settings->setMaxSteps(1);
    service.willTurn(Service::calls({subagent}));
    service.willTurn(Service::answer(u"Still well."_s));
    sendAndFinish(u"again"_s);
    EXPECT_EQ(lastMessage().text, u"Still well.\n\n"_s + limitNote(1));
}

TEST_F(AgentLoopEndingsTest, NarrationLeavesTheMessageAndWhatASubagentHasSaidStays)
{
    service.willTurn(Service::calls({toolCall(u"task"_s, R"({"description":"look"})")}));
    service.willTurn(Service::answer(u"All is well."_s));
    service.willTurn(Service::calls({toolCall(u"calculate"_s)}, u"Now I count."_s));
    service.willTurn(Service::answer(u" Done."_s));
    sendAndFinish(u"go"_s);
    EXPECT_EQ(lastMessage().text, u"All is well. Done."_s);
    EXPECT_TRUE(activityTexts().contains(u"Says: Now I count."_s));
}

TEST_F(AgentLoopEndingsTest, AFinishedToolIsNamedOnceInTheOrderOfFirstUse)
{
    service.willTurn(Service::calls({toolCall(u"read_file"_s), toolCall(u"calculate"_s)}));
    service.willTurn(Service::calls({toolCall(u"read_file"_s), toolCall(u"mcp_a_b"_s)}));
    service.willTurn(Service::calls({toolCall(u"calculate"_s), toolCall(u"mcp_a_b"_s)}));
    service.willTurn(Service::answer(u"Done."_s));
    sendAndFinish(u"go"_s);
    EXPECT_EQ(lastStep().text, u"Finished. Completed: read file, calculate, mcp a b."_s);
}

TEST_F(AgentLoopEndingsTest, ADifferentCallBetweenLikeOnesResetsTheCount)
{
    const AIToolCall one = toolCall(u"calculate"_s, R"({"expression":"1"})");
    const AIToolCall other = toolCall(u"calculate"_s, R"({"expression":"2"})");
    service.willTurn(Service::calls({one, one, other, one, one}));
    service.willTurn(Service::answer(u"fine"_s));
    sendAndFinish(u"go"_s);
    EXPECT_EQ(executed.size(), 5);
    EXPECT_EQ(lastMessage().text, u"fine"_s);
}

TEST_F(AgentLoopEndingsTest, AnotherOrderOfKeysIsAnotherCall)
{
    const AIToolCall one = toolCall(u"write"_s, R"({"a":1,"b":2})");
    const AIToolCall other = toolCall(u"write"_s, R"({"b":2,"a":1})");
    service.willTurn(Service::calls({one, one, other, one}));
    service.willTurn(Service::answer(u"fine"_s));
    sendAndFinish(u"go"_s);
    EXPECT_EQ(executed.size(), 4);
}

TEST_F(AgentLoopEndingsTest, RepetitionCountsQuestionsTooBeforeTheyAreAsked)
{
    const AIToolCall call = toolCall(u"ask_user"_s, R"({"question":"Which?"})");
    service.willTurn(Service::calls({call, call, call}));
    ASSERT_TRUE(model->send(u"go"_s, {}));
    for (int question = 0; question < 2; ++question) {
        ASSERT_TRUE(waitUntil([this] { return model->questions().pendingQuestion().has_value(); }));
        model->questions().resolveQuestion(u"this"_s);
    }
    finishRun();
    EXPECT_EQ(lastMessage().text, repetitionNote);
}

TEST_F(AgentLoopEndingsTest, OneStepGivesOneTurnWithToolsAndThenTheNote)
{
    settings->setMaxSteps(1);
    service.willTurn(Service::calls({toolCall(u"calculate"_s)}));
    sendAndFinish(u"go"_s);
    EXPECT_EQ(service.requests().size(), 1);
    EXPECT_EQ(lastMessage().text, limitNote(1));
    EXPECT_EQ(model->status().statusText(), u"Ready"_s);
    EXPECT_EQ(contextEntries<APIMessage::FunctionResponse>().size(), 1);
}

TEST_F(AgentLoopEndingsTest, TextOfTheLastAllowedStepIsReplacedByTheNote)
{
    settings->setMaxSteps(1);
    service.willTurn(Service::calls({toolCall(u"calculate"_s)}, u"I am nearly there"_s));
    sendAndFinish(u"go"_s);
    EXPECT_EQ(lastMessage().text, limitNote(1));
}

TEST_F(AgentLoopEndingsTest, AnswerInTheVeryLastAllowedTurnGetsNoNote)
{
    settings->setMaxSteps(2);
    service.willTurn(Service::calls({toolCall(u"calculate"_s)}));
    service.willTurn(Service::answer(u"Two."_s));
    sendAndFinish(u"go"_s);
    EXPECT_EQ(lastMessage().text, u"Two."_s);
}

TEST_F(AgentLoopEndingsTest, LoweringTheLimitDuringARunStopsItAtTheNextTurn)
{
    settings->setMaxSteps(10);
    Service::Turn first = Service::calls({toolCall(u"calculate"_s)});
    first.atStart = [this] { settings->setMaxSteps(1); };
    service.willTurn(first);
    sendAndFinish(u"go"_s);
    EXPECT_EQ(service.requests().size(), 1);
    EXPECT_EQ(lastMessage().text, limitNote(1));
}

TEST_F(AgentLoopEndingsTest, UnlimitedStepsKnowNoLimit)
{
    settings->setMaxSteps(1);
    settings->setUnlimitedSteps(true);
    for (int turn = 0; turn < 5; ++turn) {
        const QByteArray arguments = QByteArray(R"({"expression":")") + QByteArray::number(turn) + R"("})";
        service.willTurn(Service::calls({toolCall(u"calculate"_s, arguments.constData())}));
    }
    service.willTurn(Service::answer(u"done"_s));
    sendAndFinish(u"go"_s);
    EXPECT_EQ(lastMessage().text, u"done"_s);
}

TEST_F(AgentLoopEndingsTest, ErrorEndsTheRunAndTheContextKeepsOnlyTheRequest)
{
    service.willTurn(Service::calls({toolCall(u"calculate"_s)}));
    service.willTurn(Service::failure(std::make_exception_ptr(
        AIServiceError(AIServiceError::RateLimited{u"The free allowance resets daily."_s}))));
    sendAndFinish(u"go"_s);
    const QString error =
        u"You reached the free limit for this provider for now. The free allowance resets daily."_s;
    EXPECT_EQ(lastMessage().errorMessage, error);
    EXPECT_EQ(model->status().statusText(), u"Error"_s);
    EXPECT_THAT(announcer.spoken, Contains(u"There was an error. "_s + error));
    EXPECT_EQ(notifications.notified.value(0).second, NotificationPort::Outcome::error);
    EXPECT_EQ(model->context().size(), 1);
}

TEST_F(AgentLoopEndingsTest, StreamedBatchesSurviveAnErrorAndTheRestIsDropped)
{
    Service::Turn turn;
    turn.tokens = {QString(200, u'a'), u"dropped"_s};
    turn.error = std::make_exception_ptr(AIServiceError(AIServiceError::Blocked{}));
    service.willTurn(turn);
    sendAndFinish(u"go"_s);
    EXPECT_EQ(lastMessage().text, QString(200, u'a'));
}

TEST_F(AgentLoopEndingsTest, StalledModelIsEndedAfter120Seconds)
{
    Service::Turn turn;
    turn.tokens = {u"one"_s};
    turn.silence = 1h;
    service.willTurn(turn);
    ASSERT_TRUE(model->send(u"go"_s, {}));
    settle();
    for (int second = 0; second < 120; ++second) {
        clock.advance(1s);
        settle();
    }
    EXPECT_TRUE(model->isBusy());
    clock.advance(1s);
    finishRun();
    EXPECT_EQ(lastMessage().errorMessage,
              u"The model stopped responding. Try again, choose a smaller model, or use a faster "
              "provider."_s);
}

TEST_F(AgentLoopEndingsTest, EveryTokenIsASignOfLife)
{
    Service::Turn turn;
    turn.tokens = {u"one "_s, u"two "_s, u"three"_s};
    turn.pause = 100s;
    turn.result.text = u"one two three"_s;
    service.willTurn(turn);
    ASSERT_TRUE(model->send(u"go"_s, {}));
    settle();
    for (int second = 0; second < 301 && model->isBusy(); ++second) {
        clock.advance(1s);
        settle();
    }
    EXPECT_EQ(lastMessage().text, u"one two three"_s);
    EXPECT_FALSE(lastMessage().errorMessage.has_value());
}

TEST_F(AgentLoopEndingsTest, ACancelThatTheLastTurnDidNotNoticeIsNoticedAtTheEnd)
{
    Service::Turn turn = Service::answer(u"too late"_s);
    turn.atStart = [this] { model->cancel(); };
    service.willTurn(turn);
    sendAndFinish(u"go"_s);
    EXPECT_EQ(model->status().statusText(), u"Cancelled"_s);
    EXPECT_TRUE(notifications.notified.isEmpty());
    EXPECT_TRUE(service.titleRequests().isEmpty());
}

TEST_F(AgentLoopEndingsTest, ACancelDuringRepeatedCallsIsNoticedAtTheirStop)
{
    tool = [this](ToolPermit permit) {
        executed.append(permit.call().name);
        model->cancel();
        return resultOf(u"tool result"_s);
    };
    const AIToolCall call = toolCall(u"calculate"_s);
    service.willTurn(Service::calls({call, call, call}));
    sendAndFinish(u"go"_s);
    EXPECT_EQ(executed.size(), 2);
    EXPECT_EQ(lastStep().text, u"Stopped: the same action repeated without progress."_s);
    EXPECT_EQ(model->status().statusText(), u"Cancelled"_s);
    EXPECT_TRUE(notifications.notified.isEmpty());
    EXPECT_EQ(model->context().size(), 1);
}

TEST_F(AgentLoopEndingsTest, LocalModelMayBeSilentFor240Seconds)
{
    settings->setProviderID(ProviderID::ollama);
    localModel.serverRunning = true;
    localModel.models = {u"scripted"_s};
    Service::Turn warmUp;
    service.willTurn(warmUp);
    settings->setModel(u"scripted"_s);
    model->localModel().refreshLocalModel();
    ASSERT_TRUE(waitUntil([this] { return model->localModel().info().running; }));
    settle();
    Service::Turn turn;
    turn.silence = 1h;
    service.willTurn(turn);
    ASSERT_TRUE(model->send(u"go"_s, {}));
    settle();
    for (int second = 0; second < 240; ++second) {
        clock.advance(1s);
        settle();
    }
    EXPECT_TRUE(model->isBusy());
    clock.advance(1s);
    finishRun();
    EXPECT_TRUE(lastMessage().errorMessage.has_value());
}

TEST_F(AgentLoopEndingsTest, RemainingCallsOfATurnStillRunAfterACancel)
{
    const OneShot<QString> toolEnd;
    tool = [this, toolEnd](ToolPermit permit) {
        executed.append(permit.call().name);
        return textOf(toolEnd);
    };
    service.willTurn(Service::calls({toolCall(u"first"_s), toolCall(u"second"_s)}));
    service.willTurn(Service::answer(u"never said"_s));
    ASSERT_TRUE(model->send(u"go"_s, {}));
    ASSERT_TRUE(waitUntil([this] { return executed.size() == 1; }));
    model->cancel();
    settle();
    EXPECT_EQ(executed.size(), 1);
    OneShot(toolEnd).resume(u"tool result"_s);
    settle();
    EXPECT_EQ(executed, QStringList({u"first"_s, u"second"_s}));
    EXPECT_EQ(model->status().statusText(), u"Cancelled"_s);
    EXPECT_EQ(lastMessage().text, QString());
}

TEST_F(AgentLoopEndingsTest, ACancelledRunThatAsksLateDoesNotTakeTheNextRunsApproval)
{
    const OneShot<QString> toolEnd;
    tool = [this, toolEnd](ToolPermit permit) {
        executed.append(permit.call().name);
        if (executed.size() == 1)
            return textOf(toolEnd);
        const OneShot<QString> atOnce;
        OneShot(atOnce).resume(u"tool result"_s);
        return textOf(atOnce);
    };
    const AIToolCall late = toolCall(u"run_shell_command"_s, R"({"command":"rm -rf late"})");
    const AIToolCall next = toolCall(u"run_shell_command"_s, R"({"command":"rm -rf next"})");
    service.willTurn(Service::calls({toolCall(u"first"_s), late}));
    ASSERT_TRUE(model->send(u"go"_s, {}));
    ASSERT_TRUE(waitUntil([this] { return executed.size() == 1; }));
    model->cancel();
    service.willTurn(Service::calls({next}));
    service.willTurn(Service::answer(u"done"_s));
    ASSERT_TRUE(model->send(u"go on"_s, {}));
    ASSERT_TRUE(waitUntil([this] { return model->gate().pendingToolCall().has_value(); }));
    announcer.spoken.clear();
    OneShot(toolEnd).resume(u"tool result"_s);
    settle();
    const auto asksFor = [this](const char *command) {
        const auto &pending = model->gate().pendingToolCall();
        return pending && pending->summary.contains(QLatin1String(command));
    };
    EXPECT_TRUE(asksFor("rm -rf next"));
    EXPECT_TRUE(announcer.spoken.filter(u"Do you allow it?"_s).isEmpty());
    model->gate().resolvePermission(true, false);
    ASSERT_TRUE(waitUntil([&asksFor] { return asksFor("rm -rf late"); }));
    settle();
    EXPECT_EQ(announcer.spoken.filter(u"Do you allow it?"_s).size(), 1);
    EXPECT_EQ(executed, QStringList({u"first"_s, u"run_shell_command"_s}));
    model->gate().resolvePermission(false, false);
    settle();
    EXPECT_EQ(executed.size(), 2);
}

TEST_F(AgentLoopEndingsTest, ACancelledRunThatAsksLateDoesNotTakeTheNextRunsQuestion)
{
    const OneShot<QString> toolEnd;
    tool = [toolEnd](ToolPermit) { return textOf(toolEnd); };
    service.willTurn(
        Service::calls({toolCall(u"first"_s), toolCall(u"ask_user"_s, R"({"question":"late?"})")}));
    ASSERT_TRUE(model->send(u"go"_s, {}));
    ASSERT_TRUE(waitUntil([this] { return activityTexts().contains(u"Running: use the first tool"_s); }));
    model->cancel();
    service.willTurn(Service::calls({toolCall(u"ask_user"_s, R"({"question":"next?"})")}));
    service.willTurn(Service::answer(u"done"_s));
    ASSERT_TRUE(model->send(u"go on"_s, {}));
    ASSERT_TRUE(waitUntil([this] { return model->questions().pendingQuestion().has_value(); }));
    OneShot(toolEnd).resume(u"tool result"_s);
    settle();
    EXPECT_EQ(model->questions().pendingQuestion()->question, u"next?"_s);
    EXPECT_EQ(activityTexts().filter(u"Asks you: "_s), QStringList{u"Asks you: next?"_s});
    model->questions().resolveQuestion(u"one"_s);
    ASSERT_TRUE(waitUntil([this] { return model->questions().pendingQuestion().has_value(); }));
    EXPECT_EQ(model->questions().pendingQuestion()->question, u"late?"_s);
    model->questions().resolveQuestion(u"two"_s);
    settle();
    EXPECT_EQ(activityTexts().filter(u"You answered: "_s),
              QStringList({u"You answered: one"_s, u"You answered: two"_s}));
}

} // namespace
} // namespace morvane
