#include "ui/markdown/MarkdownParser.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

using Kind = MarkdownBlock::Kind;

QString textOf(const MarkdownBlock &block)
{
    QString text;
    for (const MarkdownRun &run : block.runs) {
        text += run.text;
    }
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
    EXPECT_EQ(textOf(blocks[0]), QStringLiteral("one\u2028two"));
}

TEST(MarkdownParserTest, FlattensListsWithTheirNumbersAndDepth)
{
    const auto blocks = parse("3. three\n   - inner\n4. four");
    ASSERT_EQ(blocks.size(), 3);
    EXPECT_EQ(blocks[0].marker, QStringLiteral("3."));
    EXPECT_EQ(blocks[0].indent, 1);
    EXPECT_EQ(blocks[1].marker, QStringLiteral("•"));
    EXPECT_EQ(blocks[1].indent, 2);
    EXPECT_EQ(blocks[2].marker, QStringLiteral("4."));
    EXPECT_TRUE(blocks[2].isTight);
}

TEST(MarkdownParserTest, ReadsTaskLists)
{
    const auto blocks = parse("- [x] done\n- [ ] open");
    ASSERT_EQ(blocks.size(), 2);
    EXPECT_EQ(blocks[0].marker, QStringLiteral("☑"));
    EXPECT_EQ(blocks[1].marker, QStringLiteral("☐"));
}

TEST(MarkdownParserTest, KeepsEmptyItems)
{
    const auto blocks = parse("- a\n-\n- c");
    ASSERT_EQ(blocks.size(), 3);
    EXPECT_EQ(blocks[1].marker, QStringLiteral("•"));
    EXPECT_EQ(textOf(blocks[1]), QString());
}

TEST(MarkdownParserTest, ReadsTablesWithAlignment)
{
    const auto blocks = parse("| a | b |\n| :-- | --: |\n| 1 | 2 |");
    ASSERT_EQ(blocks.size(), 1);
    ASSERT_EQ(blocks[0].kind, Kind::table);
    ASSERT_EQ(blocks[0].rows.size(), 2);
    EXPECT_EQ(blocks[0].rows[1][1].alignment, MarkdownCell::Alignment::right);
    EXPECT_EQ(blocks[0].rows[1][0].runs[0].text, QStringLiteral("1"));
    EXPECT_EQ(markdownPlainText(blocks), QStringLiteral("a\tb\n1\t2"));
}

TEST(MarkdownParserTest, ShowsHtmlAsText)
{
    const auto blocks = parse("<script>alert(1)</script> and <b>bold</b>");
    ASSERT_EQ(blocks.size(), 1);
    EXPECT_EQ(textOf(blocks[0]), QStringLiteral("<script>alert(1)</script> and <b>bold</b>"));
}

TEST(MarkdownParserTest, DecodesEntities)
{
    EXPECT_EQ(textOf(parse("&lt;b&gt; &amp; &#65; &eacute;")[0]), QStringLiteral("<b> & A é"));
}

TEST(MarkdownParserTest, LinksOnlySafeAddresses)
{
    const auto blocks = parse("[web](https://example.com) [mail](mailto:a@b.c) [bad](javascript:alert(1)) "
                              "[file](file:///etc/passwd)");
    ASSERT_EQ(blocks.size(), 1);
    QStringList links;
    for (const MarkdownRun &run : blocks[0].runs) {
        if (!run.link.isEmpty()) {
            links += run.link;
        }
    }
    EXPECT_EQ(links, (QStringList{QStringLiteral("https://example.com"), QStringLiteral("mailto:a@b.c")}));
}

TEST(MarkdownParserTest, ImagesBecomeLinksAndAreNotLoaded)
{
    const auto blocks = parse("![a cat](https://example.com/cat.png)");
    ASSERT_EQ(blocks.size(), 1);
    EXPECT_EQ(blocks[0].runs[0].text, QStringLiteral("a cat"));
    EXPECT_EQ(blocks[0].runs[0].link, QStringLiteral("https://example.com/cat.png"));
}

TEST(MarkdownParserTest, SafeLinksNeedAHost)
{
    EXPECT_TRUE(isSafeLink(QStringLiteral("http://example.com/x?y=z")));
    EXPECT_FALSE(isSafeLink(QStringLiteral("https://")));
    EXPECT_FALSE(isSafeLink(QStringLiteral("data:text/html,x")));
    EXPECT_FALSE(isSafeLink(QStringLiteral("/etc/passwd")));
    EXPECT_FALSE(isSafeLink(QString()));
}

TEST(MarkdownParserTest, SurvivesHostileNesting)
{
    const QString lists = QStringLiteral("- ").repeated(1500);
    const QString emphasis = QStringLiteral("*a **b ").repeated(500);
    const QString brackets = QStringLiteral("[").repeated(3000);
    EXPECT_FALSE(parseMarkdown(lists).isEmpty());
    EXPECT_FALSE(parseMarkdown(emphasis).isEmpty());
    EXPECT_FALSE(parseMarkdown(brackets).isEmpty());
    for (const MarkdownBlock &block : parseMarkdown(lists)) {
        EXPECT_LE(block.indent, 8);
    }
}

} // namespace
} // namespace morvane
