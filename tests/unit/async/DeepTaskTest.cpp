#include "async/Sleep.h"
#include "support/FakeClock.h"
#include "support/RunTask.h"

#include <gtest/gtest.h>
#include <stdexcept>

using namespace std::chrono_literals;

namespace morvane {
namespace {

/// Awaits by the hundred thousand must not add up on the stack.
class DeepTaskTest : public testing::Test {
protected:
    static constexpr int depth = 100000;

    FakeClock clock;
    Scheduler scheduler{clock};

    static Task<int> nested(int levels)
    {
        if (levels == 0)
            co_return 0;
        co_return 1 + co_await nested(levels - 1);
    }
    static Task<int> nestedSleep(int levels)
    {
        if (levels == 0)
            co_await sleepFor(1s);
        else
            co_return 1 + co_await nestedSleep(levels - 1);
        co_return 0;
    }
    static Task<int> nestedFailure(int levels)
    {
        if (levels == 0)
            throw std::runtime_error("at the bottom");
        co_return 1 + co_await nestedFailure(levels - 1);
    }
    static Task<> nothing() { co_return; }
    static Task<int> sequential(int count)
    {
        int done = 0;
        for (; done < count; ++done)
            co_await nothing();
        co_return done;
    }
    static Task<int> failures(int count)
    {
        int caught = 0;
        for (int i = 0; i < count; ++i) {
            try {
                co_await nestedFailure(1);
            } catch (const std::runtime_error &) {
                ++caught;
            }
        }
        co_return caught;
    }
};

TEST_F(DeepTaskTest, NestedAwaits)
{
    EXPECT_EQ(runTask(scheduler, nested(depth)), depth);
}

TEST_F(DeepTaskTest, NestedAwaitsAroundASuspension)
{
    auto handle = scheduler.spawn(nestedSleep(depth));
    settle();
    EXPECT_FALSE(handle.done());
    clock.advance(1s);
    settle();
    ASSERT_TRUE(handle.done());
    EXPECT_EQ(handle.result(), depth);
}

TEST_F(DeepTaskTest, CancellationFromTheBottomOfManyLevels)
{
    auto handle = scheduler.spawn(nestedSleep(depth / 10));
    settle();
    handle.cancel();
    settle();
    ASSERT_TRUE(handle.done());
    EXPECT_THROW(handle.result(), Cancelled);
}

TEST_F(DeepTaskTest, ExceptionThroughManyLevels)
{
    EXPECT_THROW(runTask(scheduler, nestedFailure(depth / 10)), std::runtime_error);
}

TEST_F(DeepTaskTest, SequentialAwaitsThatEndAtOnce)
{
    EXPECT_EQ(runTask(scheduler, sequential(10 * depth)), 10 * depth);
    EXPECT_EQ(runTask(scheduler, failures(depth / 10)), depth / 10);
}

} // namespace
} // namespace morvane
