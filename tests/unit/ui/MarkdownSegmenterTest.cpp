#include "ui/markdown/MarkdownSegmenter.h"

#include "ui/markdown/LayoutCost.h"
#include "ui/markdown/MarkdownParser.h"
#include "ui/markdown/SegmentText.h"

#include <QStringList>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

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
    const QString text = u"# Title\n\nText.\n\n- a\n- b\n"_s;
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
    const QString text = u"Before\n```python\nprint(1)\n\nprint(2)\n```\nAfter"_s;
    const auto segments = cut(text);
    ASSERT_EQ(segments.size(), 3);
    EXPECT_EQ(segments[1].kind, Kind::code);
    EXPECT_EQ(codeText(text, segments[1]), u"print(1)\n\nprint(2)"_s);
    EXPECT_EQ(codeLanguage(text, segments[1]), u"python"_s);
    EXPECT_FALSE(shown(text).contains(u"```"_s));
}

TEST(MarkdownSegmenterTest, EveryLineThatBeginsWithThreeBackticksIsLeftOut)
{
    EXPECT_EQ(shown(u"a\n```inline``` b\nc"_s), u"a\nc"_s);
    EXPECT_EQ(shown(u"````\nx\n```\ny\n````"_s), u"x\ny"_s);
    EXPECT_EQ(shown(u"  ```\nx"_s), u"x"_s);
}

TEST(MarkdownSegmenterTest, LeadingQuoteMarksAreRemovedFromEveryLine)
{
    EXPECT_EQ(shown(u"> a\n>b\n>> c\n> > d\nx > y"_s), u"a\nb\nc\nd\nx > y"_s);
}

TEST(MarkdownSegmenterTest, CodeInAQuoteIsCode)
{
    const QString text = u"> ```sh\n> ls\n> ```"_s;
    const auto segments = cut(text);
    ASSERT_EQ(segments.size(), 1);
    EXPECT_EQ(codeText(text, segments[0]), u"ls"_s);
    EXPECT_EQ(copiedCode(text, segments[0]), u"ls"_s);
}

TEST(MarkdownSegmenterTest, CopiedCodeKeepsItsOwnAngleBrackets)
{
    const QString text = u"```\n> log.txt\n```"_s;
    const auto segments = cut(text);
    ASSERT_EQ(segments.size(), 1);
    EXPECT_EQ(codeText(text, segments[0]), u"log.txt"_s);
    EXPECT_EQ(copiedCode(text, segments[0]), u"> log.txt"_s);
}

TEST(MarkdownSegmenterTest, CodeInAListIsDedentedAndTheTextBehindItGoesOnInTheItem)
{
    const QString text = u"1. Do:\n   ```\n   a\n     b\n   ```\n   then this\n2. Done"_s;
    const auto segments = cut(text);
    ASSERT_EQ(segments.size(), 4);
    EXPECT_EQ(codeText(text, segments[1]), u"a\n  b"_s);
    EXPECT_EQ(segments[1].indent, 3);
    EXPECT_EQ(segments[2].indent, 3);
    EXPECT_EQ(markdownSource(text, segments[2], {}), u"then this"_s);
    EXPECT_EQ(markdownSource(text, segments[3], {}), u"2. Done"_s);
}

TEST(MarkdownSegmenterTest, AFenceBehindAListMarkerOpensCode)
{
    const QString text = u"- ```\n  a\n  ```\n- b"_s;
    const auto segments = cut(text);
    ASSERT_EQ(segments.size(), 2);
    EXPECT_EQ(segments[0].kind, Kind::code);
    EXPECT_EQ(codeText(text, segments[0]), u"a"_s);
    EXPECT_EQ(markdownSource(text, segments[1], {}), u"- b"_s);
}

TEST(MarkdownSegmenterTest, AnOpenFenceRunsToTheEnd)
{
    const QString text = u"```\na\nb"_s;
    const auto segments = cut(text);
    ASSERT_EQ(segments.size(), 1);
    EXPECT_EQ(codeText(text, segments[0]), u"a\nb"_s);
}

