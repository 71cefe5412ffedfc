#include "store/ConversationFile.h"

#include "base/Json.h"
#include "base/Uuid.h"
#include "support/ConversationOracle.h"
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

TEST(ConversationFileTest, PiecesOfAnySizeAreDecodedAlike)
{
    ConversationFile file = sampleConversation(3, 40, 50);
    file.messages[0].text = u"é€😀한\uFEFF"_s;
    file.messages[1].errorMessage = u"😀"_s;
    const QByteArray bytes = encodeConversation(file);
    for (qsizetype size = 3; size < 70; ++size) {
        QByteArrayView left = bytes;
        const auto read = decodeConversation([&left, size] {
            const QByteArrayView piece = left.first(std::min(size, left.size()));
            left = left.sliced(piece.size());
            return std::optional(piece);
        });
        ASSERT_EQ(read, file) << size;
    }
    EXPECT_EQ(decodeConversation([] { return std::optional<QByteArrayView>(); }), std::nullopt);
}

TEST(ConversationFileTest, TheLastOfEqualKeysCountsAmongMessagesToo)
{
    const QByteArray text = encodeConversation(sampleConversation(2, 20, 30));
    const qsizetype list = text.indexOf("\"messages\":") + 11;
    const QByteArray messages = text.sliced(list).chopped(1);
    for (const QByteArray &more :
         {QByteArray("[]"), messages, QByteArray("[{}]"), QByteArray("null"), QByteArray("7")}) {
        const QByteArray twice = text.chopped(1) + ",\"messages\":" + more + "}";
        EXPECT_EQ(decodeConversation(twice), conversationOfWholeValue(twice)) << more.constData();
        const QByteArray swapped = text.first(list) + more + ",\"messages\":" + messages + "}";
        EXPECT_EQ(decodeConversation(swapped), conversationOfWholeValue(swapped)) << more.constData();
    }
    for (const QByteArray &more : {QByteArray("\"text\":\"other\""), QByteArray("\"errorMessage\":null"),
                                   QByteArray("\"attachments\":null"), QByteArray("\"attachments\":[]"),
                                   QByteArray("\"text\":1"), QByteArray("\"x\":{\"text\":[\"no\"]}")}) {
        QByteArray twice = text;
        twice.replace("},{\"id\"", "," + more + "},{\"id\"");
        EXPECT_EQ(decodeConversation(twice), conversationOfWholeValue(twice)) << more.constData();
    }
}

} // namespace
} // namespace morvane
