#include "localmodel/MarketingNames.h"

#include <QStringList>
#include <gtest/gtest.h>

namespace morvane {
namespace {

TEST(MarketingNamesTest, NamesEveryIdentifierOfTheTable)
{
    const QStringList identifiers{
        "Mac17,3",        "Mac17,4",        "Mac17,2",        "Mac17,6",        "Mac17,7",
        "Mac17,8",        "Mac17,9",        "Mac16,12",       "Mac16,13",       "Mac16,1",
        "Mac16,5",        "Mac16,6",        "Mac16,7",        "Mac16,8",        "Mac16,2",
        "Mac16,3",        "Mac16,10",       "Mac16,11",       "Mac16,9",        "Mac16,14",
        "Mac15,12",       "Mac15,13",       "Mac15,3",        "Mac15,6",        "Mac15,7",
        "Mac15,8",        "Mac15,9",        "Mac15,10",       "Mac15,11",       "Mac15,4",
        "Mac15,5",        "Mac14,2",        "Mac14,15",       "Mac14,7",        "Mac14,5",
        "Mac14,9",        "Mac14,6",        "Mac14,10",       "Mac14,3",        "Mac14,12",
        "Mac14,8",        "Mac14,13",       "Mac14,14",       "MacBookAir10,1", "MacBookPro17,1",
        "MacBookPro18,1", "MacBookPro18,2", "MacBookPro18,3", "MacBookPro18,4", "Mac13,1",
        "Mac13,2",        "Macmini9,1",     "iMac21,1",       "iMac21,2",       "MacBookPro16,1",
        "MacBookPro16,2", "MacBookPro16,3", "MacBookPro15,1", "MacBookPro15,2", "MacBookAir8,1",
        "MacBookAir8,2",  "Macmini8,1",     "iMac19,1",       "MacPro7,1"};
    ASSERT_EQ(identifiers.size(), 64);
    for (const QString &identifier : identifiers)
        EXPECT_NE(marketingName(identifier), identifier);
}

TEST(MarketingNamesTest, UsesTheMakersNames)
{
    EXPECT_EQ(marketingName("Mac16,1"), "MacBook Pro (14-inch, M4, 2024)");
    EXPECT_EQ(marketingName("Mac14,2"), "MacBook Air (M2, 2022)");
    EXPECT_EQ(marketingName("MacBookPro18,3"), "MacBook Pro (14-inch, M1 Pro, 2021)");
    EXPECT_EQ(marketingName("MacPro7,1"), "Mac Pro (2019)");
}

TEST(MarketingNamesTest, AnyOtherIdentifierComesBackAsItIs)
{
    for (const char *const identifier : {"", "Mac99,1", "mac16,1", "Mac16,1 ", "Mac16", "Unknown"})
        EXPECT_EQ(marketingName(identifier), identifier);
}

} // namespace
} // namespace morvane