TEST(MarkdownSegmenterTest, TildesFenceToo)
{
    const QString text = u"~~~ c\nint x;\n~~~"_s;
    const auto segments = cut(text);
    ASSERT_EQ(segments.size(), 1);
    EXPECT_EQ(codeText(text, segments[0]), u"int x;"_s);
    EXPECT_EQ(codeLanguage(text, segments[0]), u"c"_s);
}

TEST(MarkdownSegmenterTest, IndentedCodeKeepsItsWhiteSpace)
{
    const QString text = u"Text:\n\n    a\n      b\n\n    c\n\nafter"_s;
    const auto segments = cut(text);
    ASSERT_EQ(segments.size(), 3);
    EXPECT_EQ(segments[1].kind, Kind::code);
    EXPECT_EQ(codeText(text, segments[1]), u"a\n  b\n\nc"_s);
    EXPECT_EQ(codeLanguage(text, segments[1]), QString());
}

TEST(MarkdownSegmenterTest, IndentedTextInAListIsNoCode)
{
    const QString text = u"- item\n\n    more of the item\n"_s;
    const auto segments = cut(text);
    ASSERT_EQ(segments.size(), 1);
    EXPECT_EQ(segments[0].kind, Kind::markdown);
}

TEST(MarkdownSegmenterTest, LongAnswersAreCutBetweenBlocks)
{
    QString text;
    for (int i = 0; i < 200; ++i)
        text += u"Paragraph %1 "_s.arg(i) + QString(200, u'x') + u"\n\n"_s;
    const auto segments = cut(text);
    EXPECT_GT(segments.size(), 5);
    for (const TextSegment &segment : segments) {
        EXPECT_LE(segment.length, segmentLimit);
        EXPECT_TRUE(text.sliced(segment.from).startsWith(u"Paragraph"_s));
    }
}

TEST(MarkdownSegmenterTest, LongListsAreCutBetweenTopItems)
{
    QString text;
    for (int i = 1; i <= 200; ++i)
        text += u"%1. item\n   - inner "_s.arg(i) + QString(60, u'x') + u'\n';
    for (const TextSegment &segment : cut(text))
        EXPECT_TRUE(text.at(segment.from).isDigit());
}

TEST(MarkdownSegmenterTest, LongTablesRepeatTheirHeading)
{
    QString text = u"| name | value |\n|---|---|\n"_s;
    for (int i = 0; i < 300; ++i)
        text += u"| row %1 | %2 |\n"_s.arg(i).arg(QString(20, u'v'));
    const auto segments = cut(text);
    ASSERT_GT(segments.size(), 2);
    for (const TextSegment &segment : segments)
        EXPECT_TRUE(markdownSource(text, segment, {}).startsWith(u"| name | value |\n|---|---|\n"_s));
}

TEST(MarkdownSegmenterTest, LongCodeIsCutAtLinesAndKnowsItsEnds)
{
    QString text = u"```\n"_s;
    for (int i = 0; i < 1000; ++i)
        text += u"line of code number %1\n"_s.arg(i);
    text += u"```\nend"_s;
    const auto segments = cut(text);
    ASSERT_GT(segments.size(), 4);
    EXPECT_TRUE(segments.first().startsBlock);
    EXPECT_FALSE(segments.first().endsBlock);
    EXPECT_FALSE(segments.at(1).startsBlock);
    EXPECT_TRUE(segments.at(segments.size() - 2).endsBlock);
    QStringList lines;
    for (const TextSegment &segment : segments.first(segments.size() - 1))
        lines += codeText(text, segment);
    EXPECT_EQ(lines.join(u'\n').count(u'\n'), 999);
}

