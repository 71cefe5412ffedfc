#include "mcp/LineFraming.h"

#include "mcp/JsonRpc.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

using Lines = QList<QByteArray>;

TEST(LineFramingTest, TwoLinesInOneChunkBothCome)
{
    LineFraming framing;
    EXPECT_EQ(framing.consume("{\"id\":1}\n{\"id\":2}\n"), (Lines{"{\"id\":1}", "{\"id\":2}"}));
    EXPECT_EQ(framing.pendingBytes(), 0);
}

TEST(LineFramingTest, ALineSplitOverChunksComesWithItsLineFeed)
{
    LineFraming framing;
    EXPECT_EQ(framing.consume("{\"id\""), Lines{});
    EXPECT_EQ(framing.consume(":1}"), Lines{});
    EXPECT_EQ(framing.consume("\n{"), Lines{"{\"id\":1}"});
    EXPECT_EQ(framing.consume("}\n"), Lines{"{}"});
}

TEST(LineFramingTest, ALastLineWithoutLineFeedStays)
{
    LineFraming framing;
    EXPECT_EQ(framing.consume("a\nb"), Lines{"a"});
    EXPECT_EQ(framing.pendingBytes(), 1);
}

TEST(LineFramingTest, CarriageReturnAndLineFeedDoNotEndALine)
{
    LineFraming framing;
    EXPECT_EQ(framing.consume("{\"id\":1}\r\n"), Lines{});
    EXPECT_EQ(framing.consume("{\"id\":2}\r\n"), Lines{});
    const Lines lines = framing.consume("\n");
    ASSERT_EQ(lines, Lines{"{\"id\":1}\r\n{\"id\":2}\r\n"});
    EXPECT_FALSE(parseJSONText(lines.first()));
}

TEST(LineFramingTest, AMessageBehindCarriageReturnAndLineFeedIsReadIfOnlyWhiteSpaceFollows)
{
    LineFraming framing;
    const Lines lines = framing.consume("{\"id\":1}\r\n  \n");
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(parseJSONText(lines.first()));
}

TEST(LineFramingTest, ACarriageReturnInOneChunkAndItsLineFeedInTheNextAreOneCharacter)
{
    LineFraming framing;
    EXPECT_EQ(framing.consume("a\r"), Lines{});
    EXPECT_EQ(framing.consume("\n"), Lines{});
    EXPECT_EQ(framing.consume("\n"), Lines{"a\r\n"});
}

TEST(LineFramingTest, AChunkCutInsideACharacterIsDroppedWhole)
{
    LineFraming framing;
    EXPECT_EQ(framing.consume("{\"a\":\"\xC3"), Lines{});
    EXPECT_EQ(framing.pendingBytes(), 0);
    EXPECT_EQ(framing.consume("\xBC\"}\n"), Lines{}) << "its other half is no text either";
    EXPECT_EQ(framing.consume("{}\n"), Lines{"{}"});
}

TEST(LineFramingTest, GarbageBetweenMessagesIsALineOfItsOwn)
{
    LineFraming framing;
    EXPECT_EQ(framing.consume("Server is ready!\n\n{}\n"), (Lines{"Server is ready!", "", "{}"}));
}

TEST(LineFramingTest, ALongLineInPiecesCostsTimeInProportion)
{
    // Searching the whole line for each of 2,500 pieces would pass over 12 GB.
    const QByteArray piece(4096, 'x');
    LineFraming framing;
    for (int i = 0; i < 12'500; ++i)
        EXPECT_TRUE(framing.consume(piece).isEmpty());
    const Lines lines = framing.consume("\n");
    ASSERT_EQ(lines.size(), 1);
    EXPECT_EQ(lines.first().size(), 12'500 * 4096);
    EXPECT_LT(lines.first().capacity(), 3 * lines.first().size());
    EXPECT_EQ(framing.pendingBytes(), 0) << "the line took the buffer along";
}

TEST(LineFramingTest, ALineInAMillionPiecesIsReadOnce)
{
    // Were all of it looked through again for each piece, this would take an hour and more.
    const QByteArray piece(64, 'x');
    LineFraming framing;
    for (int i = 0; i < 1'000'000; ++i)
        ASSERT_TRUE(framing.consume(piece).isEmpty());
    const Lines lines = framing.consume("\n");
    ASSERT_EQ(lines.size(), 1);
    EXPECT_EQ(lines.first().size(), 64'000'000);
}

TEST(LineFramingTest, ALineThatNoReaderCouldTakeIsSkippedAndTheNextOneCounts)
{
    LineFraming framing(1000);
    for (int i = 0; i < 100; ++i)
        EXPECT_TRUE(framing.consume(QByteArray(100, 'x')).isEmpty());
    EXPECT_LE(framing.pendingBytes(), 1000);
    EXPECT_EQ(framing.consume("x\n{}\n"), Lines{"{}"});
}

} // namespace
} // namespace morvane
