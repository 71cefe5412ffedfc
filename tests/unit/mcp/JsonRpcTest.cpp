#include "mcp/JsonRpc.h"

#include "base/Json.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

namespace json = boost::json;

std::optional<qint64> idIn(const char *message)
{
    return answeredID(parseJsonObject(message).value());
}

TEST(JsonRpcTest, AnIdMayComeBackAsTextOfADecimalInteger)
{
    EXPECT_EQ(idIn(R"({"id":7})"), 7);
    EXPECT_EQ(idIn(R"({"id":"7"})"), 7);
    EXPECT_EQ(idIn(R"({"id":"+7"})"), 7);
    EXPECT_EQ(idIn(R"({"id":"-7"})"), -7);
    EXPECT_EQ(idIn(R"({"id":"9223372036854775807"})"), std::numeric_limits<qint64>::max());
}

TEST(JsonRpcTest, WhatIsNoIntegerIsNoId)
{
    for (const char *id : {R"("7x")", R"("")", "7.5", R"("7.5")", R"(" 7")", R"("+-7")", R"("+")", "null",
                           "true", "[7]", "{}", R"("9223372036854775808")", "9223372036854775808"}) {
        EXPECT_EQ(idIn((QByteArray(R"({"id":)") + id + '}').constData()), std::nullopt) << id;
    }
    EXPECT_EQ(idIn("{}"), std::nullopt);
}

TEST(JsonRpcTest, AMessageWithAMethodAnswersNothing)
{
    EXPECT_EQ(idIn(R"({"id":1,"method":"ping"})"), std::nullopt);
    EXPECT_EQ(idIn(R"({"id":1,"method":null,"result":{}})"), std::nullopt);
}

TEST(JsonRpcTest, AnEventPrefixIsTakenOffTwiceAtMost)
{
    EXPECT_TRUE(parseJSONText(R"(data:{"a":1})"));
    EXPECT_TRUE(parseJSONText(R"(  data:   {"a":1}  )"));
    EXPECT_TRUE(parseJSONText(R"(data: data: {"a":1})"));
    EXPECT_TRUE(parseJSONText("data: data: \xC2\xA0{}")) << "blanks behind each are trimmed";
    EXPECT_FALSE(parseJSONText(R"(data:data:{"a":1})")) << "the second one has a blank";
    EXPECT_FALSE(parseJSONText(R"(data: data: data: {"a":1})"));
}

TEST(JsonRpcTest, OnlyAnObjectIsAMessage)
{
    for (const char *text : {"", " ", "[]", "1", "null", "\"x\"", "{", "{}{}", "data:", "[{\"id\":1}]"})
        EXPECT_FALSE(parseJSONText(text)) << text;
    EXPECT_TRUE(parseJSONText("{}"));
}

TEST(JsonRpcTest, UnicodeWhiteSpaceAndLineEndsAroundAMessageAreTrimmed)
{
    EXPECT_TRUE(parseJSONText("\xC2\xA0\xE2\x80\xA8\t{}\r\n\xE3\x80\x80\xC2\x85"));
    EXPECT_EQ(trimmedBlanks("\n \t{}\xC2\xA0 "), "\n \t{}") << "a line end is no blank";
    EXPECT_EQ(trimmedBlanks(" \t \xC2\xA0"), "");
}

TEST(JsonRpcTest, NestingThatIsTooDeepIsNoMessage)
{
    EXPECT_FALSE(parseJSONText("{\"a\":" + QByteArray(5'000'000, '[') + QByteArray(5'000'000, ']') + '}'));
}

TEST(JsonRpcTest, EnvelopesHaveTheirKeys)
{
    const auto request = parseJsonObject(requestText(42, "tools/call", R"({"name":"x"})")).value();
    EXPECT_EQ(request,
              (json::object{
                  {"jsonrpc", "2.0"}, {"id", 42}, {"method", "tools/call"}, {"params", {{"name", "x"}}}}));
    const auto notification = parseJsonObject(notificationText("notifications/initialized")).value();
    EXPECT_EQ(notification,
              (json::object{
                  {"jsonrpc", "2.0"}, {"method", "notifications/initialized"}, {"params", json::object()}}));
}

} // namespace
} // namespace morvane
