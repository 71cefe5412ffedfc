#include "providers/RetryDelay.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

using namespace std::chrono_literals;

TEST(RetryDelay, WithoutHeaderGrowsWithTheAttempt)
{
    EXPECT_EQ(retryDelay(std::nullopt, 0), 2s);
    EXPECT_EQ(retryDelay(std::nullopt, 1), 4s);
}

TEST(RetryDelay, ZeroMeansAtOnce)
{
    EXPECT_EQ(retryDelay("0", 0), 0s);
}

TEST(RetryDelay, FractionsOfASecondCount)
{
    EXPECT_EQ(retryDelay("1.5", 0), 1500ms);
    EXPECT_EQ(retryDelay("2.5e0", 1), 2500ms);
}

TEST(RetryDelay, IsCappedAtTenSeconds)
{
    EXPECT_EQ(retryDelay("10", 0), 10s);
    EXPECT_EQ(retryDelay("3600", 0), 10s);
    EXPECT_EQ(retryDelay("1e300", 0), 10s);
}

TEST(RetryDelay, DateCountsAsNoHeader)
{
    EXPECT_EQ(retryDelay("Wed, 21 Oct 2026 07:28:00 GMT", 0), 2s);
    EXPECT_EQ(retryDelay("Wed, 21 Oct 2026 07:28:00 GMT", 1), 4s);
}

TEST(RetryDelay, WhatIsNoPlainNumberCountsAsNoHeader)
{
    for (const char *text : {"", " 1", "1 ", "1s", "1,5", "0x10", "-", "."})
        EXPECT_EQ(retryDelay(text, 0), 2s) << text;
}

TEST(RetryDelay, NegativeAndNonFiniteNumbersCountAsNoHeader)
{
    for (const char *text : {"-1", "-0.5", "nan", "inf", "-inf", "infinity", "1e999"})
        EXPECT_EQ(retryDelay(text, 1), 4s) << text;
}

} // namespace
} // namespace morvane
