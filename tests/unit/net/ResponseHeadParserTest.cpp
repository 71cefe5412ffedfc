#include "net/ResponseHeadParser.h"

#include <QList>
#include <gtest/gtest.h>

namespace morvane {
namespace {

ResponseHeadParser parse(const QList<QByteArray> &lines)
{
    ResponseHeadParser parser;
    for (const QByteArray &line : lines)
        parser.addLine(line);
    return parser;
}

TEST(ResponseHeadParserTest, StatusAndFieldsUpToTheEmptyLine)
{
    const auto parser = parse({"HTTP/1.1 404 Not Found\r\n", "A: 1\r\n", "b:2\r\n", "C:\r\n", "\r\n"});
    EXPECT_TRUE(parser.isComplete());
    EXPECT_EQ(parser.status(), 404);
    EXPECT_EQ(parser.headers().fields(), (QList<HttpHeaders::Field>{{"A", "1"}, {"b", "2"}, {"C", ""}}));
}

TEST(ResponseHeadParserTest, IncompleteWithoutTheEmptyLine)
{
    EXPECT_FALSE(parse({}).isComplete());
    EXPECT_FALSE(parse({"HTTP/2 200 \r\n", "a: 1\r\n"}).isComplete());
}

TEST(ResponseHeadParserTest, InterimHeadsAreForgotten)
{
    auto parser = parse({"HTTP/1.1 100 Continue\r\n", "A: 1\r\n", "\r\n"});
    EXPECT_FALSE(parser.isComplete());
    for (const char *line : {"HTTP/1.1 200 OK\r\n", "B: 2\r\n", "\r\n"})
        parser.addLine(line);
    EXPECT_TRUE(parser.isComplete());
    EXPECT_EQ(parser.headers().fields(), (QList<HttpHeaders::Field>{{"B", "2"}}));
}

TEST(ResponseHeadParserTest, OddLinesAreNoFields)
{
    const auto parser = parse({"HTTP/1.1 200\n", "no colon\n", ": no name\n", " folded: value\n", "\n"});
    EXPECT_TRUE(parser.isComplete());
    EXPECT_EQ(parser.status(), 200);
    EXPECT_TRUE(parser.headers().fields().isEmpty());
}

TEST(ResponseHeadParserTest, ShortStatusLinesAreNoStatus)
{
    EXPECT_EQ(parse({"HTTP/1.1\r\n"}).status(), 0);
    EXPECT_EQ(parse({"HTTP/1.1 \r\n"}).status(), 0);
    EXPECT_EQ(parse({"HTTP/1.1 2\r\n"}).status(), 2);
    EXPECT_EQ(parse({"HTTP/1.1 abc\r\n"}).status(), 0);
}

} // namespace
} // namespace morvane
