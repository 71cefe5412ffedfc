#include "ui/markdown/MarkdownParser.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using Kind = MarkdownBlock::Kind;

QString textOf(const MarkdownBlock &block)
{
    QString text;
    for (const MarkdownRun &run : block.runs)
        text += run.text;
    return text;
}

QList<MarkdownBlock> parse(const char *source)
{
    return parseMarkdown(QString::fromUtf8(source));
}

TEST(MarkdownParserTest, ReadsStyles)
{
    const auto blocks = parse("a **b** *c* `d` ~~e~~");
    ASSERT_EQ(blocks.size(), 1);
    const auto &runs = blocks[0].runs;
    ASSERT_EQ(runs.size(), 8);
    EXPECT_EQ(runs[1].style, MarkdownRun::Style(MarkdownRun::bold));
    EXPECT_EQ(runs[3].style, MarkdownRun::Style(MarkdownRun::italic));
    EXPECT_EQ(runs[5].style, MarkdownRun::Style(MarkdownRun::code));
    EXPECT_EQ(runs[7].style, MarkdownRun::Style(MarkdownRun::strikethrough));
}

TEST(MarkdownParserTest, ReadsHeadingsAndRules)
{
    const auto blocks = parse("## Title\n\n---\n\ntext");
    ASSERT_EQ(blocks.size(), 3);
    EXPECT_EQ(blocks[0].kind, Kind::heading);
    EXPECT_EQ(blocks[0].level, 2);
    EXPECT_EQ(blocks[1].kind, Kind::rule);
    EXPECT_EQ(blocks[2].kind, Kind::paragraph);
}

TEST(MarkdownParserTest, KeepsLineEnds)
{
    const auto blocks = parse("one\ntwo");
    ASSERT_EQ(blocks.size(), 1);
    EXPECT_EQ(textOf(blocks[0]), u"one\u2028two"_s);
}

TEST(MarkdownParserTest, FlattensListsWithTheirNumbersAndDepth)
{
    const auto blocks = parse("3. three\n   - inner\n4. four");
    ASSERT_EQ(blocks.size(), 3);
    EXPECT_EQ(blocks[0].marker, u"3."_s);
    EXPECT_EQ(blocks[0].indent, 1);
    EXPECT_EQ(blocks[1].marker, u"•"_s);
    EXPECT_EQ(blocks[1].indent, 2);
    EXPECT_EQ(blocks[2].marker, u"4."_s);
    EXPECT_TRUE(blocks[2].isTight);
}

TEST(MarkdownParserTest, ReadsTaskLists)
{
    const auto blocks = parse("- [x] done\n- [ ] open");
    ASSERT_EQ(blocks.size(), 2);
    EXPECT_EQ(blocks[0].marker, u"☑"_s);
    EXPECT_EQ(blocks[1].marker, u"☐"_s);
}

TEST(MarkdownParserTest, KeepsEmptyItems)
{
    const auto blocks = parse("- a\n-\n- c");
    ASSERT_EQ(blocks.size(), 3);
    EXPECT_EQ(blocks[1].marker, u"•"_s);
    EXPECT_EQ(textOf(blocks[1]), QString());
}

TEST(MarkdownParserTest, ReadsTablesWithAlignment)
{
    const auto blocks = parse("| a | b |\n| :-- | --: |\n| 1 | 2 |");
    ASSERT_EQ(blocks.size(), 1);
    ASSERT_EQ(blocks[0].kind, Kind::table);
    ASSERT_EQ(blocks[0].rows.size(), 2);
    EXPECT_EQ(blocks[0].rows[1][1].alignment, MarkdownCell::Alignment::right);
    EXPECT_EQ(blocks[0].rows[1][0].runs[0].text, u"1"_s);
    EXPECT_EQ(markdownPlainText(blocks), u"a\tb\n1\t2"_s);
}

TEST(MarkdownParserTest, ShowsHtmlAsText)
{
    const auto blocks = parse("<script>alert(1)</script> and <b>bold</b>");
    ASSERT_EQ(blocks.size(), 1);
    EXPECT_EQ(textOf(blocks[0]), u"<script>alert(1)</script> and <b>bold</b>"_s);
}

TEST(MarkdownParserTest, DecodesEntities)
{
    EXPECT_EQ(textOf(parse("&lt;b&gt; &amp; &#65; &eacute;")[0]), u"<b> & A é"_s);
}

TEST(MarkdownParserTest, LinksOnlySafeAddresses)
{
    const auto blocks = parse("[web](https://example.com) [mail](mailto:a@b.c) [bad](javascript:alert(1)) "
                              "[file](file:///etc/passwd)");
    ASSERT_EQ(blocks.size(), 1);
    QStringList links;
    for (const MarkdownRun &run : blocks[0].runs)
        if (!run.link.isEmpty())
            links += run.link;
    EXPECT_EQ(links, (QStringList{u"https://example.com"_s, u"mailto:a@b.c"_s}));
}

