#include "TurnFixture.h"
#include "providers/DiscardBody.h"
#include "support/FakeClock.h"
#include "support/LogRecorder.h"
#include "support/RawHttpServer.h"
#include "support/ScriptedModel.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using namespace std::chrono_literals;
using Delays = std::vector<Clock::Duration>;

/// Real servers, but a clock that moves only here: each wait between two attempts is recorded and granted.
class RetryTest : public testing::Test {
protected:
    FakeClock clock;
    Scheduler scheduler{clock};
    HttpClient client;
    ScriptedModel model;
    HttpAIService service{client, endpointsAt(QString::fromStdString(model.baseURL()))};
    Delays delays;

    RunningTurn start(ProviderID provider = ProviderID::openai)
    {
        return RunningTurn(scheduler, service, contextSaying("Hi"), configurationFor(provider));
    }

    /// Whether the turn waits for its next attempt (and not for the rest of a body).
    bool isWaiting()
    {
        return clock.pendingTimers() == 1 && clock.requestedDelays().back() != maximumDiscardTime;
    }

    TurnOutcome finish(RunningTurn running)
    {
        while (!running.done()) {
            if (!waitUntil([&] { return running.done() || isWaiting(); })) {
                ADD_FAILURE() << "neither an end nor a wait";
                break;
            }
            if (!running.done()) {
                delays.push_back(clock.requestedDelays().back());
                clock.advance(delays.back());
                settle();
            }
        }
        return running.outcome();
    }

    TurnOutcome turn(std::vector<ScriptedTurn> answers, ProviderID provider = ProviderID::openai)
    {
        for (ScriptedTurn &answer : answers)
            model.appendTurn(std::move(answer));
        return finish(start(provider));
    }

    static ScriptedTurn busy(const std::string &retryAfter)
    {
        return ScriptedTurn::failing(503, "busy", {{"Retry-After", retryAfter}});
    }

    /// The wait after one busy answer with this header.
    Clock::Duration delayAfter(const std::string &retryAfter)
    {
        delays.clear();
        EXPECT_EQ(turn({busy(retryAfter), ScriptedTurn::saying({"ok"})}).text(), "ok") << retryAfter;
        return delays.empty() ? Clock::Duration::zero() : delays.front();
    }
};

TEST_F(RetryTest, TwoBusyAnswersAreRetriedAfterTwoAndFourSeconds)
{
    const LogRecorder log;
    const TurnOutcome outcome =
        turn({ScriptedTurn::failing(503), ScriptedTurn::failing(503), ScriptedTurn::saying({"at ", "last"})});
    EXPECT_EQ(log.lines(), QStringList({u"morvane.providers: status 503 at attempt 1 ; again in 2000 ms"_s,
                                        u"morvane.providers: status 503 at attempt 2 ; again in 4000 ms"_s}));
    EXPECT_EQ(outcome.pieces, QStringList({"at ", "last"}));
    EXPECT_EQ(delays, Delays({2s, 4s}));
    ASSERT_EQ(model.requests().size(), 3u);
    EXPECT_EQ(model.requests()[0].body, model.requests()[2].body);
    EXPECT_EQ(model.requests()[0].headers, model.requests()[2].headers);
}

TEST_F(RetryTest, ThirdRateLimitIsRaisedWithTheProvidersText)
{
    const LogRecorder log;
    const std::vector<ScriptedTurn> limits(3, ScriptedTurn::failing(429, "slow down"));
    const auto resets = [&](ProviderID provider) {
        return turn(limits, provider).reason<AIServiceError::RateLimited>().resets;
    };
    EXPECT_EQ(resets(ProviderID::gemini), "The free allowance resets at midnight Pacific Time.");
    EXPECT_EQ(model.requests().size(), 3u);
    EXPECT_EQ(log.lines().last(), "morvane.providers: a request was refused: status 429");
    EXPECT_EQ(resets(ProviderID::groq), "The free allowance resets at midnight UTC.");
    for (ProviderID provider :
         {ProviderID::openrouter, ProviderID::ollama, ProviderID::openai, ProviderID::zen})
        EXPECT_EQ(resets(provider), "The free allowance resets daily.");
}

