#include "support/RunTask.h"

#include "async/Sleep.h"
#include "support/FakeClock.h"

#include <QScopeGuard>
#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace morvane {
namespace {

Task<void> waitForThatTime(Clock::Duration time, bool *isOver)
{
    const auto over = qScopeGuard([isOver] { *isOver = true; });
    co_await sleepFor(time);
}

TEST(RunTaskTest, ATaskThatDoesNotEndInTimeHasEndedAllTheSameBehindIt)
{
    FakeClock clock;
    Scheduler scheduler(clock);
    bool isOver = false;
    EXPECT_THROW(runTask(scheduler, waitForThatTime(1h, &isOver), 1ms), std::runtime_error);
    EXPECT_TRUE(isOver);
}

} // namespace
} // namespace morvane
