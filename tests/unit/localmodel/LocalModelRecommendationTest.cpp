#include "localmodel/LocalModelRecommendation.h"

#include <QStringList>
#include <gtest/gtest.h>
#include <limits>

namespace morvane {
namespace {

QStringList names(int ramGB)
{
    QStringList list;
    for (const LocalModelRecommendation &recommendation : recommendations(ramGB))
        list.append(recommendation.name);
    return list;
}

TEST(LocalModelRecommendationTest, TheTierFollowsTheMemory)
{
    const QStringList large{"qwen2.5:14b", "llama3.1:8b", "qwen3:8b"};
    const QStringList medium{"qwen2.5", "llama3.1:8b", "qwen3:4b"};
    const QStringList small{"qwen2.5:3b", "llama3.2:3b", "qwen3:4b"};
    const QStringList least{"qwen2.5:3b", "llama3.2:3b", "llama3.2:1b"};
    EXPECT_EQ(names(std::numeric_limits<int>::max()), large);
    EXPECT_EQ(names(32), large);
    EXPECT_EQ(names(31), medium);
    EXPECT_EQ(names(16), medium);
    EXPECT_EQ(names(15), small);
    EXPECT_EQ(names(8), small);
    EXPECT_EQ(names(7), least);
    EXPECT_EQ(names(1), least);
    EXPECT_EQ(names(0), least);
}

TEST(LocalModelRecommendationTest, EachModelIsDescribed)
{
    EXPECT_EQ(
        recommendations(64).first(),
        (LocalModelRecommendation{"qwen2.5:14b", 9.4, 16, "Best quality",
                                  "Excellent reasoning, coding, and tool use. The smartest model that runs "
                                  "smoothly on your Mac."}));
    EXPECT_EQ(recommendations(64).last(),
              (LocalModelRecommendation{
                  "qwen3:8b", 5.2, 8, "Great value",
                  "A strong new-generation model with excellent tool use for its download size."}));
    EXPECT_EQ(recommendations(16)[1],
              (LocalModelRecommendation{"llama3.1:8b", 4.9, 8, "Strong all-rounder",
                                        "Very capable and well rounded for a wide range of tasks."}));
    EXPECT_EQ(recommendations(8).last(),
              (LocalModelRecommendation{
                  "qwen3:4b", 2.5, 4, "Great value",
                  "The most capable tool-using model that still runs comfortably on your Mac."}));
    EXPECT_EQ(recommendations(4).last(),
              (LocalModelRecommendation{"llama3.2:1b", 1.3, 2, "Lightest",
                                        "The smallest model that still understands tool use."}));
}

} // namespace
} // namespace morvane
