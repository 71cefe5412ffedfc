#include "model/ChatMessageJson.h"

#include "base/Json.h"
#include "base/Uuid.h"
#include "support/ChatMessageFromJson.h"

#include <gtest/gtest.h>
#include <limits>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

namespace json = boost::json;

const QByteArray plainMessage =
    R"({"id":"0A1B2C3D-4E5F-4A6B-8C9D-0E1F2A3B4C5D","role":"assistant","text":"Hello","isStreaming":false,)"
    R"("attachments":[],"date":7.123456785E8})";

const QByteArray fullAttachment =
    R"({"id":"11111111-2222-4333-8444-555555555555","filename":"a.png","kind":"image","data":"AAEC/w==",)"
    R"("extractedText":"","mimeType":"image/png","byteSize":4})";

json::object parsed(const QByteArray &text)
{
    return parseJsonObject(text).value();
}

json::object with(const QByteArray &text, std::string_view key, json::value value)
{
    json::object object = parsed(text);
    object[key] = std::move(value);
    return object;
}

json::object without(const QByteArray &text, std::string_view key)
{
    json::object object = parsed(text);
    object.erase(key);
    return object;
}

TEST(ChatMessageJsonTest, MessageIsWrittenExactly)
{
    ChatMessage message;
    message.id = *uuidFromText(u"0a1b2c3d-4e5f-4a6b-8c9d-0e1f2a3b4c5d");
    message.role = Role::assistant;
    message.text = u"Hello"_s;
    message.date = 712345678.5;
    EXPECT_EQ(serializeJson(toJson(message)), plainMessage);
}

TEST(ChatMessageJsonTest, AttachmentIsWrittenExactly)
{
    ChatAttachment attachment;
    attachment.id = *uuidFromText(u"11111111-2222-4333-8444-555555555555");
    attachment.filename = u"a.png"_s;
    attachment.kind = AttachmentKind::image;
    attachment.data = QByteArray("\x00\x01\x02\xff", 4);
    attachment.mimeType = u"image/png"_s;
    attachment.byteSize = 4;
    EXPECT_EQ(serializeJson(toJson(attachment)), fullAttachment);
    EXPECT_EQ(chatAttachmentFromJson(parsed(fullAttachment)), attachment);
}

TEST(ChatMessageJsonTest, MessageSurvivesTheRoundTrip)
{
    ChatMessage message;
    message.id = newUuid();
    message.text = u"Zeile\n\"quoted\" 🙂\u2028"_s + QChar(0);
    message.isStreaming = true;
    message.errorMessage = u"Nope"_s;
    message.date = 785234567.123456789;
    ChatAttachment attachment;
    attachment.id = newUuid();
    attachment.filename = u"ü.txt"_s;
    attachment.extractedText = u"body"_s;
    attachment.byteSize = std::numeric_limits<qint64>::max();
    message.attachments = {attachment, attachment};

    const auto read = chatMessageFromJson(*parseJson(serializeJson(toJson(message))));
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(*read, message);
    EXPECT_EQ(read->date, message.date);
}

TEST(ChatMessageJsonTest, MissingAttachmentsReadAsNoneAndAreWrittenBack)
{
    const auto message = chatMessageFromJson(without(plainMessage, "attachments"));
    ASSERT_TRUE(message.has_value());
    EXPECT_TRUE(message->attachments.isEmpty());
    EXPECT_TRUE(serializeJson(toJson(*message)).contains("\"attachments\":[]"));
}

TEST(ChatMessageJsonTest, NullAttachmentsReadAsNone)
{
    const auto message = chatMessageFromJson(with(plainMessage, "attachments", nullptr));
    ASSERT_TRUE(message.has_value());
    EXPECT_TRUE(message->attachments.isEmpty());
}

TEST(ChatMessageJsonTest, NullErrorReadsAsNoneAndItsKeyIsGoneAfterSaving)
{
    const auto message = chatMessageFromJson(with(plainMessage, "errorMessage", nullptr));
    ASSERT_TRUE(message.has_value());
    EXPECT_EQ(message->errorMessage, std::nullopt);
    EXPECT_FALSE(serializeJson(toJson(*message)).contains("errorMessage"));
}

TEST(ChatMessageJsonTest, EmptyErrorIsAnError)
{
    const auto message = chatMessageFromJson(with(plainMessage, "errorMessage", ""));
    ASSERT_TRUE(message.has_value());
    EXPECT_EQ(message->errorMessage, QString());
    EXPECT_TRUE(serializeJson(toJson(*message)).contains("\"errorMessage\":\"\""));
}

TEST(ChatMessageJsonTest, AbsentDataRoundTripsWithoutTheKey)
{
    const auto attachment = chatAttachmentFromJson(without(fullAttachment, "data"));
    ASSERT_TRUE(attachment.has_value());
    EXPECT_EQ(attachment->data, std::nullopt);
    EXPECT_FALSE(serializeJson(toJson(*attachment)).contains("data"));
    EXPECT_EQ(chatAttachmentFromJson(with(fullAttachment, "data", nullptr))->data, std::nullopt);
}

TEST(ChatMessageJsonTest, EmptyDataIsData)
{
    const auto attachment = chatAttachmentFromJson(with(fullAttachment, "data", ""));
    ASSERT_TRUE(attachment.has_value());
    ASSERT_TRUE(attachment->data.has_value());
    EXPECT_TRUE(attachment->data->isEmpty());
    EXPECT_TRUE(serializeJson(toJson(*attachment)).contains("\"data\":\"\""));
}

