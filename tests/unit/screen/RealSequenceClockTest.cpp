#include "tools/screen/RealSequenceClock.h"

#include <gtest/gtest.h>
#include <thread>

using namespace std::chrono_literals;

namespace morvane {
namespace {

TEST(RealSequenceClockTest, TheWholeTimePasses)
{
    const auto begin = std::chrono::steady_clock::now();
    RealSequenceClock().sleep(30ms, {});
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 30ms);
}

TEST(RealSequenceClockTest, AStopEndsTheWait)
{
    std::stop_source before;
    before.request_stop();
    RealSequenceClock().sleep(1h, before.get_token());
    const std::jthread sleeper([](const std::stop_token &stop) { RealSequenceClock().sleep(1h, stop); });
}

} // namespace
} // namespace morvane
