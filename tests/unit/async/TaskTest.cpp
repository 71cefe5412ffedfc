#include "async/CheckCancelled.h"
#include "async/OffMain.h"
#include "async/Race.h"
#include "async/Sleep.h"
#include "support/FakeClock.h"
#include "support/RunTask.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>

using namespace std::chrono_literals;

namespace morvane {
namespace {

class TaskTest : public testing::Test {
protected:
    FakeClock clock;
    Scheduler scheduler{clock};
};

Task<int> number(int value)
{
    co_return value;
}

Task<int> sum(int count)
{
    int total = 0;
    for (int i = 0; i < count; ++i)
        total += co_await number(1);
    co_return total;
}

Task<int> failing()
{
    co_await checkCancelled();
    throw std::runtime_error("broken");
}

Task<int> sleeping(Clock::Duration duration, int value)
{
    co_await sleepFor(duration);
    co_return value;
}

TEST_F(TaskTest, GivesTheResultOfAwaitedChildren)
{
    EXPECT_EQ(runTask(scheduler, sum(100000)), 100000);
}

TEST_F(TaskTest, ExceptionsTravelToTheAwaiter)
{
    EXPECT_THROW(runTask(scheduler, failing()), std::runtime_error);
}

TEST_F(TaskTest, SpawnedTaskStartsOnTheNextTurn)
{
    auto handle = scheduler.spawn(number(3));
    EXPECT_FALSE(handle.done());
    settle();
    ASSERT_TRUE(handle.done());
    EXPECT_EQ(handle.result(), 3);
}

TEST_F(TaskTest, SleepEndsWhenTheClockSaysSo)
{
    auto handle = scheduler.spawn(sleeping(2s, 7));
    settle();
    clock.advance(1999ms);
    settle();
    EXPECT_FALSE(handle.done());
    clock.advance(1ms);
    settle();
    ASSERT_TRUE(handle.done());
    EXPECT_EQ(handle.result(), 7);
}

TEST_F(TaskTest, CancellationEndsASleepAtOnce)
{
    auto handle = scheduler.spawn(sleeping(1h, 7));
    settle();
    handle.cancel();
    settle();
    ASSERT_TRUE(handle.done());
    EXPECT_THROW(handle.result(), Cancelled);
    EXPECT_EQ(clock.pendingTimers(), 0u);
}

TEST_F(TaskTest, RaceGivesTheFirstAndEndsTheOther)
{
    auto handle = scheduler.spawn(race(sleeping(5s, 5), sleeping(1s, 1)));
    settle();
    clock.advance(1s);
    settle();
    ASSERT_TRUE(handle.done());
    EXPECT_EQ(handle.result(), 1);
    EXPECT_EQ(clock.pendingTimers(), 0u);
}

TEST_F(TaskTest, CancellingARaceCancelsBoth)
{
    auto handle = scheduler.spawn(race(sleeping(5s, 5), sleeping(1s, 1)));
    settle();
    handle.cancel();
    settle();
    ASSERT_TRUE(handle.done());
    EXPECT_THROW(handle.result(), Cancelled);
}

TEST_F(TaskTest, WorkOffMainComesBackToTheMainThread)
{
    const auto main = std::this_thread::get_id();
    const auto worker = runTask(scheduler, runOffMain([] { return std::this_thread::get_id(); }));
    EXPECT_NE(worker, main);
    EXPECT_THROW(runTask(scheduler, runOffMain([]() -> int { throw std::runtime_error("x"); })),
                 std::runtime_error);
}

TEST_F(TaskTest, ShutdownEndsWhatSleeps)
{
    auto handle = scheduler.spawn(sleeping(1h, 7));
    settle();
    scheduler.shutdown(5s);
    ASSERT_TRUE(handle.done());
    EXPECT_THROW(handle.result(), Cancelled);
}

} // namespace
} // namespace morvane
