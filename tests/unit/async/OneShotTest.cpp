#include "async/OneShot.h"
#include "support/FakeClock.h"
#include "support/RunTask.h"

#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <thread>
#include <vector>

namespace morvane {
namespace {

class OneShotTest : public testing::Test {
protected:
    FakeClock clock;
    Scheduler scheduler{clock};

    static Task<int> await(OneShot<int> shot, int *resumptions)
    {
        const int value = co_await shot.wait();
        ++*resumptions;
        co_return value;
    }
    static Task<std::thread::id> threadAfter(OneShot<int> shot)
    {
        co_await shot.wait();
        co_return std::this_thread::get_id();
    }
};

TEST_F(OneShotTest, FirstCallWins)
{
    OneShot<int> shot;
    int resumptions = 0;
    auto handle = scheduler.spawn(await(shot, &resumptions));
    settle();
    EXPECT_TRUE(shot.resume(1));
    EXPECT_FALSE(shot.resume(2));
    settle();
    ASSERT_TRUE(handle.done());
    EXPECT_EQ(handle.result(), 1);
    EXPECT_EQ(resumptions, 1);
    EXPECT_FALSE(shot.resume(3));
    settle();
    EXPECT_EQ(resumptions, 1);
}

TEST_F(OneShotTest, ValueMayComeBeforeTheWait)
{
    OneShot<int> shot;
    EXPECT_TRUE(shot.resume(7));
    int resumptions = 0;
    EXPECT_EQ(runTask(scheduler, await(shot, &resumptions)), 7);
}

TEST_F(OneShotTest, WaiterIsNotResumedFromWithinTheCall)
{
    OneShot<int> shot;
    int resumptions = 0;
    auto handle = scheduler.spawn(await(shot, &resumptions));
    settle();
    shot.resume(1);
    EXPECT_EQ(resumptions, 0);
    settle();
    EXPECT_EQ(resumptions, 1);
}

TEST_F(OneShotTest, CancellationDoesNotEndTheWait)
{
    OneShot<int> shot;
    int resumptions = 0;
    auto handle = scheduler.spawn(await(shot, &resumptions));
    settle();
    handle.cancel();
    settle();
    EXPECT_FALSE(handle.done());
    shot.resume(4);
    settle();
    ASSERT_TRUE(handle.done());
    EXPECT_EQ(handle.result(), 4);
}

TEST_F(OneShotTest, WaiterGoesOnOnTheMainThreadWhoeverResumesIt)
{
    OneShot<int> shot;
    auto handle = scheduler.spawn(threadAfter(shot));
    settle();
    std::thread([shot]() mutable { shot.resume(1); }).join();
    ASSERT_TRUE(waitUntil([&handle] { return handle.done(); }));
    EXPECT_EQ(handle.result(), std::this_thread::get_id());
}

TEST_F(OneShotTest, OneOfManyThreadsWins)
{
    for (int round = 0; round < 200; ++round) {
        OneShot<int> shot;
        int resumptions = 0;
        auto handle = scheduler.spawn(await(shot, &resumptions));
        if (round % 2)
            settle();
        std::atomic<int> wins = 0;
        std::atomic<int> winner = -1;
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([shot, i, &wins, &winner]() mutable {
                if (shot.resume(i)) {
                    ++wins;
                    winner = i;
                }
            });
        }
        ASSERT_TRUE(waitUntil([&handle] { return handle.done(); }));
        for (std::thread &thread : threads)
            thread.join();
        EXPECT_EQ(wins, 1);
        EXPECT_EQ(handle.result(), winner);
        EXPECT_EQ(resumptions, 1);
    }
}

TEST_F(OneShotTest, ResumingAWaiterThatIsGoneDoesNothing)
{
    OneShot<int> shot;
    int resumptions = 0;
    {
        Scheduler shortLived(clock);
        shortLived.spawn(await(shot, &resumptions));
        settle();
    }
    EXPECT_TRUE(shot.resume(1));
    settle();
    EXPECT_EQ(resumptions, 0);
}

TEST_F(OneShotTest, WaiterThatGoesBetweenItsCallAndItsTurnIsNotResumed)
{
    OneShot<int> shot;
    int resumptions = 0;
    {
        Scheduler shortLived(clock);
        shortLived.spawn(await(shot, &resumptions));
        settle();
        shot.resume(1);
    }
    settle();
    EXPECT_EQ(resumptions, 0);
}

TEST_F(OneShotTest, ThreadMayResumeAfterTheSchedulerIsGone)
{
    for (int round = 0; round < 200; ++round) {
        OneShot<int> shot;
        int resumptions = 0;
        std::thread resumer;
        {
            Scheduler shortLived(clock);
            shortLived.spawn(await(shot, &resumptions));
            settle();
            resumer = std::thread([shot = std::move(shot)]() mutable { shot.resume(1); });
        }
        QCoreApplication::processEvents();
        resumer.join();
        EXPECT_EQ(resumptions, 0);
    }
}

TEST_F(OneShotTest, ValuesThatCanOnlyBeMoved)
{
    OneShot<std::unique_ptr<int>> shot;
    const auto read = [](OneShot<std::unique_ptr<int>> from) -> Task<int> {
        const std::unique_ptr<int> value = co_await from.wait();
        co_return *value;
    };
    shot.resume(std::make_unique<int>(9));
    EXPECT_EQ(runTask(scheduler, read(shot)), 9);
}

} // namespace
} // namespace morvane
