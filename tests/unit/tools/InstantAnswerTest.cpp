#include "tools/InstantAnswer.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

TEST(InstantAnswerTest, SummaryAndSource)
{
    EXPECT_EQ(InstantAnswer::text(R"({"AbstractText": "A fish.", "AbstractURL": "https://a.example/fish"})"),
              "Summary: A fish.\nSource: https://a.example/fish");
    EXPECT_EQ(InstantAnswer::text(R"({"AbstractText": "A fish."})"), "Summary: A fish.");
    EXPECT_EQ(InstantAnswer::text(R"({"AbstractText": "A fish.", "AbstractURL": 5})"), "Summary: A fish.");
}

TEST(InstantAnswerTest, WithoutASummaryThereIsNoSource)
{
    EXPECT_EQ(InstantAnswer::text(R"({"AbstractText": "", "AbstractURL": "https://a.example"})"), "");
    EXPECT_EQ(InstantAnswer::text(R"({"AbstractURL": "https://a.example"})"), "");
    EXPECT_EQ(InstantAnswer::text(R"({"AbstractText": null, "AbstractURL": "https://a.example"})"), "");
}

TEST(InstantAnswerTest, TopicsAreOneOrTwoLines)
{
    EXPECT_EQ(InstantAnswer::text(R"({"RelatedTopics": [{"Text": "one", "FirstURL": "https://a.example/1"},
                                                        {"Text": "two"}, {"Text": "three", "FirstURL": null}]})"),
              "- one\n  https://a.example/1\n- two\n- three");
}

TEST(InstantAnswerTest, TopicGroupsArePassedOver)
{
    EXPECT_EQ(InstantAnswer::text(R"({"RelatedTopics": [
                  {"Name": "Group", "Topics": [{"Text": "inside", "FirstURL": "u"}]},
                  {"Text": "", "FirstURL": "u"}, {"Text": 7}, {"Text": "after"}]})"),
              "- after");
}

TEST(InstantAnswerTest, TopicsThatAreNotAllObjectsAreNone)
{
    EXPECT_EQ(InstantAnswer::text(R"({"RelatedTopics": [{"Text": "one"}, "two"]})"), "");
    EXPECT_EQ(InstantAnswer::text(R"({"RelatedTopics": {"Text": "one"}})"), "");
    EXPECT_EQ(InstantAnswer::text(R"({"AbstractText": "s", "RelatedTopics": [1]})"), "Summary: s");
}

TEST(InstantAnswerTest, TheLimitCountsLines)
{
    QByteArray topics;
    for (int i = 1; i <= 20; ++i)
        topics += QByteArray(i == 1 ? "" : ",") + R"({"Text": "t)" + QByteArray::number(i) +
                  R"(", "FirstURL": "u"})";
    const QString text = InstantAnswer::text(R"({"AbstractText": "s", "RelatedTopics": [)" + topics + "]}");
    EXPECT_EQ(text.count(u'\n') + 1, 12);
    EXPECT_TRUE(text.startsWith("Summary: s\n- t1\n  u\n"));
    EXPECT_TRUE(text.endsWith("\n  u\n- t6"));
}

TEST(InstantAnswerTest, WhatIsNoObjectHasNoText)
{
    for (const char *const json : {"", "{", "[]", "\"AbstractText\"", "<html>", "null",
                                   R"({"AbstractText": "s"} x)", "{\"AbstractText\": \"\xff\"}"})
        EXPECT_EQ(InstantAnswer::text(json), "") << json;
    EXPECT_EQ(InstantAnswer::text(QByteArray("[").repeated(5'000'000)), "");
}

} // namespace
} // namespace morvane
