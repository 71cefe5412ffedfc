#include "support/AppFixture.h"

#include "async/OneShot.h"
#include "providers/AIServiceError.h"

using namespace std::chrono_literals;
using testing::Contains;

namespace morvane {
namespace {

using Service = FakeAIService;

const QString repetitionNote = QStringLiteral(
    "I noticed I was repeating the same action without progress, so I stopped to avoid going in circles. The "
    "obstacle did not respond to that approach — tell me what you would like me to try instead.");

QString limitNote(int steps)
{
    return QStringLiteral(
               "I reached the limit of %1 steps while working on this and stopped to avoid running "
               "forever. Ask me to continue and I'll pick up where I left off — or raise the limit "
               "in Settings under Behaviour.")
        .arg(steps);
}

using AgentLoopEndingsTest = AppFixture;

Task<QString> textOf(OneShot<QString> text)
{
    co_return co_await text.wait();
}

TEST_F(AgentLoopEndingsTest, ThirdIdenticalCallOfOneTurnIsNotRun)
{
    const AIToolCall call = toolCall(QStringLiteral("calculate"), R"({"expression":"1"})");
    service.willTurn(Service::calls({call, call, call}));
    sendAndFinish(QStringLiteral("go"));
    EXPECT_EQ(executed.size(), 2);
    EXPECT_EQ(contextEntries<APIMessage::FunctionCall>().size(), 3);
    EXPECT_EQ(contextEntries<APIMessage::FunctionResponse>().size(), 2);
    EXPECT_EQ(lastMessage().text, repetitionNote);
    EXPECT_EQ(lastStep().text, QStringLiteral("Stopped: the same action repeated without progress."));
    EXPECT_EQ(lastStep().kind, ActivityStep::Kind::error);
    EXPECT_EQ(model->status().statusText(), QStringLiteral("Ready"));
    EXPECT_EQ(service.requests().size(), 1);
}

TEST_F(AgentLoopEndingsTest, RepetitionIsCountedAcrossTurns)
{
    const AIToolCall call = toolCall(QStringLiteral("calculate"), R"({"expression":"1"})");
    for (int turn = 0; turn < 3; ++turn)
        service.willTurn(Service::calls({call}));
    sendAndFinish(QStringLiteral("go"));
    EXPECT_EQ(executed.size(), 2);
    EXPECT_EQ(lastMessage().text, repetitionNote);
}

TEST_F(AgentLoopEndingsTest, ADifferentCallBetweenLikeOnesResetsTheCount)
{
    const AIToolCall one = toolCall(QStringLiteral("calculate"), R"({"expression":"1"})");
    const AIToolCall other = toolCall(QStringLiteral("calculate"), R"({"expression":"2"})");
    service.willTurn(Service::calls({one, one, other, one, one}));
    service.willTurn(Service::answer(QStringLiteral("fine")));
    sendAndFinish(QStringLiteral("go"));
    EXPECT_EQ(executed.size(), 5);
    EXPECT_EQ(lastMessage().text, QStringLiteral("fine"));
}

TEST_F(AgentLoopEndingsTest, AnotherOrderOfKeysIsAnotherCall)
{
    const AIToolCall one = toolCall(QStringLiteral("write"), R"({"a":1,"b":2})");
    const AIToolCall other = toolCall(QStringLiteral("write"), R"({"b":2,"a":1})");
    service.willTurn(Service::calls({one, one, other, one}));
    service.willTurn(Service::answer(QStringLiteral("fine")));
    sendAndFinish(QStringLiteral("go"));
    EXPECT_EQ(executed.size(), 4);
}

TEST_F(AgentLoopEndingsTest, RepetitionCountsQuestionsTooBeforeTheyAreAsked)
{
    const AIToolCall call = toolCall(QStringLiteral("ask_user"), R"({"question":"Which?"})");
    service.willTurn(Service::calls({call, call, call}));
    ASSERT_TRUE(model->send(QStringLiteral("go"), {}));
    for (int question = 0; question < 2; ++question) {
        ASSERT_TRUE(waitUntil([this] { return model->questions().pendingQuestion().has_value(); }));
        model->questions().resolveQuestion(QStringLiteral("this"));
    }
    finishRun();
    EXPECT_EQ(lastMessage().text, repetitionNote);
}

TEST_F(AgentLoopEndingsTest, OneStepGivesOneTurnWithToolsAndThenTheNote)
{
    settings->setMaxSteps(1);
    service.willTurn(Service::calls({toolCall(QStringLiteral("calculate"))}));
    sendAndFinish(QStringLiteral("go"));
    EXPECT_EQ(service.requests().size(), 1);
    EXPECT_EQ(lastMessage().text, limitNote(1));
    EXPECT_EQ(model->status().statusText(), QStringLiteral("Ready"));
    EXPECT_EQ(contextEntries<APIMessage::FunctionResponse>().size(), 1);
}

TEST_F(AgentLoopEndingsTest, TextOfTheLastAllowedStepIsReplacedByTheNote)
{
    settings->setMaxSteps(1);
    service.willTurn(
        Service::calls({toolCall(QStringLiteral("calculate"))}, QStringLiteral("I am nearly there")));
    sendAndFinish(QStringLiteral("go"));
    EXPECT_EQ(lastMessage().text, limitNote(1));
}

TEST_F(AgentLoopEndingsTest, AnswerInTheVeryLastAllowedTurnGetsNoNote)
{
    settings->setMaxSteps(2);
    service.willTurn(Service::calls({toolCall(QStringLiteral("calculate"))}));
    service.willTurn(Service::answer(QStringLiteral("Two.")));
    sendAndFinish(QStringLiteral("go"));
    EXPECT_EQ(lastMessage().text, QStringLiteral("Two."));
}

TEST_F(AgentLoopEndingsTest, LoweringTheLimitDuringARunStopsItAtTheNextTurn)
{
    settings->setMaxSteps(10);
    Service::Turn first = Service::calls({toolCall(QStringLiteral("calculate"))});
    first.atStart = [this] { settings->setMaxSteps(1); };
    service.willTurn(first);
    sendAndFinish(QStringLiteral("go"));
    EXPECT_EQ(service.requests().size(), 1);
    EXPECT_EQ(lastMessage().text, limitNote(1));
}

TEST_F(AgentLoopEndingsTest, UnlimitedStepsKnowNoLimit)
{
    settings->setMaxSteps(1);
    settings->setUnlimitedSteps(true);
    for (int turn = 0; turn < 5; ++turn) {
        const QByteArray arguments = QByteArray(R"({"expression":")") + QByteArray::number(turn) + R"("})";
        service.willTurn(Service::calls({toolCall(QStringLiteral("calculate"), arguments.constData())}));
    }
    service.willTurn(Service::answer(QStringLiteral("done")));
    sendAndFinish(QStringLiteral("go"));
    EXPECT_EQ(lastMessage().text, QStringLiteral("done"));
}

TEST_F(AgentLoopEndingsTest, ErrorEndsTheRunAndTheContextKeepsOnlyTheRequest)
{
    service.willTurn(Service::calls({toolCall(QStringLiteral("calculate"))}));
    service.willTurn(Service::failure(std::make_exception_ptr(
        AIServiceError(AIServiceError::RateLimited{QStringLiteral("The free allowance resets daily.")}))));
    sendAndFinish(QStringLiteral("go"));
    const QString error = QStringLiteral(
        "You reached the free limit for this provider for now. The free allowance resets daily.");
    EXPECT_EQ(lastMessage().errorMessage, error);
    EXPECT_EQ(model->status().statusText(), QStringLiteral("Error"));
    EXPECT_THAT(announcer.spoken, Contains(QStringLiteral("There was an error. ") + error));
    EXPECT_EQ(notifications.notified.value(0).second, NotificationPort::Outcome::error);
    EXPECT_EQ(model->context().size(), 1);
}

TEST_F(AgentLoopEndingsTest, StreamedBatchesSurviveAnErrorAndTheRestIsDropped)
{
    Service::Turn turn;
    turn.tokens = {QString(200, QLatin1Char('a')), QStringLiteral("dropped")};
    turn.error = std::make_exception_ptr(AIServiceError(AIServiceError::Blocked{}));
    service.willTurn(turn);
    sendAndFinish(QStringLiteral("go"));
    EXPECT_EQ(lastMessage().text, QString(200, QLatin1Char('a')));
}

TEST_F(AgentLoopEndingsTest, StalledModelIsEndedAfter120Seconds)
{
    Service::Turn turn;
    turn.tokens = {QStringLiteral("one")};
    turn.silence = 1h;
    service.willTurn(turn);
    ASSERT_TRUE(model->send(QStringLiteral("go"), {}));
    settle();
    for (int second = 0; second < 120; ++second) {
        clock.advance(1s);
        settle();
    }
    EXPECT_TRUE(model->isBusy());
    clock.advance(1s);
    finishRun();
    EXPECT_EQ(
        lastMessage().errorMessage,
        QStringLiteral("The model stopped responding. Try again, choose a smaller model, or use a faster "
                       "provider."));
}

TEST_F(AgentLoopEndingsTest, LocalModelMayBeSilentFor240Seconds)
{
    settings->setProviderID(ProviderID::ollama);
    localModel.serverRunning = true;
    localModel.models = {QStringLiteral("scripted")};
    Service::Turn warmUp;
    service.willTurn(warmUp);
    settings->setModel(QStringLiteral("scripted"));
    model->localModel().refreshLocalModel();
    ASSERT_TRUE(waitUntil([this] { return model->localModel().info().running; }));
    settle();
    Service::Turn turn;
    turn.silence = 1h;
    service.willTurn(turn);
    ASSERT_TRUE(model->send(QStringLiteral("go"), {}));
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
    services->executeTool = [this, toolEnd](ToolPermit permit) {
        executed.append(permit.call().name);
        return textOf(toolEnd);
    };
    service.willTurn(Service::calls({toolCall(QStringLiteral("first")), toolCall(QStringLiteral("second"))}));
    service.willTurn(Service::answer(QStringLiteral("never said")));
    ASSERT_TRUE(model->send(QStringLiteral("go"), {}));
    ASSERT_TRUE(waitUntil([this] { return executed.size() == 1; }));
    model->cancel();
    settle();
    EXPECT_EQ(executed.size(), 1);
    OneShot(toolEnd).resume(QStringLiteral("tool result"));
    settle();
    EXPECT_EQ(executed, QStringList({QStringLiteral("first"), QStringLiteral("second")}));
    EXPECT_EQ(model->status().statusText(), QStringLiteral("Cancelled"));
    EXPECT_EQ(lastMessage().text, QString());
}

} // namespace
} // namespace morvane
