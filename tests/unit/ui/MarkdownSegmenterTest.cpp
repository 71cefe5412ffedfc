#include "ui/markdown/MarkdownSegmenter.h"

#include "ui/markdown/SegmentText.h"

#include <QStringList>
#include <gtest/gtest.h>

namespace morvane {
namespace {

using Kind = TextSegment::Kind;

QList<TextSegment> cut(const QString &text)
{
    return MarkdownSegmenter::segments(text).segments;
}

/// What is shown of the whole text: Markdown sources and code, a line feed between segments.
QString shown(const QString &text)
{
    const MarkdownSegments result = MarkdownSegmenter::segments(text);
    QStringList parts;
    for (const TextSegment &segment : result.segments) {
        parts +=
            segment.kind == Kind::code ? codeText(text, segment) : markdownSource(text, segment, QString());
    }
    return parts.join(u'\n');
}

TEST(MarkdownSegmenterTest, AShortAnswerIsOneSegment)
{
    const QString text = QStringLiteral("# Title\n\nText.\n\n- a\n- b\n");
    const auto segments = cut(text);
    ASSERT_EQ(segments.size(), 1);
    EXPECT_EQ(segments[0].kind, Kind::markdown);
}

TEST(MarkdownSegmenterTest, AnEmptyTextIsOneEmptySegment)
{
    EXPECT_EQ(cut({}).size(), 1);
}

TEST(MarkdownSegmenterTest, AFenceShowsItsCodeWithoutTheFenceLines)
{
    const QString text = QStringLiteral("Before\n```python\nprint(1)\n\nprint(2)\n```\nAfter");
    const auto segments = cut(text);
    ASSERT_EQ(segments.size(), 3);
    EXPECT_EQ(segments[1].kind, Kind::code);
    EXPECT_EQ(codeText(text, segments[1]), QStringLiteral("print(1)\n\nprint(2)"));
    EXPECT_EQ(codeLanguage(text, segments[1]), QStringLiteral("python"));
    EXPECT_FALSE(shown(text).contains(QStringLiteral("```")));
}

TEST(MarkdownSegmenterTest, EveryLineThatBeginsWithThreeBackticksIsLeftOut)
{
    EXPECT_EQ(shown(QStringLiteral("a\n```inline``` b\nc")), QStringLiteral("a\nc"));
    EXPECT_EQ(shown(QStringLiteral("````\nx\n```\ny\n````")), QStringLiteral("x\ny"));
    EXPECT_EQ(shown(QStringLiteral("  ```\nx")), QStringLiteral("x"));
}

TEST(MarkdownSegmenterTest, LeadingQuoteMarksAreRemovedFromEveryLine)
{
    EXPECT_EQ(shown(QStringLiteral("> a\n>b\n>> c\n> > d\nx > y")), QStringLiteral("a\nb\nc\nd\nx > y"));
}

TEST(MarkdownSegmenterTest, CodeInAQuoteIsCode)
{
    const QString text = QStringLiteral("> ```sh\n> ls\n> ```");
    const auto segments = cut(text);
    ASSERT_EQ(segments.size(), 1);
    EXPECT_EQ(codeText(text, segments[0]), QStringLiteral("ls"));
    EXPECT_EQ(copiedCode(text, segments[0]), QStringLiteral("ls"));
}

TEST(MarkdownSegmenterTest, CopiedCodeKeepsItsOwnAngleBrackets)
{
    const QString text = QStringLiteral("```\n> log.txt\n```");
    const auto segments = cut(text);
    ASSERT_EQ(segments.size(), 1);
    EXPECT_EQ(codeText(text, segments[0]), QStringLiteral("log.txt"));
    EXPECT_EQ(copiedCode(text, segments[0]), QStringLiteral("> log.txt"));
}

TEST(MarkdownSegmenterTest, CodeInAListIsDedentedAndTheTextBehindItGoesOnInTheItem)
{
    const QString text = QStringLiteral("1. Do:\n   ```\n   a\n     b\n   ```\n   then this\n2. Done");
    const auto segments = cut(text);
    ASSERT_EQ(segments.size(), 4);
    EXPECT_EQ(codeText(text, segments[1]), QStringLiteral("a\n  b"));
    EXPECT_EQ(segments[1].indent, 3);
    EXPECT_EQ(segments[2].indent, 3);
    EXPECT_EQ(markdownSource(text, segments[2], {}), QStringLiteral("then this"));
    EXPECT_EQ(markdownSource(text, segments[3], {}), QStringLiteral("2. Done"));
}

TEST(MarkdownSegmenterTest, AFenceBehindAListMarkerOpensCode)
{
    const QString text = QStringLiteral("- ```\n  a\n  ```\n- b");
    const auto segments = cut(text);
    ASSERT_EQ(segments.size(), 2);
    EXPECT_EQ(segments[0].kind, Kind::code);
    EXPECT_EQ(codeText(text, segments[0]), QStringLiteral("a"));
    EXPECT_EQ(markdownSource(text, segments[1], {}), QStringLiteral("- b"));
}

TEST(MarkdownSegmenterTest, AnOpenFenceRunsToTheEnd)
{
    const QString text = QStringLiteral("```\na\nb");
    const auto segments = cut(text);
    ASSERT_EQ(segments.size(), 1);
    EXPECT_EQ(codeText(text, segments[0]), QStringLiteral("a\nb"));
}

TEST(MarkdownSegmenterTest, TildesFenceToo)
{
    const QString text = QStringLiteral("~~~ c\nint x;\n~~~");
    const auto segments = cut(text);
    ASSERT_EQ(segments.size(), 1);
    EXPECT_EQ(codeText(text, segments[0]), QStringLiteral("int x;"));
    EXPECT_EQ(codeLanguage(text, segments[0]), QStringLiteral("c"));
}

TEST(MarkdownSegmenterTest, IndentedCodeKeepsItsWhiteSpace)
{
    const QString text = QStringLiteral("Text:\n\n    a\n      b\n\n    c\n\nafter");
    const auto segments = cut(text);
    ASSERT_EQ(segments.size(), 3);
    EXPECT_EQ(segments[1].kind, Kind::code);
    EXPECT_EQ(codeText(text, segments[1]), QStringLiteral("a\n  b\n\nc"));
    EXPECT_EQ(codeLanguage(text, segments[1]), QString());
}

TEST(MarkdownSegmenterTest, IndentedTextInAListIsNoCode)
{
    const QString text = QStringLiteral("- item\n\n    more of the item\n");
    const auto segments = cut(text);
    ASSERT_EQ(segments.size(), 1);
    EXPECT_EQ(segments[0].kind, Kind::markdown);
}

TEST(MarkdownSegmenterTest, LongAnswersAreCutBetweenBlocks)
{
    QString text;
    for (int i = 0; i < 200; ++i) {
        text += QStringLiteral("Paragraph %1 ").arg(i) + QString(200, u'x') + QStringLiteral("\n\n");
    }
    const auto segments = cut(text);
    EXPECT_GT(segments.size(), 5);
    for (const TextSegment &segment : segments) {
        EXPECT_LE(segment.length, segmentLimit);
        EXPECT_TRUE(text.sliced(segment.from).startsWith(QStringLiteral("Paragraph")));
    }
}

TEST(MarkdownSegmenterTest, LongListsAreCutBetweenTopItems)
{
    QString text;
    for (int i = 1; i <= 200; ++i) {
        text += QStringLiteral("%1. item\n   - inner ").arg(i) + QString(60, u'x') + u'\n';
    }
    for (const TextSegment &segment : cut(text)) {
        EXPECT_TRUE(text.at(segment.from).isDigit());
    }
}

TEST(MarkdownSegmenterTest, LongTablesRepeatTheirHeading)
{
    QString text = QStringLiteral("| name | value |\n|---|---|\n");
    for (int i = 0; i < 300; ++i) {
        text += QStringLiteral("| row %1 | %2 |\n").arg(i).arg(QString(20, u'v'));
    }
    const auto segments = cut(text);
    ASSERT_GT(segments.size(), 2);
    for (const TextSegment &segment : segments) {
        EXPECT_TRUE(
            markdownSource(text, segment, {}).startsWith(QStringLiteral("| name | value |\n|---|---|\n")));
    }
}

TEST(MarkdownSegmenterTest, LongCodeIsCutAtLinesAndKnowsItsEnds)
{
    QString text = QStringLiteral("```\n");
    for (int i = 0; i < 1000; ++i) {
        text += QStringLiteral("line of code number %1\n").arg(i);
    }
    text += QStringLiteral("```\nend");
    const auto segments = cut(text);
    ASSERT_GT(segments.size(), 4);
    EXPECT_TRUE(segments.first().startsBlock);
    EXPECT_FALSE(segments.first().endsBlock);
    EXPECT_FALSE(segments.at(1).startsBlock);
    EXPECT_TRUE(segments.at(segments.size() - 2).endsBlock);
    QStringList lines;
    for (const TextSegment &segment : segments.first(segments.size() - 1)) {
        lines += codeText(text, segment);
    }
    EXPECT_EQ(lines.join(u'\n').count(u'\n'), 999);
}

TEST(MarkdownSegmenterTest, AParagraphWithoutLineEndsIsCutBetweenWords)
{
    const QString text = QStringLiteral("token ").repeated(100'000);
    const auto segments = cut(text);
    EXPECT_GE(segments.size(), 150);
    QStringList parts;
    for (const TextSegment &segment : segments) {
        EXPECT_LE(segment.length, segmentLimit);
        parts += markdownSource(text, segment, {});
    }
    EXPECT_EQ(parts.join(u' '), text.trimmed());
}

TEST(MarkdownSegmenterTest, DefinitionsReachEverySegment)
{
    QString text = QStringLiteral("See [the page][1].\n\n");
    for (int i = 0; i < 40; ++i) {
        text += QString(200, u'x') + QStringLiteral("\n\n");
    }
    text += QStringLiteral("[1]: https://example.com\n");
    const MarkdownSegments result = MarkdownSegmenter::segments(text);
    ASSERT_GT(result.segments.size(), 1);
    EXPECT_TRUE(markdownSource(text, result.segments.first(), result.references)
                    .contains(QStringLiteral("[1]: https://example.com")));
}

TEST(MarkdownSegmenterTest, CarriageReturnsAreNoText)
{
    EXPECT_EQ(shown(QStringLiteral("a\r\n```\r\nb\r\n```\r\nc")), QStringLiteral("a\nb\nc"));
}

} // namespace
} // namespace morvane