TEST(MarkdownSegmenterTest, AParagraphWithoutLineEndsIsCutBetweenWords)
{
    const QString text = u"token "_s.repeated(100'000);
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
    QString text = u"See [the page][1].\n\n"_s;
    for (int i = 0; i < 40; ++i)
        text += QString(200, u'x') + u"\n\n"_s;
    text += u"[1]: https://example.com\n"_s;
    const MarkdownSegments result = MarkdownSegmenter::segments(text);
    ASSERT_GT(result.segments.size(), 1);
    EXPECT_TRUE(markdownSource(text, result.segments.first(), result.references)
                    .contains(u"[1]: https://example.com"_s));
}

TEST(MarkdownSegmenterTest, NoTextMakesASegmentThatCostsTooMuch)
{
    const QStringList texts{QString(100'000, u'x'),
                            u'e' + QString(100'000, QChar(0x301)),
                            u"👩‍👩‍👧‍👦"_s.repeated(10'000),
                            u"👩\n"_s.repeated(10'000),
                            u"```\n"_s + QString(100'000, u'x'),
                            u"```\n"_s + u"👩"_s.repeated(10'000),
                            u"- "_s.repeated(30'000),
                            u"|a|b|\n|-|-|\n"_s + u"|x|y|\n"_s.repeated(10'000),
                            u'|' + QString(50'000, u'h') + u"|\n|-|\n"_s + u"|x|\n"_s.repeated(1'000)};
    for (const QString &text : texts) {
        qsizetype at = 0;
        for (const TextSegment &segment : cut(text)) {
            const QString source =
                segment.kind == Kind::code ? codeText(text, segment) : markdownSource(text, segment, {});
            EXPECT_LE(layoutCost(source), segmentLimit * 3 / 2) << text.first(20).toStdString();
            EXPECT_GE(segment.from, at);
            at = segment.end();
        }
        EXPECT_GE(at, text.size() - 1);
    }
}

TEST(MarkdownSegmenterTest, WhatIsNoDefinitionIsNotRepeated)
{
    QString text = u"[^1]: A footnote.\n\n[note]: this is a sentence\n\n[^2]: word\n\n"_s;
    for (int i = 0; i < 40; ++i)
        text += QString(200, u'x') + u"\n\n"_s;
    EXPECT_EQ(MarkdownSegmenter::segments(text).references, QString());
}

TEST(MarkdownSegmenterTest, AListThatIsCutGoesOnWithItsNumbers)
{
    QString text;
    for (int i = 0; i < 200; ++i)
        text += u"1. an item of some length, whose number the writer left to the reader\n"_s;
    const auto segments = cut(text);
    ASSERT_GT(segments.size(), 3);
    int number = 1;
    for (const TextSegment &segment : segments)
        for (const MarkdownBlock &block : parseMarkdown(markdownSource(text, segment, {})))
            EXPECT_EQ(block.marker, QString::number(number++) + u'.');
    EXPECT_EQ(number, 201);
}

TEST(MarkdownSegmenterTest, SegmentsKnowHowTheyJoin)
{
    using Joint = TextSegment::Joint;
    const auto joints = [](const QString &text) {
        QList<Joint> found;
        for (const TextSegment &segment : cut(text).sliced(1))
            if (!found.contains(segment.joint))
                found.append(segment.joint);
        return found;
    };
    EXPECT_EQ(joints(u"word "_s.repeated(2000)), QList<Joint>{Joint::line});
    EXPECT_EQ(joints(u"- an item\n"_s.repeated(500)), QList<Joint>{Joint::item});
    EXPECT_EQ(joints(u"- an item\n\n"_s.repeated(500)), QList<Joint>{Joint::block});
    EXPECT_EQ(joints(u"A paragraph of some words.\n\n"_s.repeated(300)), QList<Joint>{Joint::block});
    EXPECT_EQ(joints(u"# Heading\n\n"_s.repeated(500)), QList<Joint>{Joint::heading});
}

TEST(MarkdownSegmenterTest, CarriageReturnsAreNoText)
{
    EXPECT_EQ(shown(u"a\r\n```\r\nb\r\n```\r\nc"_s), u"a\nb\nc"_s);
}

} // namespace
} // namespace morvane
