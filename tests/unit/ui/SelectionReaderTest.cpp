#include "ui/conversation/SelectionReader.h"

#include "support/SampleMessage.h"
#include "ui/conversation/MessageParts.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

QString megabyte()
{
    return u"A paragraph with **bold** words and `code`.\n\n"_s.repeated(25'000);
}

/// The text, and how many letters came at most in one go.
std::pair<QString, qsizetype> readInPieces(QList<SelectedRow> rows, qsizetype letters)
{
    SelectionReader reader(std::move(rows));
    qsizetype most = 0;
    while (!reader.isAtEnd()) {
        const qsizetype before = reader.text().size();
        reader.read(letters);
        most = qMax(most, reader.text().size() - before);
    }
    return {reader.text(), most};
}

TEST(SelectionReaderTest, AMessageOfAMegabyteIsReadInPieces)
{
    const ChatMessage message = sampleMessage(Role::assistant, megabyte());
    const auto [text, most] = readInPieces({message}, 30'000);
    EXPECT_LT(most, 40'000);
    EXPECT_GT(text.size(), 900'000);
    EXPECT_EQ(text, SelectionReader::wholeText({message}));
    EXPECT_TRUE(text.startsWith(
        "A paragraph with bold words and code.\n\nA paragraph with bold words and code.\n\nA par"_L1));
}

TEST(SelectionReaderTest, AStretchOfAMegabyteIsReadInPieces)
{
    const ChatMessage message = sampleMessage(Role::assistant, megabyte());
    SelectedStretch stretch{
        .message = message, .row = rowOf(message), .head = u"code."_s, .tail = u"A par"_s};
    const qsizetype segments = stretch.row.segments.size();
    ASSERT_GT(segments, 100);
    stretch.first = 1;
    stretch.last = segments - 2;
    const auto [text, most] = readInPieces({stretch}, 30'000);
    EXPECT_LT(most, 40'000);
    EXPECT_TRUE(text.startsWith("code.\n\nA paragraph with bold"_L1));
    EXPECT_TRUE(text.endsWith("code.\n\nA par"_L1));
    EXPECT_EQ(text, SelectionReader::wholeText({stretch}));
}

TEST(SelectionReaderTest, AnEmptyLineStandsBetweenRowsThatHaveText)
{
    ChatMessage failed = sampleMessage(Role::assistant, u"One.\n\nTwo."_s);
    failed.errorMessage = u"It broke."_s;
    EXPECT_EQ(
        SelectionReader::wholeText({sampleMessage(Role::user, u"Why?"_s), u"Activity"_s, QString(), failed}),
        u"Why?\n\nActivity\n\nOne.\n\nTwo.\nError: It broke."_s);
    EXPECT_EQ(SelectionReader::wholeText({}), QString());
}

TEST(SelectionReaderTest, TheEndsOfAStretchMayBeNextToEachOther)
{
    const ChatMessage message = sampleMessage(Role::assistant, u"One.\n\n```\ntwo\n```\n\nThree."_s);
    SelectedStretch stretch{
        .message = message, .row = rowOf(message), .first = 1, .last = 0, .head = u"ne."_s, .tail = u"tw"_s};
    ASSERT_EQ(stretch.row.segments.size(), 3);
    EXPECT_EQ(SelectionReader::wholeText({stretch}), u"ne.\n\ntw"_s);
}

} // namespace
} // namespace morvane
