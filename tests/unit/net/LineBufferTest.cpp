#include "net/LineBuffer.h"

#include <QList>
#include <gtest/gtest.h>
#include <random>

namespace morvane {
namespace {

QList<QByteArray> linesOf(const LineBatch &batch)
{
    QList<QByteArray> lines;
    for (qsizetype i = 0; i < batch.count(); ++i)
        lines.append(batch.line(i).toByteArray());
    return lines;
}

/// The plain meaning of the rule, to compare with.
QList<QByteArray> expectedLines(const QByteArray &stream)
{
    QList<QByteArray> lines;
    QByteArray line;
    for (const char c : stream + '\n') {
        if (c != '\n' && c != '\r') {
            line += c;
        } else if (!line.isEmpty()) {
            lines.append(line);
            line.clear();
        }
    }
    return lines;
}

TEST(LineBufferTest, EveryLineEndEndsALine)
{
    LineBuffer buffer(100);
    EXPECT_TRUE(buffer.append("a\nb\r\nc\rd"));
    EXPECT_EQ(linesOf(buffer.takeLines()), (QList<QByteArray>{"a", "b", "c"}));
    EXPECT_FALSE(buffer.hasLines());
    buffer.finish();
    EXPECT_EQ(linesOf(buffer.takeLines()), QList<QByteArray>{"d"});
}

TEST(LineBufferTest, EmptyLinesAreLeftOut)
{
    LineBuffer buffer(100);
    EXPECT_TRUE(buffer.append("\n\r\n\r\r\n\n"));
    buffer.finish();
    EXPECT_FALSE(buffer.hasLines());
    EXPECT_EQ(buffer.size(), 0);
}

TEST(LineBufferTest, LineEndThatIsCutInTwoGivesOneLine)
{
    LineBuffer buffer(100);
    EXPECT_TRUE(buffer.append("a\r"));
    EXPECT_EQ(linesOf(buffer.takeLines()), QList<QByteArray>{"a"});
    EXPECT_TRUE(buffer.append("\nb"));
    EXPECT_FALSE(buffer.hasLines());
    EXPECT_TRUE(buffer.append("\n"));
    EXPECT_EQ(linesOf(buffer.takeLines()), QList<QByteArray>{"b"});
}

TEST(LineBufferTest, OpenLineSurvivesTheTakingOfThoseBefore)
{
    LineBuffer buffer(100);
    EXPECT_TRUE(buffer.append("one\ntw"));
    EXPECT_EQ(linesOf(buffer.takeLines()), QList<QByteArray>{"one"});
    EXPECT_TRUE(buffer.append("o\n"));
    EXPECT_EQ(linesOf(buffer.takeLines()), QList<QByteArray>{"two"});
}

TEST(LineBufferTest, LimitCountsTheBytesOfALineWithoutItsEnd)
{
    LineBuffer exact(3);
    EXPECT_TRUE(exact.append("abc\r\nab"));
    EXPECT_TRUE(exact.append("c\n"));
    LineBuffer above(3);
    EXPECT_TRUE(above.append("x\nab"));
    EXPECT_FALSE(above.append("cd\n"));
    EXPECT_EQ(linesOf(above.takeLines()), QList<QByteArray>{"x"});
}

TEST(LineBufferTest, BytesOfAnyValueStayAsTheyAre)
{
    QByteArray line;
    for (int value = 0; value < 256; ++value)
        if (value != '\n' && value != '\r')
            line += static_cast<char>(value);
    LineBuffer buffer(1000);
    EXPECT_TRUE(buffer.append(line + '\n'));
    EXPECT_EQ(linesOf(buffer.takeLines()), QList<QByteArray>{line});
}

TEST(LineBufferTest, AnyCutOfAnyStreamGivesTheSameLines)
{
    std::mt19937 random(7);
    const QByteArray alphabet = "ab\n\r";
    for (int round = 0; round < 2000; ++round) {
        QByteArray stream;
        for (std::size_t size = random() % 40; size > 0; --size)
            stream += alphabet[static_cast<qsizetype>(random() % 4)];
        LineBuffer buffer(1000);
        QList<QByteArray> lines;
        for (qsizetype position = 0; position < stream.size();) {
            const qsizetype size =
                std::min<qsizetype>(1 + static_cast<qsizetype>(random() % 7), stream.size() - position);
            ASSERT_TRUE(buffer.append(QByteArrayView(stream).sliced(position, size)));
            position += size;
            if (random() % 3 == 0)
                lines += linesOf(buffer.takeLines());
        }
        buffer.finish();
        lines += linesOf(buffer.takeLines());
        ASSERT_EQ(lines, expectedLines(stream)) << stream.toPercentEncoding().constData();
    }
}

} // namespace
} // namespace morvane