TEST_F(RetryTest, ThirdServerErrorIsRaisedWithItsBody)
{
    const TurnOutcome outcome = turn({ScriptedTurn::failing(500, "one"), ScriptedTurn::failing(500, "two"),
                                      ScriptedTurn::failing(500, "three")});
    EXPECT_EQ(outcome.reason<AIServiceError::Http>().status, 500);
    EXPECT_EQ(outcome.reason<AIServiceError::Http>().body, "three\n");
    EXPECT_EQ(model.requests().size(), 3u);
}

TEST_F(RetryTest, OtherStatusesAreNotRetried)
{
    for (int status : {400, 401, 404, 418}) {
        const std::size_t before = model.requests().size();
        EXPECT_EQ(turn({ScriptedTurn::failing(status)}).reason<AIServiceError::Http>().status, status);
        EXPECT_EQ(model.requests().size(), before + 1);
    }
    EXPECT_TRUE(delays.empty());
}

TEST_F(RetryTest, EveryServerErrorAndTheRateLimitAreRetried)
{
    for (int status : {429, 500, 502, 599})
        EXPECT_EQ(turn({ScriptedTurn::failing(status), ScriptedTurn::saying({"ok"})}).text(), "ok");
}

TEST_F(RetryTest, RetryAfterZeroTriesAgainAtOnce)
{
    EXPECT_EQ(turn({busy("0"), ScriptedTurn::saying({"ok"})}).text(), "ok");
    EXPECT_TRUE(delays.empty());
}

TEST_F(RetryTest, RetryAfterNamesTheSecondsUpToTen)
{
    EXPECT_EQ(delayAfter("1.5"), 1500ms);
    EXPECT_EQ(delayAfter("3600"), 10s);
}

TEST_F(RetryTest, RetryAfterThatIsNoNumberOfSecondsCountsAsAbsent)
{
    for (const char *text : {"Wed, 21 Oct 2026 07:28:00 GMT", "-1", "nan", "inf", "soon"})
        EXPECT_EQ(delayAfter(text), 2s) << text;
}

TEST_F(RetryTest, CancellingEndsTheWaitAtOnce)
{
    model.appendTurn(ScriptedTurn::failing(503));
    RunningTurn running = start();
    ASSERT_TRUE(waitUntil([&] { return isWaiting(); }));
    running.cancel();
    EXPECT_TRUE(running.wait().cancelled);
    EXPECT_EQ(model.requests().size(), 1u);
}

TEST_F(RetryTest, EndlessBodyOfABusyAnswerIsGivenUp)
{
    ScriptedTurn endless;
    endless.status = 503;
    endless.steps = {step::Endless{"word "}};
    EXPECT_EQ(turn({endless, ScriptedTurn::saying({"ok"})}).text(), "ok");
    EXPECT_TRUE(model.waitForAbandoned(1));
}

TEST_F(RetryTest, SilentBodyOfABusyAnswerIsGivenUp)
{
    ScriptedTurn silent;
    silent.status = 503;
    silent.steps = {step::Text{"a"}, step::Stall{}};
    model.appendTurn(silent);
    model.appendTurn(ScriptedTurn::saying({"ok"}));
    RunningTurn running = start();
    ASSERT_TRUE(waitUntil([&] { return clock.pendingTimers() == 1; }));
    EXPECT_EQ(clock.requestedDelays().back(), maximumDiscardTime);
    clock.advance(maximumDiscardTime);
    EXPECT_EQ(finish(std::move(running)).text(), "ok");
    EXPECT_TRUE(model.waitForAbandoned(1));
}

TEST_F(RetryTest, BodyOfABusyAnswerMayBreakOff)
{
    ScriptedTurn broken;
    broken.status = 503;
    broken.steps = {step::Raw{"half"}, step::Reset{}};
    EXPECT_EQ(turn({broken, ScriptedTurn::saying({"ok"})}).text(), "ok");
}

TEST_F(RetryTest, TransportFailureIsNotRetried)
{
    RawHttpServer server([](RawHttpConnection &connection) {
        connection.readRequest();
        connection.reset();
    });
    HttpAIService dropped(client, endpointsAt(u"http://127.0.0.1:%1"_s.arg(server.port())));
    const TurnOutcome outcome =
        finish(RunningTurn(scheduler, dropped, contextSaying("Hi"), configurationFor(ProviderID::openai)));
    EXPECT_EQ(outcome.transportError, TransportError::Kind::networkConnectionLost);
    EXPECT_TRUE(delays.empty());
    EXPECT_EQ(server.requests().size(), 1);
}

} // namespace
} // namespace morvane
