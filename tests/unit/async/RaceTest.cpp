#include "async/Race.h"
#include "async/CheckCancelled.h"
#include "async/OffMain.h"
#include "async/Sleep.h"
#include "support/FakeClock.h"
#include "support/RunTask.h"

#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>

using namespace std::chrono_literals;

namespace morvane {
namespace {

class RaceTest : public testing::Test {
protected:
    FakeClock clock;
    Scheduler scheduler{clock};

    static Task<int> after(Clock::Duration duration, int value)
    {
        co_await sleepFor(duration);
        co_return value;
    }
    static Task<int> atOnce(int value) { co_return value; }
    static Task<int> failAfter(Clock::Duration duration)
    {
        co_await sleepFor(duration);
        throw std::runtime_error("broken");
    }
    /// Takes its cancellation for a request to tidy up, which waits for something.
    static Task<int> tidyUp(OneShot<int> tidied, bool *ended)
    {
        try {
            co_await sleepFor(1h);
        } catch (const Cancelled &) {
        }
        const int value = co_await tidied.wait();
        *ended = true;
        co_return value;
    }
    static Task<int> holding(std::shared_ptr<int> value, Clock::Duration duration)
    {
        co_await sleepFor(duration);
        co_return *value;
    }
    static Task<> voidAfter(Clock::Duration duration) { co_await sleepFor(duration); }

    void advance(Clock::Duration duration)
    {
        settle();
        clock.advance(duration);
        settle();
    }
};

TEST_F(RaceTest, LoserIsAwaitedBeforeTheResultGoesOn)
{
    OneShot<int> tidied;
    bool ended = false;
    auto handle = scheduler.spawn(race(after(1s, 1), tidyUp(tidied, &ended)));
    advance(1s);
    EXPECT_FALSE(handle.done());
    EXPECT_FALSE(ended);
    tidied.resume(2);
    settle();
    EXPECT_TRUE(ended);
    ASSERT_TRUE(handle.done());
    EXPECT_EQ(handle.result(), 1);
}

TEST_F(RaceTest, LoserIsAwaitedBeforeAnExceptionGoesOn)
{
    OneShot<int> tidied;
    bool ended = false;
    auto handle = scheduler.spawn(race(tidyUp(tidied, &ended), failAfter(1s)));
    advance(1s);
    EXPECT_FALSE(handle.done());
    tidied.resume(2);
    settle();
    ASSERT_TRUE(handle.done());
    EXPECT_THROW(handle.result(), std::runtime_error);
}

TEST_F(RaceTest, FailureOfTheLoserIsNotSeen)
{
    auto handle = scheduler.spawn(race(failAfter(2s), after(1s, 1)));
    advance(1s);
    ASSERT_TRUE(handle.done());
    EXPECT_EQ(handle.result(), 1);
}

TEST_F(RaceTest, FirstOfTwoThatAreReadyWins)
{
    EXPECT_EQ(runTask(scheduler, race(atOnce(1), atOnce(2))), 1);
    EXPECT_EQ(runTask(scheduler, race(after(1s, 1), atOnce(2))), 2);
}

TEST_F(RaceTest, TasksWithoutAResult)
{
    auto handle = scheduler.spawn(race(voidAfter(1s), voidAfter(2s)));
    advance(1s);
    ASSERT_TRUE(handle.done());
    EXPECT_NO_THROW(handle.result());
    EXPECT_EQ(clock.pendingTimers(), 0u);
}

TEST_F(RaceTest, NestedRacesAreCancelledThroughAllLevels)
{
    auto handle = scheduler.spawn(race(race(after(3s, 3), after(4s, 4)), race(after(5s, 5), after(6s, 6))));
    settle();
    EXPECT_EQ(clock.pendingTimers(), 4u);
    handle.cancel();
    settle();
    ASSERT_TRUE(handle.done());
    EXPECT_THROW(handle.result(), Cancelled);
    EXPECT_EQ(clock.pendingTimers(), 0u);
}

TEST_F(RaceTest, InnerRaceDecidesTheOuterOne)
{
    auto handle = scheduler.spawn(race(after(9s, 9), race(after(3s, 3), after(4s, 4))));
    advance(3s);
    ASSERT_TRUE(handle.done());
    EXPECT_EQ(handle.result(), 3);
    EXPECT_EQ(clock.pendingTimers(), 0u);
}

TEST_F(RaceTest, CancelledBeforeItBegins)
{
    auto handle = scheduler.spawn(race(after(1s, 1), after(2s, 2)));
    handle.cancel();
    settle();
    ASSERT_TRUE(handle.done());
    EXPECT_THROW(handle.result(), Cancelled);
}

TEST_F(RaceTest, LosersCancellationDoesNotReachTheAwaitingTask)
{
    const auto twice = []() -> Task<int> {
        const int first = co_await race(after(1s, 1), after(2s, 2));
        co_await checkCancelled();
        const int second = co_await race(after(1s, 10), after(2s, 20));
        co_return first + second;
    };
    auto handle = scheduler.spawn(twice());
    advance(1s);
    advance(1s);
    ASSERT_TRUE(handle.done());
    EXPECT_EQ(handle.result(), 11);
}

TEST_F(RaceTest, UncancellableWorkOfTheLoserIsWaitedFor)
{
    OneShot<bool> begun;
    OneShot<int> release;
    std::atomic<bool> finished = false;
    const auto work = [](OneShot<bool> started, std::atomic<bool> *flag) -> Task<int> {
        co_return co_await runOffMain([started, flag]() mutable {
            started.resume(true);
            *flag = true;
            return 5;
        });
    };
    EXPECT_EQ(runTask(scheduler, race(atOnce(1), work(begun, &finished))), 1);
    EXPECT_TRUE(finished);
}

TEST_F(RaceTest, DroppedRaceDropsBothTasks)
{
    auto value = std::make_shared<int>(1);
    {
        Scheduler shortLived(clock);
        shortLived.spawn(race(holding(value, 1s), holding(value, 2s)));
        settle();
        EXPECT_EQ(value.use_count(), 3);
    }
    EXPECT_EQ(value.use_count(), 1);
    EXPECT_EQ(clock.pendingTimers(), 0u);
}

} // namespace
} // namespace morvane