TEST(ChatMessageJsonTest, AbsentMediaTypeIsLeftOut)
{
    const auto attachment = chatAttachmentFromJson(without(fullAttachment, "mimeType"));
    ASSERT_TRUE(attachment.has_value());
    EXPECT_EQ(attachment->mimeType, std::nullopt);
    EXPECT_FALSE(serializeJson(toJson(*attachment)).contains("mimeType"));
}

TEST(ChatMessageJsonTest, EveryRequiredKeyOfAMessageIsRequired)
{
    ASSERT_TRUE(chatMessageFromJson(parsed(plainMessage)).has_value());
    for (const char *key : {"id", "role", "text", "isStreaming", "date"}) {
        EXPECT_EQ(chatMessageFromJson(without(plainMessage, key)), std::nullopt) << key;
        EXPECT_EQ(chatMessageFromJson(with(plainMessage, key, nullptr)), std::nullopt) << key;
    }
}

TEST(ChatMessageJsonTest, EveryRequiredKeyOfAnAttachmentIsRequired)
{
    ASSERT_TRUE(chatAttachmentFromJson(parsed(fullAttachment)).has_value());
    for (const char *key : {"id", "filename", "kind", "extractedText", "byteSize"}) {
        EXPECT_EQ(chatAttachmentFromJson(without(fullAttachment, key)), std::nullopt) << key;
        EXPECT_EQ(chatAttachmentFromJson(with(fullAttachment, key, nullptr)), std::nullopt) << key;
    }
}

TEST(ChatMessageJsonTest, WrongTypesFail)
{
    for (const char *key : {"id", "role", "text", "isStreaming", "errorMessage", "attachments", "date"})
        EXPECT_EQ(chatMessageFromJson(with(plainMessage, key, json::object())), std::nullopt) << key;
    for (const char *key : {"id", "filename", "kind", "data", "extractedText", "mimeType", "byteSize"})
        EXPECT_EQ(chatAttachmentFromJson(with(fullAttachment, key, json::array())), std::nullopt) << key;
    EXPECT_EQ(chatMessageFromJson(with(plainMessage, "isStreaming", 1)), std::nullopt);
    EXPECT_EQ(chatMessageFromJson(with(plainMessage, "date", "712345678")), std::nullopt);
    EXPECT_EQ(chatMessageFromJson(json::array()), std::nullopt);
    EXPECT_EQ(chatAttachmentFromJson(nullptr), std::nullopt);
}

TEST(ChatMessageJsonTest, OneBrokenAttachmentFailsTheMessage)
{
    json::array attachments{parsed(fullAttachment), without(fullAttachment, "byteSize")};
    EXPECT_EQ(chatMessageFromJson(with(plainMessage, "attachments", attachments)), std::nullopt);
}

TEST(ChatMessageJsonTest, UnknownTextsOfEnumerationsFail)
{
    for (const char *role : {"", "User", "system", "assistant "})
        EXPECT_EQ(chatMessageFromJson(with(plainMessage, "role", role)), std::nullopt) << role;
    for (const char *kind : {"", "Image", "video"})
        EXPECT_EQ(chatAttachmentFromJson(with(fullAttachment, "kind", kind)), std::nullopt) << kind;
}

TEST(ChatMessageJsonTest, IdentifiersAreStrict)
{
    EXPECT_TRUE(
        chatMessageFromJson(with(plainMessage, "id", "0a1b2c3d-4e5f-4a6b-8c9d-0e1f2a3b4c5d")).has_value());
    for (const char *id :
         {"", "x", "{0A1B2C3D-4E5F-4A6B-8C9D-0E1F2A3B4C5D}", "0A1B2C3D4E5F4A6B8C9D0E1F2A3B4C5D"})
        EXPECT_EQ(chatMessageFromJson(with(plainMessage, "id", id)), std::nullopt) << id;
}

TEST(ChatMessageJsonTest, DatesMayBeIntegers)
{
    EXPECT_EQ(chatMessageFromJson(with(plainMessage, "date", 5))->date, 5.0);
    EXPECT_EQ(chatMessageFromJson(with(plainMessage, "date", -5.25))->date, -5.25);
    EXPECT_EQ(
        chatMessageFromJson(with(plainMessage, "date", std::numeric_limits<std::uint64_t>::max()))->date,
        18446744073709551615.0);
}

TEST(ChatMessageJsonTest, SizesAreIntegralNumbersThatFit)
{
    EXPECT_EQ(chatAttachmentFromJson(with(fullAttachment, "byteSize", 5.0))->byteSize, 5);
    EXPECT_EQ(chatAttachmentFromJson(with(fullAttachment, "byteSize", -1))->byteSize, -1);
    EXPECT_EQ(chatAttachmentFromJson(with(fullAttachment, "byteSize", 5.5)), std::nullopt);
    EXPECT_EQ(chatAttachmentFromJson(with(fullAttachment, "byteSize", 1e300)), std::nullopt);
    EXPECT_EQ(
        chatAttachmentFromJson(with(fullAttachment, "byteSize", std::numeric_limits<std::uint64_t>::max())),
        std::nullopt);
}

TEST(ChatMessageJsonTest, BytesAreStandardBase64WithPadding)
{
    EXPECT_EQ(chatAttachmentFromJson(with(fullAttachment, "data", "AAA="))->data, QByteArray("\0\0", 2));
    for (const char *data : {"AAA", "A", "A===", "AA=A", "=AAA", "AA==AA==", "A-_A", "AAA\n", "AA A"})
        EXPECT_EQ(chatAttachmentFromJson(with(fullAttachment, "data", data)), std::nullopt) << data;
}

TEST(ChatMessageJsonTest, UnknownKeysAreIgnored)
{
    EXPECT_EQ(chatMessageFromJson(with(plainMessage, "future", json::array{1, 2})),
              chatMessageFromJson(parsed(plainMessage)));
}

} // namespace
} // namespace morvane
