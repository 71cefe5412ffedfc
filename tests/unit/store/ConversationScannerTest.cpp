#include "store/ConversationScanner.h"

#include "base/Json.h"
#include "store/ConversationFile.h"
#include "support/ConversationOracle.h"
#include "support/SampleConversation.h"

#include <gtest/gtest.h>
#include <random>

namespace morvane {
namespace {

std::optional<ConversationSummary> scanned(QByteArrayView bytes, qsizetype pieceSize)
{
    ConversationScanner scanner;
    while (!bytes.isEmpty()) {
        const QByteArrayView piece = bytes.first(std::min(pieceSize, bytes.size()));
        bytes = bytes.sliced(piece.size());
        if (!scanner.feed(piece))
            return std::nullopt;
    }
    return scanner.finish();
}

std::optional<ConversationSummary> decoded(QByteArrayView bytes)
{
    const auto file = decodeConversation(bytes);
    EXPECT_EQ(file, conversationOfWholeValue(bytes)) << bytes.toByteArray().constData();
    if (!file)
        return std::nullopt;
    return ConversationSummary{.id = file->id,
                               .title = file->title,
                               .createdAt = file->createdAt,
                               .updatedAt = file->updatedAt,
                               .messageCount = file->messages.size()};
}

/// Scanning in pieces of any size gives what decoding gives; says whether that was a conversation.
bool expectSameAsDecoding(const QByteArray &bytes)
{
    const auto expected = decoded(bytes);
    for (const qsizetype pieceSize :
         {qsizetype(3), qsizetype(7), qsizetype(64), std::max<qsizetype>(bytes.size(), 3)})
        EXPECT_EQ(scanned(bytes, pieceSize), expected) << pieceSize << ": " << bytes.toStdString();
    return expected.has_value();
}

QByteArray conversation(const QByteArray &messages)
{
    return R"({"id":"0A1B2C3D-4E5F-4A6B-8C9D-0E1F2A3B4C5D","title":"T","createdAt":1,"updatedAt":2.5,)"
           R"("messages":)" +
           messages + '}';
}

QByteArray message(const QByteArray &changed = {})
{
    return R"({"id":"1A1B2C3D-4E5F-4A6B-8C9D-0E1F2A3B4C5D","role":"user","text":"x","isStreaming":false,)"
           R"("date":1)" +
           (changed.isEmpty() ? QByteArray() : ',' + changed) + '}';
}

QByteArray attachment(const QByteArray &changed = {})
{
    return R"("attachments":[{"id":"2A1B2C3D-4E5F-4A6B-8C9D-0E1F2A3B4C5D","filename":"f","kind":"pdf",)"
           R"("extractedText":"","byteSize":5)" +
           (changed.isEmpty() ? QByteArray() : ',' + changed) + "}]";
}

TEST(ConversationScannerTest, SummaryIsThatOfTheFile)
{
    const ConversationFile file = sampleConversation(7, 200, 1000);
    const auto summary = scanned(encodeConversation(file), 1 << 20);
    ASSERT_TRUE(summary.has_value());
    EXPECT_EQ(summary->id, file.id);
    EXPECT_EQ(summary->title, file.title);
    EXPECT_EQ(summary->createdAt, file.createdAt);
    EXPECT_EQ(summary->updatedAt, file.updatedAt);
    EXPECT_EQ(summary->messageCount, 7);
}

TEST(ConversationScannerTest, AcceptsWhatDecodes)
{
    EXPECT_TRUE(expectSameAsDecoding(conversation("[]")));
    EXPECT_TRUE(expectSameAsDecoding("\xEF\xBB\xBF" + conversation("[]")));
    EXPECT_TRUE(expectSameAsDecoding("  \n" + conversation("[]") + " \r\n\t"));
    EXPECT_TRUE(expectSameAsDecoding(conversation('[' + message() + ',' + message() + ']')));
    EXPECT_TRUE(expectSameAsDecoding(conversation('[' + message(attachment()) + ']')));
    EXPECT_TRUE(expectSameAsDecoding(conversation('[' + message("\"attachments\":null") + ']')));
    EXPECT_TRUE(expectSameAsDecoding(conversation('[' + message("\"errorMessage\":null") + ']')));
    EXPECT_TRUE(expectSameAsDecoding(conversation('[' + message("\"future\":[{\"a\":[1,{}]},null]") + ']')));
    EXPECT_TRUE(expectSameAsDecoding(conversation("[]").replace("\"id\"", "\"\\u0069d\"")));
    EXPECT_TRUE(expectSameAsDecoding(conversation("[]").replace("\"T\"", "\"\\ud83d\\ude42\\u0000\"")));
    EXPECT_TRUE(expectSameAsDecoding(conversation("[]").replace("2.5", "785234567.12345678901234567890")));
}

TEST(ConversationScannerTest, RefusesWhatDoesNotDecode)
{
    for (const QByteArray &bytes :
         {QByteArray(), QByteArray("null"), QByteArray("[]"), QByteArray("{}"), QByteArray("[{}]"),
          conversation("{}"), conversation("null"), conversation("[1]"), conversation("[[]]"),
          conversation("[{}]"), conversation("[null]"), conversation("[]") + '{', conversation("[]") + "]",
          conversation("[]").chopped(1), QByteArray("\0", 1), conversation("[1e999]")})
        EXPECT_FALSE(expectSameAsDecoding(bytes));
}

TEST(ConversationScannerTest, ChecksEveryFieldAsDecodingDoes)
{
    for (const QByteArray &value :
         {"null",
          "true",
          "1",
          "1.0",
          "1.5",
          "1e300",
          "18446744073709551615",
          "\"\"",
          "\"user\"",
          "\"pdf\"",
          "\"AAAA\"",
          "\"AAA\"",
          "\"AA==\"",
          "\"A===\"",
          "\"AA=A\"",
          "\"AA==AAAA\"",
          "\"====\"",
          "\"A-_A\"",
          "[]",
          "{}",
          "[{}]",
          "\"0A1B2C3D-4E5F-4A6B-8C9D-0E1F2A3B4C5D\"",
          "\"0A1B2C3D-4E5F-4A6B-8C9D-0E1F2A3B4C5D0A1B2C3D-4E5F-4A6B-8C9D-0E1F2A3B4C5D\""}) {
        for (const char *key : {"id", "title", "createdAt", "updatedAt", "messages", "other"})
            expectSameAsDecoding(conversation("[],\"" + QByteArray(key) + "\":" + value));
        for (const char *key :
             {"id", "role", "text", "isStreaming", "errorMessage", "attachments", "date", "other"})
            expectSameAsDecoding(conversation('[' + message('"' + QByteArray(key) + "\":" + value) + ']'));
        for (const char *key :
             {"id", "filename", "kind", "data", "extractedText", "mimeType", "byteSize", "other"})
            expectSameAsDecoding(
                conversation('[' + message(attachment('"' + QByteArray(key) + "\":" + value)) + ']'));
    }
}

TEST(ConversationScannerTest, MissingFieldsFailAsInDecoding)
{
    const QByteArray whole = conversation('[' + message(attachment()) + ']');
    for (const char *key : {"id", "title", "createdAt", "updatedAt", "messages", "role", "text",
                            "isStreaming", "date", "filename", "kind", "extractedText", "byteSize"})
        EXPECT_FALSE(expectSameAsDecoding(QByteArray(whole).replace('"' + QByteArray(key) + '"', "\"x\"")))
            << key;
}

TEST(ConversationScannerTest, LastOfEqualKeysCountsAsInDecoding)
{
    EXPECT_TRUE(expectSameAsDecoding(conversation("1,\"messages\":[" + message() + ']')));
    EXPECT_TRUE(expectSameAsDecoding(conversation("[1,2],\"messages\":[" + message() + ']')));
    EXPECT_TRUE(expectSameAsDecoding(conversation('[' + message() + "],\"messages\":[]")));
    EXPECT_FALSE(expectSameAsDecoding(conversation("[],\"messages\":[1]")));
    EXPECT_TRUE(expectSameAsDecoding(conversation("[],\"title\":7,\"title\":\"again\",\"createdAt\":-3")));
    EXPECT_TRUE(
        expectSameAsDecoding(conversation('[' + message("\"attachments\":[1],\"attachments\":[]") + ']')));
    EXPECT_FALSE(
        expectSameAsDecoding(conversation('[' + message("\"attachments\":[],\"attachments\":[1]") + ']')));
}

TEST(ConversationScannerTest, DepthIsLimitedAsInDecoding)
{
    const auto nested = [](qsizetype depth) {
        return conversation("[],\"other\":" + QByteArray(depth, '[') + QByteArray(depth, ']'));
    };
    EXPECT_TRUE(expectSameAsDecoding(nested(static_cast<qsizetype>(maximumJsonDepth) - 1)));
    EXPECT_FALSE(expectSameAsDecoding(nested(static_cast<qsizetype>(maximumJsonDepth))));
}

TEST(ConversationScannerTest, RandomDamageIsJudgedAsInDecoding)
{
    std::mt19937 random(7);
    const QByteArray whole = encodeConversation(sampleConversation(2, 30, 20));
    const QByteArray replacements("{}[]\",:0e.\\\xff ntA\0", 17);
    int accepted = 0;
    for (int i = 0; i < 3000; ++i) {
        QByteArray bytes = whole;
        const auto at = static_cast<qsizetype>(random() % static_cast<unsigned>(bytes.size()));
        switch (random() % 3) {
        case 0:
            bytes[at] = replacements[static_cast<qsizetype>(random() % 17)];
            break;
        case 1:
            bytes.remove(at, static_cast<qsizetype>(random() % 10));
            break;
        default:
            bytes.insert(at, bytes.mid(static_cast<qsizetype>(random() % static_cast<unsigned>(bytes.size())),
                                       static_cast<qsizetype>(random() % 40)));
        }
        accepted += expectSameAsDecoding(bytes) ? 1 : 0;
    }
    EXPECT_GT(accepted, 100);
    EXPECT_LT(accepted, 2900);
}

} // namespace
} // namespace morvane
