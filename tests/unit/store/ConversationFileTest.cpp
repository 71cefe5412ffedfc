#include "store/ConversationFile.h"

#include "base/Json.h"
#include "base/Uuid.h"
#include "support/SampleConversation.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

namespace json = boost::json;

const QByteArray emptyConversation = R"({"id":"0A1B2C3D-4E5F-4A6B-8C9D-0E1F2A3B4C5D","title":"Hello",)"
                                     R"("createdAt":7.123456785E8,"updatedAt":7.123456795E8,"messages":[]})";

json::object with(std::string_view key, json::value value)
{
    json::object object = parseJsonObject(emptyConversation).value();
    object[key] = std::move(value);
    return object;
}

TEST(ConversationFileTest, IsWrittenExactly)
{
    ConversationFile file;
    file.id = *uuidFromText(u"0a1b2c3d-4e5f-4a6b-8c9d-0e1f2a3b4c5d");
    file.title = u"Hello"_s;
    file.createdAt = 712345678.5;
    file.updatedAt = 712345679.5;
    EXPECT_EQ(encodeConversation(file), emptyConversation);
}

TEST(ConversationFileTest, SurvivesTheRoundTrip)
{
    const ConversationFile file = sampleConversation(12, 300, 5000);
    EXPECT_EQ(decodeConversation(encodeConversation(file)), file);
}

TEST(ConversationFileTest, DatesSurviveAsDoublesOfSecondsSince2001)
{
    for (const double date :
         {0.0, 785234567.12345678, 785234567.1234567, -978307200.0, 1e-7, 7e8 + 1.0 / 3}) {
        ConversationFile file = sampleConversation(1);
        file.createdAt = file.updatedAt = file.messages.front().date = date;
        const auto read = decodeConversation(encodeConversation(file));
        ASSERT_TRUE(read.has_value());
        EXPECT_EQ(read->createdAt, date);
        EXPECT_EQ(read->updatedAt, date);
        EXPECT_EQ(read->messages.front().date, date);
    }
}

TEST(ConversationFileTest, EmptyTitleStaysEmpty)
{
    ConversationFile file = sampleConversation(0);
    file.title.clear();
    EXPECT_EQ(decodeConversation(encodeConversation(file))->title, QString());
}

TEST(ConversationFileTest, EveryKeyIsRequiredWithItsType)
{
    ASSERT_TRUE(decodeConversation(emptyConversation).has_value());
    for (const char *key : {"id", "title", "createdAt", "updatedAt", "messages"}) {
        json::object object = parseJsonObject(emptyConversation).value();
        object.erase(key);
        EXPECT_EQ(decodeConversation(serializeJson(object)), std::nullopt) << key;
        EXPECT_EQ(decodeConversation(serializeJson(with(key, nullptr))), std::nullopt) << key;
        EXPECT_EQ(decodeConversation(serializeJson(with(key, true))), std::nullopt) << key;
    }
}

TEST(ConversationFileTest, OneBrokenMessageFailsTheFile)
{
    json::value value = parseJson(encodeConversation(sampleConversation(3))).value();
    value.at("messages").at(2).as_object().erase("date");
    EXPECT_EQ(decodeConversation(serializeJson(value)), std::nullopt);
}

TEST(ConversationFileTest, DatesMayBeIntegers)
{
    EXPECT_EQ(decodeConversation(serializeJson(with("createdAt", 5)))->createdAt, 5.0);
}

TEST(ConversationFileTest, WhatIsNoConversationGivesNothing)
{
    for (const char *text : {"", "{", "null", "[]", "{}", "1", "\"x\"", "\xff", "{}{}"})
        EXPECT_EQ(decodeConversation(text), std::nullopt) << text;
    EXPECT_EQ(decodeConversation(emptyConversation + 'x'), std::nullopt);
    EXPECT_EQ(decodeConversation(emptyConversation.chopped(1)), std::nullopt);
}

} // namespace
} // namespace morvane
