#include "localmodel/PullProgress.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

TEST(PullProgressTest, PercentAndSizesAreRead)
{
    const auto progress = parsePullProgress(u"pulling 6a0746a1ec1a: 42% ▕██ ▏ 1.9 GB/4.7 GB"_s);
    ASSERT_TRUE(progress);
    EXPECT_EQ(progress->label, u"Downloading model… 42% (1.9 GB/4.7 GB)"_s);
    EXPECT_DOUBLE_EQ(progress->fraction, 0.42);
}

TEST(PullProgressTest, UnitsInFrontOfTheSlashAreOptional)
{
    EXPECT_EQ(parsePullProgress(u"7% 1.9/4.7 GB"_s)->label, u"Downloading model… 7% (1.9/4.7 GB)"_s);
    EXPECT_EQ(parsePullProgress(u"7% 12 MB / 680 MB"_s)->label, u"Downloading model… 7% (12 MB / 680 MB)"_s);
    EXPECT_EQ(parsePullProgress(u"7% 12 KB/680 MB"_s)->label, u"Downloading model… 7% (12 KB/680 MB)"_s);
    EXPECT_EQ(parsePullProgress(u"7% 950 MB/4.7 GB  20 MB/s   3m10s"_s)->label,
              u"Downloading model… 7% (950 MB/4.7 GB)"_s);
}

TEST(PullProgressTest, WithoutASizeTheLabelHasNoParentheses)
{
    EXPECT_EQ(parsePullProgress(u"pulling 6a0746a1ec1a:   3% ▕  ▏"_s)->label, u"Downloading model… 3%"_s);
    EXPECT_EQ(parsePullProgress(u"100% 485 B/485 B"_s)->label, u"Downloading model… 100%"_s);
}

TEST(PullProgressTest, ALineWithoutAPercentageIsNone)
{
    for (const QString &line :
         {u"pulling manifest"_s, u""_s, u"%"_s, u"1.9 GB/4.7 GB"_s, u"success"_s, u"٤٢%"_s})
        EXPECT_FALSE(parsePullProgress(line)) << line.toStdString();
}

TEST(PullProgressTest, TheFractionIsHeldToItsRange)
{
    EXPECT_DOUBLE_EQ(parsePullProgress(u"0%"_s)->fraction, 0);
    EXPECT_DOUBLE_EQ(parsePullProgress(u"100%"_s)->fraction, 1);
    EXPECT_DOUBLE_EQ(parsePullProgress(u"250%"_s)->fraction, 1);
    EXPECT_EQ(parsePullProgress(u"250%"_s)->label, u"Downloading model… 250%"_s);
    const auto huge = parsePullProgress(QString(500, u'9') + u'%');
    ASSERT_TRUE(huge);
    EXPECT_DOUBLE_EQ(huge->fraction, 1);
    EXPECT_LT(huge->label.size(), 60);
}

TEST(PullProgressTest, LongLinesDoNotMatter)
{
    EXPECT_FALSE(parsePullProgress(QString(10'000'000, u'1')));
    EXPECT_TRUE(parsePullProgress(u"5% "_s + QString(10'000'000, u'1')));
}

} // namespace
} // namespace morvane
