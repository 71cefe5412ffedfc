#include "async/Cancellation.h"
#include "async/CheckCancelled.h"
#include "async/OffMain.h"
#include "async/Race.h"
#include "async/Sleep.h"
#include "support/FakeClock.h"
#include "support/RunTask.h"

#include <gtest/gtest.h>
#include <optional>

using namespace std::chrono_literals;

namespace morvane {
namespace {

class CancellationTest : public testing::Test {
protected:
    FakeClock clock;
    Scheduler scheduler{clock};

    /// Passes one suspension after the other and counts them.
    static Task<> stepping(int *steps)
    {
        while (true) {
            co_await sleepFor(1s);
            ++*steps;
        }
    }
    static Task<> nested(int *steps, int depth)
    {
        if (depth == 0)
            co_await stepping(steps);
        else
            co_await nested(steps, depth - 1);
    }
    static Task<int> swallowing(int *caught)
    {
        for (int i = 0; i < 3; ++i) {
            try {
                co_await sleepFor(1h);
            } catch (const Cancelled &) {
                ++*caught;
            }
        }
        co_return 1;
    }
    static Task<> checking(OneShot<int> first, int *reached)
    {
        co_await first.wait();
        *reached = 1;
        co_await checkCancelled();
        *reached = 2;
    }
};

TEST_F(CancellationTest, IsSeenAtTheNextSuspensionOfTheInnermostChild)
{
    for (int steps = 0; steps < 5; ++steps) {
        int done = 0;
        auto handle = scheduler.spawn(nested(&done, 10));
        settle();
        for (int i = 0; i < steps; ++i) {
            clock.advance(1s);
            settle();
        }
        handle.cancel();
        settle();
        ASSERT_TRUE(handle.done());
        EXPECT_THROW(handle.result(), Cancelled);
        EXPECT_EQ(done, steps);
        EXPECT_EQ(clock.pendingTimers(), 0u);
    }
}

TEST_F(CancellationTest, CancelOfATaskThatHasNotStartedEndsItAtItsFirstSuspension)
{
    int steps = 0;
    auto handle = scheduler.spawn(nested(&steps, 3));
    handle.cancel();
    EXPECT_FALSE(handle.done());
    settle();
    ASSERT_TRUE(handle.done());
    EXPECT_THROW(handle.result(), Cancelled);
}

TEST_F(CancellationTest, EverySuspensionAfterwardsThrowsToo)
{
    int caught = 0;
    auto handle = scheduler.spawn(swallowing(&caught));
    settle();
    handle.cancel();
    settle();
    ASSERT_TRUE(handle.done());
    EXPECT_EQ(handle.result(), 1);
    EXPECT_EQ(caught, 3);
}

TEST_F(CancellationTest, ResultThatIsReadyTogetherWithTheCancellationIsNotUsed)
{
    int steps = 0;
    auto handle = scheduler.spawn(stepping(&steps));
    settle();
    clock.advance(1s); // the timer has fired, the task has not had its turn
    handle.cancel();
    settle();
    ASSERT_TRUE(handle.done());
    EXPECT_THROW(handle.result(), Cancelled);
    EXPECT_EQ(steps, 0);
}

TEST_F(CancellationTest, CheckThrowsWithoutASuspension)
{
    OneShot<int> first;
    int reached = 0;
    auto handle = scheduler.spawn(checking(first, &reached));
    settle();
    handle.cancel();
    settle();
    EXPECT_FALSE(handle.done());
    first.resume(1);
    settle();
    ASSERT_TRUE(handle.done());
    EXPECT_THROW(handle.result(), Cancelled);
    EXPECT_EQ(reached, 1);
}

TEST_F(CancellationTest, CheckPassesATaskThatIsNotCancelled)
{
    OneShot<int> first;
    first.resume(1);
    int reached = 0;
    runTask(scheduler, checking(first, &reached));
    EXPECT_EQ(reached, 2);
}

TEST_F(CancellationTest, WorkOffMainRunsToItsEnd)
{
    OneShot<int> release;
    const auto work = [](OneShot<int> gate) -> Task<int> {
        const int value = co_await runOffMain([gate]() mutable {
            gate.resume(1);
            return 8;
        });
        co_return value;
    };
    auto handle = scheduler.spawn(work(release));
    handle.cancel();
    ASSERT_TRUE(waitUntil([&handle] { return handle.done(); }));
    EXPECT_EQ(handle.result(), 8);
}

TEST_F(CancellationTest, OtherTasksGoOn)
{
    int cancelledSteps = 0;
    int otherSteps = 0;
    auto cancelled = scheduler.spawn(stepping(&cancelledSteps));
    auto other = scheduler.spawn(stepping(&otherSteps));
    settle();
    cancelled.cancel();
    settle();
    clock.advance(1s);
    settle();
    EXPECT_EQ(cancelledSteps, 0);
    EXPECT_EQ(otherSteps, 1);
}

TEST_F(CancellationTest, CallbacksRunOnceAndOnlyWhileTheyLive)
{
    Cancellation cancellation;
    int first = 0;
    int second = 0;
    const Cancellation::Callback kept(cancellation, [&first] { ++first; });
    {
        const Cancellation::Callback dropped(cancellation, [&second] { ++second; });
    }
    EXPECT_FALSE(cancellation.isCancelled());
    cancellation.cancel();
    cancellation.cancel();
    EXPECT_TRUE(cancellation.isCancelled());
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 0);
}

TEST_F(CancellationTest, CallbackMovesWithItsRegistration)
{
    Cancellation cancellation;
    int calls = 0;
    Cancellation::Callback target;
    {
        Cancellation::Callback source(cancellation, [&calls] { ++calls; });
        target = std::move(source);
    }
    cancellation.cancel();
    EXPECT_EQ(calls, 1);
    target = Cancellation::Callback();
    cancellation.cancel();
    EXPECT_EQ(calls, 1);
}

TEST_F(CancellationTest, CallbackMayTakeBackItselfAndOthers)
{
    Cancellation cancellation;
    std::optional<Cancellation::Callback> first;
    std::optional<Cancellation::Callback> second;
    std::optional<Cancellation::Callback> third;
    int calls = 0;
    first.emplace(cancellation, [&] {
        ++calls;
        first.reset();
        second.reset();
    });
    second.emplace(cancellation, [&calls] { calls += 100; });
    third.emplace(cancellation, [&calls] { ++calls; });
    cancellation.cancel();
    EXPECT_EQ(calls, 2);
}

} // namespace
} // namespace morvane
