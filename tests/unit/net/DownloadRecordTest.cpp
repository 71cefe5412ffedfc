#include "net/DownloadRecord.h"

#include "net/HttpHeaders.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

TEST(DownloadRecordTest, ComesBackAsItWasWritten)
{
    const DownloadRecord whole{u"https://example.org/ä \"x\""_s, "\"tag\"", 1'500'000'000'000};
    EXPECT_EQ(DownloadRecord::fromJson(whole.toJson()), whole);
    const DownloadRecord withoutTotal{u"https://example.org/"_s, "Mon, 01 Jan 2024 00:00:00 GMT",
                                      std::nullopt};
    EXPECT_EQ(DownloadRecord::fromJson(withoutTotal.toJson()), withoutTotal);
}

TEST(DownloadRecordTest, WhatIsNoRecordIsNone)
{
    for (const char *json :
         {"", "[]", "{}", R"({"url":"x"})", R"({"url":"x","validator":""})",
          R"({"url":"x","validator":"y","total":0})", R"({"url":"x","validator":"y","total":"1"})"})
        EXPECT_FALSE(DownloadRecord::fromJson(json)) << json;
}

TEST(DownloadRecordTest, OnlyStrongTagsAndDatesTellAVersion)
{
    EXPECT_EQ(validatorIn({{"ETag", " \"a\" "}, {"Last-Modified", "date"}}), "\"a\"");
    EXPECT_EQ(validatorIn({{"ETag", "W/\"a\""}, {"Last-Modified", "date"}}), "date");
    EXPECT_EQ(validatorIn({{"ETag", "\"\""}}), "");
    EXPECT_EQ(validatorIn({}), "");
}

TEST(DownloadRecordTest, ARangeReachesToTheEnd)
{
    const auto range = ContentRange::parse("bytes 5-9/10");
    ASSERT_TRUE(range);
    EXPECT_EQ(range->first, 5);
    EXPECT_EQ(range->total, 10);
    for (const char *value : {"", "bytes", "bytes */10", "bytes 5-8/10", "bytes 5-9/*", "bytes 9-5/6",
                              "bytes -5-9/10", "items 5-9/10", "bytes 5-9/10/10", "bytes 5-9-9/10",
                              "bytes 5 -9/10", "bytes 99999999999999999999-9/10"})
        EXPECT_FALSE(ContentRange::parse(value)) << value;
}

} // namespace
} // namespace morvane
