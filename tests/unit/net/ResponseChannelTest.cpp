#include "net/ResponseChannel.h"

#include "async/Suspension.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

using Append = ResponseChannel::Append;
using Flow = ResponseChannel::Flow;
using Until = ResponseChannel::Until;
using Kind = TransportError::Kind;

class ResponseChannelTest : public testing::Test {
protected:
    ResponseChannel channel{100};
    std::shared_ptr<ReadyQueue> queue = std::make_shared<ReadyQueue>([] {});

    std::shared_ptr<Suspension> waiter()
    {
        return std::make_shared<Suspension>(queue, std::noop_coroutine());
    }
    static bool wasFired(const std::shared_ptr<Suspension> &suspension) { return !suspension->fire(); }

    /// The lines that are there; nothing if none are and more may come.
    std::optional<qsizetype> takeCount(Flow expectedFlow = Flow::Unchanged)
    {
        LineBatch batch;
        Flow flow = Flow::Unchanged;
        if (!channel.takeLines(batch, flow))
            return std::nullopt;
        EXPECT_EQ(flow, expectedFlow);
        return batch.count();
    }
    template <class Function> std::optional<Kind> failureOf(Function function)
    {
        try {
            function();
        } catch (const TransportError &error) {
            return error.kind();
        }
        return std::nullopt;
    }
};

TEST_F(ResponseChannelTest, WaiterIsWokenByWhatItWaitsForOnly)
{
    channel.readLines();
    const auto line = waiter();
    EXPECT_TRUE(channel.wakeWhen(Until::Lines, line));
    channel.setHead({});
    EXPECT_EQ(channel.append("no end yet"), Append::Taken);
    const auto first = waiter();
    EXPECT_TRUE(channel.wakeWhen(Until::Lines, first));
    EXPECT_EQ(channel.append(" but now\nmore\n"), Append::Taken);
    EXPECT_TRUE(wasFired(first));
    EXPECT_FALSE(channel.wakeWhen(Until::Lines, waiter()));
    EXPECT_EQ(takeCount(), 2);
    EXPECT_EQ(takeCount(), std::nullopt);
}

TEST_F(ResponseChannelTest, EndWakesEveryKindOfWaiter)
{
    for (const Until until : {Until::Head, Until::Lines, Until::End}) {
        ResponseChannel ending(100);
        const auto suspension = waiter();
        EXPECT_TRUE(ending.wakeWhen(until, suspension));
        ending.finish(TransportError(Kind::TimedOut));
        EXPECT_TRUE(wasFired(suspension));
        EXPECT_FALSE(ending.wakeWhen(until, waiter()));
    }
}

TEST_F(ResponseChannelTest, UndecidedBodyPausesAtItsCapacityAndGoesOnWhenItIsRead)
{
    const QByteArray part(64 * 1024, '\n');
    for (qsizetype taken = 0; taken < ResponseChannel::capacity; taken += part.size())
        ASSERT_EQ(channel.append(part), Append::Taken);
    EXPECT_EQ(channel.append(part), Append::Full);
    EXPECT_EQ(channel.readLines(), Flow::Resume);
    EXPECT_EQ(channel.append(part), Append::Taken);
}

TEST_F(ResponseChannelTest, LinesPauseAtTheirCapacityAndGoOnWhenTheyAreTaken)
{
    channel.readLines();
    while (channel.append("some line\n") == Append::Taken) {
    }
    const auto count = takeCount(Flow::Resume);
    ASSERT_TRUE(count);
    EXPECT_LE(*count * 9, ResponseChannel::capacity);
    EXPECT_EQ(channel.append("x\n"), Append::Taken);
    EXPECT_EQ(takeCount(Flow::Unchanged), 1);
}

TEST_F(ResponseChannelTest, LineLongerThanTheCapacityIsNotPaused)
{
    ResponseChannel large(4 * ResponseChannel::capacity);
    large.readLines();
    for (int i = 0; i < 4; ++i)
        ASSERT_EQ(large.append(QByteArray(ResponseChannel::capacity, 'x')), Append::Taken);
    EXPECT_EQ(large.append("x"), Append::Refused);
}

TEST_F(ResponseChannelTest, LinesComeBeforeTheErrorThatEndsThem)
{
    channel.readLines();
    EXPECT_EQ(channel.append("one\ntwo\nthr"), Append::Taken);
    channel.finish(TransportError(Kind::NetworkConnectionLost));
    EXPECT_EQ(takeCount(), 2);
    EXPECT_EQ(failureOf([this] { takeCount(); }), Kind::NetworkConnectionLost);
}

TEST_F(ResponseChannelTest, LastLineNeedsNoEnd)
{
    channel.readLines();
    EXPECT_EQ(channel.append("one\ntwo"), Append::Taken);
    channel.finish(std::nullopt);
    EXPECT_EQ(takeCount(), 2);
    EXPECT_EQ(takeCount(), 0);
}

TEST_F(ResponseChannelTest, BodyThatHadEndedBeforeItWasReadGivesTheSameLines)
{
    EXPECT_EQ(channel.append("one\ntwo"), Append::Taken);
    channel.finish(std::nullopt);
    channel.readLines();
    EXPECT_EQ(takeCount(), 2);
}

TEST_F(ResponseChannelTest, LongLineThatCameBeforeItWasReadIsTooLarge)
{
    EXPECT_EQ(channel.append("one\n" + QByteArray(101, 'x')), Append::Taken);
    channel.finish(std::nullopt);
    channel.readLines();
    EXPECT_EQ(takeCount(), 1);
    EXPECT_EQ(failureOf([this] { takeCount(); }), Kind::TooLarge);
}

TEST_F(ResponseChannelTest, WholeBodyIsRefusedAboveItsLimit)
{
    channel.readWhole(10);
    EXPECT_EQ(channel.append("0123456789"), Append::Taken);
    const auto suspension = waiter();
    EXPECT_TRUE(channel.wakeWhen(Until::End, suspension));
    EXPECT_EQ(channel.append("x"), Append::Refused);
    EXPECT_TRUE(wasFired(suspension));
    EXPECT_FALSE(channel.hasEnded());
    channel.finish(TransportError(Kind::Other));
    EXPECT_TRUE(channel.hasEnded());
    EXPECT_EQ(failureOf([this] { channel.takeWhole(); }), Kind::TooLarge);
}

TEST_F(ResponseChannelTest, HeadIsThereEvenIfTheBodyFails)
{
    channel.setHead({404, {}, {}});
    channel.finish(TransportError(Kind::NetworkConnectionLost));
    EXPECT_EQ(channel.takeHead().status, 404);
}

TEST_F(ResponseChannelTest, EndBeforeTheHeadIsThrown)
{
    channel.finish(TransportError(Kind::CannotConnectToHost));
    EXPECT_EQ(failureOf([this] { channel.takeHead(); }), Kind::CannotConnectToHost);
}

} // namespace
} // namespace morvane
