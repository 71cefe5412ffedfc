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
    std::optional<qsizetype> takeCount(Flow expectedFlow = Flow::unchanged)
    {
        LineBatch batch;
        Flow flow = Flow::unchanged;
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
    EXPECT_TRUE(channel.wakeWhen(Until::lines, line));
    channel.setHead({});
    EXPECT_EQ(channel.append("no end yet"), Append::taken);
    const auto first = waiter();
    EXPECT_TRUE(channel.wakeWhen(Until::lines, first));
    EXPECT_EQ(channel.append(" but now\nmore\n"), Append::taken);
    EXPECT_TRUE(wasFired(first));
    EXPECT_FALSE(channel.wakeWhen(Until::lines, waiter()));
    EXPECT_EQ(takeCount(), 2);
    EXPECT_EQ(takeCount(), std::nullopt);
}

TEST_F(ResponseChannelTest, EndWakesEveryKindOfWaiter)
{
    for (const Until until : {Until::head, Until::lines, Until::end}) {
        ResponseChannel ending(100);
        const auto suspension = waiter();
        EXPECT_TRUE(ending.wakeWhen(until, suspension));
        ending.finish(TransportError(Kind::timedOut));
        EXPECT_TRUE(wasFired(suspension));
        EXPECT_FALSE(ending.wakeWhen(until, waiter()));
    }
}

TEST_F(ResponseChannelTest, UndecidedBodyPausesAtItsCapacityAndGoesOnWhenItIsRead)
{
    const QByteArray part(64 * 1024, '\n');
    for (qsizetype taken = 0; taken < ResponseChannel::capacity; taken += part.size())
        ASSERT_EQ(channel.append(part), Append::taken);
    EXPECT_EQ(channel.append(part), Append::full);
    EXPECT_EQ(channel.readLines(), Flow::resume);
    EXPECT_EQ(channel.append(part), Append::taken);
}

TEST_F(ResponseChannelTest, LinesPauseAtTheirCapacityAndGoOnWhenTheyAreTaken)
{
    channel.readLines();
    while (channel.append("some line\n") == Append::taken) {
    }
    const auto count = takeCount(Flow::resume);
    ASSERT_TRUE(count);
    EXPECT_LE(*count * 9, ResponseChannel::capacity);
    EXPECT_EQ(channel.append("x\n"), Append::taken);
    EXPECT_EQ(takeCount(Flow::unchanged), 1);
}

TEST_F(ResponseChannelTest, LineLongerThanTheCapacityIsNotPaused)
{
    ResponseChannel large(4 * ResponseChannel::capacity);
    large.readLines();
    for (int i = 0; i < 4; ++i)
        ASSERT_EQ(large.append(QByteArray(ResponseChannel::capacity, 'x')), Append::taken);
    EXPECT_EQ(large.append("x"), Append::refused);
}

TEST_F(ResponseChannelTest, LinesComeBeforeTheErrorThatEndsThem)
{
    channel.readLines();
    EXPECT_EQ(channel.append("one\ntwo\nthr"), Append::taken);
    channel.finish(TransportError(Kind::networkConnectionLost));
    EXPECT_EQ(takeCount(), 2);
    EXPECT_EQ(failureOf([this] { takeCount(); }), Kind::networkConnectionLost);
}

TEST_F(ResponseChannelTest, LastLineNeedsNoEnd)
{
    channel.readLines();
    EXPECT_EQ(channel.append("one\ntwo"), Append::taken);
    channel.finish(std::nullopt);
    EXPECT_EQ(takeCount(), 2);
    EXPECT_EQ(takeCount(), 0);
}

TEST_F(ResponseChannelTest, BodyThatHadEndedBeforeItWasReadGivesTheSameLines)
{
    EXPECT_EQ(channel.append("one\ntwo"), Append::taken);
    channel.finish(std::nullopt);
    channel.readLines();
    EXPECT_EQ(takeCount(), 2);
}

TEST_F(ResponseChannelTest, LongLineThatCameBeforeItWasReadIsTooLarge)
{
    EXPECT_EQ(channel.append("one\n" + QByteArray(101, 'x')), Append::taken);
    channel.finish(std::nullopt);
    channel.readLines();
    EXPECT_EQ(takeCount(), 1);
    EXPECT_EQ(failureOf([this] { takeCount(); }), Kind::tooLarge);
}

TEST_F(ResponseChannelTest, WholeBodyIsRefusedAboveItsLimit)
{
    channel.readWhole(10);
    EXPECT_EQ(channel.append("0123456789"), Append::taken);
    const auto suspension = waiter();
    EXPECT_TRUE(channel.wakeWhen(Until::end, suspension));
    EXPECT_EQ(channel.append("x"), Append::refused);
    EXPECT_TRUE(wasFired(suspension));
    EXPECT_FALSE(channel.hasEnded());
    channel.finish(TransportError(Kind::other));
    EXPECT_TRUE(channel.hasEnded());
    EXPECT_EQ(failureOf([this] { channel.takeWhole(); }), Kind::tooLarge);
}

TEST_F(ResponseChannelTest, HeadIsThereEvenIfTheBodyFails)
{
    channel.setHead({404, {}, {}});
    channel.finish(TransportError(Kind::networkConnectionLost));
    EXPECT_EQ(channel.takeHead().status, 404);
}

TEST_F(ResponseChannelTest, EndBeforeTheHeadIsThrown)
{
    channel.finish(TransportError(Kind::cannotConnectToHost));
    EXPECT_EQ(failureOf([this] { channel.takeHead(); }), Kind::cannotConnectToHost);
}

} // namespace
} // namespace morvane
