#include "base/NameOrder.h"

#include <QString>
#include <gtest/gtest.h>

namespace morvane {
namespace {

class NameOrderTest : public testing::Test {
protected:
    bool isBefore(const QString &first, const QString &second) const
    {
        return order.sortKey(first) < order.sortKey(second);
    }

    NameOrder order;
};

TEST_F(NameOrderTest, LettersComeBeforeCase)
{
    EXPECT_TRUE(isBefore("alpha", "Beta"));
    EXPECT_TRUE(isBefore("Alpha", "beta"));
    EXPECT_EQ(order.sortKey(u"GPT"), order.sortKey(u"gpt"));
}

TEST_F(NameOrderTest, AccentsComeAfterLetters)
{
    EXPECT_TRUE(isBefore("eclair", "éclair"));
    EXPECT_TRUE(isBefore("éclair", "edam"));
}

TEST_F(NameOrderTest, ShorterNamesComeFirst)
{
    EXPECT_TRUE(isBefore("", "a"));
    EXPECT_TRUE(isBefore("gpt-5", "gpt-5-mini"));
}

TEST_F(NameOrderTest, LongAndOddNamesHaveKeys)
{
    EXPECT_FALSE(order.sortKey(QString(100'000, u'文')).isEmpty());
    EXPECT_FALSE(order.sortKey(QString(QChar(0xd800))).isEmpty());
    EXPECT_NE(order.sortKey(QString(100'000, u'文')), order.sortKey(QString(99'999, u'文')));
}

} // namespace
} // namespace morvane
