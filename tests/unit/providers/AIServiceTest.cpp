#include "providers/AIService.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

TEST(VisionModelHeuristic, KnowsEveryMark)
{
    for (const char *model : {"gemini-3.6-flash", "gpt-4o-mini", "gpt-5-mini", "gpt-4.1", "gpt-4-turbo-2024",
                              "claude-x", "llava:7b", "moondream", "minicpm-v", "pixtral-12b", "internvl2",
                              "llama3.2-vision", "qwen2.5-vl", "vl-plus", "o3", "o4-mini"})
        EXPECT_TRUE(AIService::visionModelHeuristic(model)) << model;
}

TEST(VisionModelHeuristic, IgnoresCase)
{
    EXPECT_TRUE(AIService::visionModelHeuristic("Qwen2.5-VL"));
}

TEST(VisionModelHeuristic, IsLooseOnPurpose)
{
    EXPECT_TRUE(AIService::visionModelHeuristic("foo3"));
}

TEST(VisionModelHeuristic, DeniesOtherModels)
{
    for (const char *model :
         {"", "qwen2.5", "llama-3.3-70b-versatile", "deepseek/deepseek-chat-v3-0324", "gpt-4"})
        EXPECT_FALSE(AIService::visionModelHeuristic(model)) << model;
}

} // namespace
} // namespace morvane
