#include "ui/conversation/HeightIndex.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

HeightIndex indexOf(std::initializer_list<int> heights)
{
    HeightIndex index;
    for (const int height : heights)
        index.append(height);
    return index;
}

TEST(HeightIndexTest, KnowsWhereRowsStand)
{
    const HeightIndex index = indexOf({10, 20, 30});
    EXPECT_EQ(index.top(0), 0);
    EXPECT_EQ(index.top(2), 30);
    EXPECT_EQ(index.total(), 60);
}

TEST(HeightIndexTest, FindsTheRowAtAPlaceAndTheNearestOutside)
{
    const HeightIndex index = indexOf({10, 20, 30});
    EXPECT_EQ(index.rowAt(-5), 0);
    EXPECT_EQ(index.rowAt(9), 0);
    EXPECT_EQ(index.rowAt(10), 1);
    EXPECT_EQ(index.rowAt(59), 2);
    EXPECT_EQ(index.rowAt(1000), 2);
    EXPECT_EQ(HeightIndex().rowAt(0), -1);
}

TEST(HeightIndexTest, SkipsRowsWithoutHeight)
{
    const HeightIndex index = indexOf({10, 0, 30});
    EXPECT_EQ(index.rowAt(10), 2);
}

TEST(HeightIndexTest, TakesChangesAnywhere)
{
    HeightIndex index = indexOf({10, 20, 30});
    EXPECT_EQ(index.total(), 60);
    index.setHeight(0, 100);
    EXPECT_EQ(index.top(1), 100);
    EXPECT_EQ(index.total(), 150);
    index.append(5);
    EXPECT_EQ(index.total(), 155);
    index.setHeight(3, 6);
    EXPECT_EQ(index.total(), 156);
    index.clear();
    EXPECT_EQ(index.total(), 0);
    EXPECT_EQ(index.count(), 0);
}

} // namespace
} // namespace morvane
