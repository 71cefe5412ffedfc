#include "async/Sleep.h"
#include "async/SystemClock.h"
#include "support/FakeClock.h"
#include "support/RunTask.h"

#include <QList>
#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace morvane {
namespace {

class SleepTest : public testing::Test {
protected:
    FakeClock clock;
    Scheduler scheduler{clock};

    static Task<> record(Clock::Duration duration, QList<int> *order, int name)
    {
        co_await sleepFor(duration);
        order->append(name);
    }
};

TEST_F(SleepTest, SleepersWakeInTheOrderOfTheirTimes)
{
    QList<int> order;
    scheduler.spawn(record(3s, &order, 3));
    scheduler.spawn(record(1s, &order, 1));
    scheduler.spawn(record(2s, &order, 2));
    settle();
    clock.advance(3s);
    settle();
    EXPECT_EQ(order, (QList<int>{1, 2, 3}));
}

TEST_F(SleepTest, ShortAndNegativeSleepsStillSuspend)
{
    QList<int> order;
    scheduler.spawn(record(0s, &order, 0));
    scheduler.spawn(record(-1s, &order, -1));
    settle();
    EXPECT_TRUE(order.isEmpty());
    clock.advance(0s);
    settle();
    EXPECT_EQ(order.size(), 2);
}

TEST_F(SleepTest, SystemClockWaitsAtLeastAsLong)
{
    SystemClock systemClock;
    Scheduler real(systemClock);
    QList<int> order;
    const auto begin = std::chrono::steady_clock::now();
    runTask(real, record(20ms, &order, 1));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 20ms);
    runTask(real, record(-5ms, &order, 2));
    EXPECT_EQ(order, (QList<int>{1, 2}));
}

} // namespace
} // namespace morvane
