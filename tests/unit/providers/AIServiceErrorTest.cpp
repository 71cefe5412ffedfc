#include "providers/AIServiceError.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

QString description(AIServiceError::Reason reason)
{
    return AIServiceError(std::move(reason)).errorDescription();
}

TEST(AIServiceError, HttpNamesStatusAndDetail)
{
    EXPECT_EQ(description(AIServiceError::Http{500, R"({"error":{"message":"x"}})"}),
              "The AI provider returned an error (HTTP 500). x");
    EXPECT_EQ(description(AIServiceError::Http{404, "%1 %2"}),
              "The AI provider returned an error (HTTP 404). %1 %2");
}

TEST(AIServiceError, ApiIsItsMessage)
{
    EXPECT_EQ(description(AIServiceError::Api{"It broke."}), "It broke.");
}

TEST(AIServiceError, EmptyApiMessageHasAGeneralText)
{
    EXPECT_EQ(description(AIServiceError::Api{}), "The AI provider returned an error.");
}

TEST(AIServiceError, RateLimitedSaysWhenTheAllowanceComesBack)
{
    EXPECT_EQ(description(AIServiceError::RateLimited{"The free allowance resets daily."}),
              "You reached the free limit for this provider for now. The free allowance resets daily.");
}

TEST(AIServiceError, BlockedNamesTheSafetyFilter)
{
    EXPECT_EQ(
        description(AIServiceError::Blocked{}),
        "Morvane did not respond because the request was blocked by the provider's content safety filter.");
}

TEST(AIServiceError, WhatIsTheDescriptionInUtf8)
{
    const AIServiceError error(AIServiceError::Api{u"é"_s});
    EXPECT_STREQ(error.what(), "\xC3\xA9");
}

TEST(FriendlyDetail, TakesTheMessageOfTheErrorObject)
{
    EXPECT_EQ(friendlyDetail(R"({"error":{"message":"x"},"message":"y"})"), "x");
}

TEST(FriendlyDetail, TakesTheMessageAtTheTop)
{
    EXPECT_EQ(friendlyDetail(R"({"message":"y"})"), "y");
    EXPECT_EQ(friendlyDetail(R"({"error":{"message":5},"message":"y"})"), "y");
    EXPECT_EQ(friendlyDetail(R"({"error":"text","message":"y"})"), "y");
}

TEST(FriendlyDetail, ShowsTheBeginningOfAPage)
{
    const QString page = "<html>" + QString(1000, 'x');
    EXPECT_EQ(friendlyDetail(page), page.left(300));
}

TEST(FriendlyDetail, CountsUserPerceivedCharacters)
{
    const QString family = u"👨‍👩‍👧"_s;
    EXPECT_EQ(friendlyDetail(family.repeated(400)), family.repeated(300));
}

TEST(FriendlyDetail, OtherJsonIsShownAsItStands)
{
    EXPECT_EQ(friendlyDetail("[1]"), "[1]");
    EXPECT_EQ(friendlyDetail(R"({"detail":"z"})"), R"({"detail":"z"})");
    EXPECT_EQ(friendlyDetail({}), QString());
}

} // namespace
} // namespace morvane
