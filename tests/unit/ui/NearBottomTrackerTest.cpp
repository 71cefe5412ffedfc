#include "ui/conversation/NearBottomTracker.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

constexpr double contentHeight = 2000;
constexpr double viewportHeight = 500;

/// Metrics with this many pixels between the viewport and the end of the content.
ChatScrollMetrics remaining(double pixels)
{
    return {.offset = contentHeight - viewportHeight - pixels, .viewportHeight = viewportHeight};
}

TEST(NearBottomTrackerTest, StartsNearTheBottom)
{
    EXPECT_TRUE(NearBottomTracker().isNearBottom());
}

TEST(NearBottomTrackerTest, StaysLockedWhenTheUserScrollsUpByAHundred)
{
    NearBottomTracker tracker;
    tracker.updateNearBottom(contentHeight, remaining(100));
    EXPECT_TRUE(tracker.isNearBottom());
}

TEST(NearBottomTrackerTest, UnlocksAtThreeHundred)
{
    NearBottomTracker tracker;
    tracker.updateNearBottom(contentHeight, remaining(300));
    EXPECT_FALSE(tracker.isNearBottom());
}

TEST(NearBottomTrackerTest, StaysLockedAtExactlyTwoHundredAndForty)
{
    NearBottomTracker tracker;
    tracker.updateNearBottom(contentHeight, remaining(240));
    EXPECT_TRUE(tracker.isNearBottom());
    tracker.updateNearBottom(contentHeight, remaining(241));
    EXPECT_FALSE(tracker.isNearBottom());
}

TEST(NearBottomTrackerTest, LocksAgainOnlyWithinEighty)
{
    NearBottomTracker tracker;
    tracker.updateNearBottom(contentHeight, remaining(300));
    tracker.updateNearBottom(contentHeight, remaining(100));
    EXPECT_FALSE(tracker.isNearBottom());
    tracker.updateNearBottom(contentHeight, remaining(81));
    EXPECT_FALSE(tracker.isNearBottom());
    tracker.updateNearBottom(contentHeight, remaining(80));
    EXPECT_TRUE(tracker.isNearBottom());
}

TEST(NearBottomTrackerTest, ContentShorterThanTheViewportIsNearTheBottom)
{
    NearBottomTracker tracker;
    tracker.updateNearBottom(contentHeight, remaining(300));
    tracker.updateNearBottom(100, {.offset = 0, .viewportHeight = viewportHeight});
    EXPECT_TRUE(tracker.isNearBottom());
}

TEST(NearBottomTrackerTest, DoesNotScrollWhileUnlocked)
{
    NearBottomTracker tracker;
    tracker.updateNearBottom(contentHeight, remaining(300));
    EXPECT_FALSE(tracker.mayScroll(1000));
}

TEST(NearBottomTrackerTest, ScrollsAtMostFiveTimesASecond)
{
    NearBottomTracker tracker;
    EXPECT_TRUE(tracker.mayScroll(1000));
    EXPECT_FALSE(tracker.mayScroll(1100));
    EXPECT_FALSE(tracker.mayScroll(1199));
    EXPECT_EQ(tracker.pause(1150), 50);
    EXPECT_TRUE(tracker.mayScroll(1200));
    EXPECT_FALSE(tracker.mayScroll(1399));
}

TEST(NearBottomTrackerTest, ARefusedScrollDoesNotProlongThePause)
{
    NearBottomTracker tracker;
    EXPECT_TRUE(tracker.mayScroll(0));
    EXPECT_FALSE(tracker.mayScroll(199));
    EXPECT_TRUE(tracker.mayScroll(200));
}

} // namespace
} // namespace morvane