TEST(MarkdownParserTest, ImagesBecomeLinksAndAreNotLoaded)
{
    const auto blocks = parse("![a cat](https://example.com/cat.png)");
    ASSERT_EQ(blocks.size(), 1);
    EXPECT_EQ(blocks[0].runs[0].text, u"a cat"_s);
    EXPECT_EQ(blocks[0].runs[0].link, u"https://example.com/cat.png"_s);
}

TEST(MarkdownParserTest, OnlyDoubleTildesStrike)
{
    const auto strikes = [](const char *source) {
        for (const MarkdownBlock &block : parse(source))
            for (const MarkdownRun &run : block.runs)
                if (run.style.testFlag(MarkdownRun::strikethrough))
                    return true;
        return false;
    };
    for (const char *source :
         {"3~5 days for 10~20 people", "~one~", "a ~b c~ d", "3~5天，10~20人", "**~x~**", "~a~~b~"}) {
        EXPECT_FALSE(strikes(source)) << source;
        EXPECT_EQ(markdownPlainText(parse(source)).remove(u'*'), QString::fromUtf8(source).remove(u'*'));
    }
    EXPECT_TRUE(strikes("~~gone~~ and 3~5"));
    EXPECT_EQ(markdownPlainText(parse("~~gone~~ 3~5 `a~b`")), u"gone 3~5 a~b"_s);
}

TEST(MarkdownParserTest, ATildeInAnAddressIsPartOfIt)
{
    const auto blocks = parse("See https://example.com/~user/x and [his](https://example.com/~b).");
    QStringList links;
    for (const MarkdownRun &run : blocks[0].runs)
        if (!run.link.isEmpty())
            links += run.link;
    EXPECT_EQ(links, (QStringList{u"https://example.com/~user/x"_s, u"https://example.com/~b"_s}));
}

TEST(MarkdownParserTest, FootnotesAreText)
{
    EXPECT_EQ(markdownPlainText(parse("Word.[^1]\n\n[^1]: note")), u"Word.[^1]\n\n[^1]: note"_s);
    EXPECT_EQ(markdownPlainText(parse("[^a]: https://example.com")), u"[^a]: https://example.com"_s);
}

TEST(MarkdownParserTest, ALinkShowsWhereItLeadsUnlessItsTextDoes)
{
    EXPECT_EQ(markdownPlainText(parse("[the bank](https://evil.example/x)")), u"the bank (evil.example)"_s);
    EXPECT_EQ(markdownPlainText(parse("[https://bank.example](https://evil.example)")),
              u"https://bank.example (evil.example)"_s);
    EXPECT_EQ(markdownPlainText(parse("https://evil.example/x")), u"https://evil.example/x"_s);
    EXPECT_EQ(markdownPlainText(parse("[Evil.Example says](https://evil.example/x)")),
              u"Evil.Example says"_s);
    EXPECT_EQ(markdownPlainText(parse("[write](mailto:a@b.example)")), u"write (a@b.example)"_s);
    EXPECT_EQ(markdownPlainText(parse("[**bold** part](https://evil.example)")),
              u"bold part (evil.example)"_s);
    const auto blocks = parse("[the bank](https://evil.example)");
    EXPECT_EQ(blocks[0].runs.last().style, MarkdownRun::Style(MarkdownRun::aside));
    EXPECT_EQ(blocks[0].runs.last().link, QString());
}

TEST(MarkdownParserTest, SafeLinksNeedAHost)
{
    EXPECT_TRUE(isSafeLink(u"http://example.com/x?y=z"_s));
    EXPECT_FALSE(isSafeLink(u"https://"_s));
    EXPECT_FALSE(isSafeLink(u"data:text/html,x"_s));
    EXPECT_FALSE(isSafeLink(u"/etc/passwd"_s));
    EXPECT_FALSE(isSafeLink(QString()));
}

TEST(MarkdownParserTest, SurvivesHostileNesting)
{
    const QString lists = u"- "_s.repeated(1500);
    const QString emphasis = u"*a **b "_s.repeated(500);
    const QString brackets = u"["_s.repeated(3000);
    EXPECT_FALSE(parseMarkdown(lists).isEmpty());
    EXPECT_FALSE(parseMarkdown(emphasis).isEmpty());
    EXPECT_FALSE(parseMarkdown(brackets).isEmpty());
    for (const MarkdownBlock &block : parseMarkdown(lists))
        EXPECT_LE(block.indent, 8);
}

} // namespace
} // namespace morvane
