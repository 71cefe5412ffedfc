#include "mcp/guard/EndFamily.h"

#include <gtest/gtest.h>
#include <vector>

using namespace std::chrono_literals;

namespace morvane {
namespace {

/// A family whose members end by signals or not at all, in a time that passes by waiting alone.
class EndFamilyTest : public testing::Test {
protected:
    using Duration = FamilyAndTime::TimePoint::duration;
    struct Sent {
        int signal;
        Duration after;
        bool operator==(const Sent &) const = default;
    };

    void end()
    {
        endFamily(
            {.now = [this] { return now; },
             .signalAll = [this](int signal) { sent.push_back({signal, now.time_since_epoch()}); },
             .reap = [this] { return now.time_since_epoch() < gone; },
             .waitUntil = [this](FamilyAndTime::TimePoint end) { now = std::min(end, now + eventless); }});
    }

    Duration gone = 1h;      ///< When nobody is left.
    Duration eventless = 1h; ///< So long nobody ends.
    FamilyAndTime::TimePoint now{};
    std::vector<Sent> sent;
};

TEST_F(EndFamilyTest, WhoEndsByTheFirstSignalGetsNoOther)
{
    gone = 1999ms;
    eventless = 1ms;
    end();
    EXPECT_EQ(sent, (std::vector<Sent>{{SIGTERM, 0s}}));
    EXPECT_EQ(now.time_since_epoch(), 1999ms);
}

TEST_F(EndFamilyTest, WhereNobodyIsLeftNobodyIsSought)
{
    gone = 0s;
    end();
    EXPECT_EQ(sent, std::vector<Sent>());
    EXPECT_EQ(now.time_since_epoch(), 0s);
}

TEST_F(EndFamilyTest, WhoIsLeftAfterTwoSecondsIsKilled)
{
    gone = 2005ms;
    end();
    EXPECT_EQ(sent, (std::vector<Sent>{{SIGTERM, 0s}, {SIGKILL, 2s}}));
}

TEST_F(EndFamilyTest, TheEndOfSomeShortensNobodysTime)
{
    gone = 2005ms;
    eventless = 300ms;
    end();
    EXPECT_EQ(sent, (std::vector<Sent>{{SIGTERM, 0s}, {SIGKILL, 2s}}));
}

TEST_F(EndFamilyTest, WhoeverIsStartedMeanwhileIsKilledToo)
{
    gone = 2025ms;
    end();
    EXPECT_EQ(sent, (std::vector<Sent>{{SIGTERM, 0s}, {SIGKILL, 2s}, {SIGKILL, 2010ms}, {SIGKILL, 2020ms}}));
}

TEST_F(EndFamilyTest, AProcessThatHangsInTheKernelIsNotWaitedForForever)
{
    end();
    EXPECT_EQ(now.time_since_epoch(), 3s);
}

} // namespace
} // namespace morvane
