#include "tools/StripHTML.h"

#include "support/RandomTokens.h"
#include "support/WebExpressions.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

/// Of what is searched for. A search that looked for every missing end anew would need minutes.
constexpr qsizetype many = 500'000;

TEST(StripHTMLTest, TagsBecomeBlanksAndRunsOfWhiteSpaceOneBlank)
{
    EXPECT_EQ(stripHTML("<p>One</p>\n\n<p>two\tthree</p>"), " One two three ");
    EXPECT_EQ(stripHTML("a<br/>b"), "a b");
    EXPECT_EQ(stripHTML("a < b and c > d"), "a d");
    EXPECT_EQ(stripHTML("plain"), "plain");
    EXPECT_EQ(stripHTML(""), "");
}

TEST(StripHTMLTest, TheResultIsNotTrimmed)
{
    EXPECT_EQ(stripHTML(" <b>x</b>\n"), " x ");
}

TEST(StripHTMLTest, ScriptsAndStylesGoWithWhatTheyHold)
{
    EXPECT_EQ(stripHTML("a<script>if (1 > 0) { alert('x'); }</script>b"), "a b");
    EXPECT_EQ(stripHTML("a<script src=\"x\"\n>\nline\n</script>b"), "a b");
    EXPECT_EQ(stripHTML("a<style type=\"text/css\">p > b { color: red }</style>b"), "a b");
    EXPECT_EQ(stripHTML("a<script>1</script>b<script>2</script>c"), "a b c");
}

TEST(StripHTMLTest, AScriptEndsAtItsFirstEnd)
{
    EXPECT_EQ(stripHTML("<script>a</script>b</script>c"), " b c");
}

TEST(StripHTMLTest, AnEndedScriptMayHoldAnotherBeginning)
{
    EXPECT_EQ(stripHTML("<script><script>a</script>b"), " b");
    EXPECT_EQ(stripHTML("<style><script>a</style>b</script>c"), " c");
}

TEST(StripHTMLTest, ScriptInCapitalsLosesItsTagsOnly)
{
    EXPECT_EQ(stripHTML("<SCRIPT>alert(1)</SCRIPT>"), " alert(1) ");
    EXPECT_EQ(stripHTML("<Style>p {}</Style>"), " p {} ");
}

TEST(StripHTMLTest, AScriptThatNeverEndsLosesItsTagOnly)
{
    EXPECT_EQ(stripHTML("a<script>b"), "a b");
    EXPECT_EQ(stripHTML("a<style>b"), "a b");
}

TEST(StripHTMLTest, ATagNeedsSomethingInIt)
{
    EXPECT_EQ(stripHTML("a<>b"), "a<>b");
    EXPECT_EQ(stripHTML("<><b>c"), "<> c");
    EXPECT_EQ(stripHTML("a<<>b"), "a b");
    EXPECT_EQ(stripHTML("a<b"), "a<b");
}

TEST(StripHTMLTest, DecodesTheCommonEntities)
{
    EXPECT_EQ(stripHTML("a&nbsp;b&amp;c&lt;d&gt;e&quot;f&#39;g&#x27;h&#34;i&#38;j"), "a b&c<d>e\"f'g'h\"i&j");
    EXPECT_EQ(stripHTML("&copy; &#X27; &AMP; &amp &#65;"), "&copy; &#X27; &AMP; &amp &#65;");
}

TEST(StripHTMLTest, DoublyEncodedTextIsDecodedInTheOrderOfTheTable)
{
    EXPECT_EQ(stripHTML("&amp;lt;"), "<");
    EXPECT_EQ(stripHTML("&amp;nbsp;"), "&nbsp;");
    EXPECT_EQ(stripHTML("&#38;lt;"), "&lt;");
    EXPECT_EQ(stripHTML("&amp;#38;"), "&");
    EXPECT_EQ(stripHTML("&amp;amp;lt;"), "&amp;lt;");
}

TEST(StripHTMLTest, DecodedBracketsAreNoTags)
{
    EXPECT_EQ(stripHTML("&lt;b&gt;x&lt;/b&gt;"), "<b>x</b>");
}

TEST(StripHTMLTest, BlanksOfEveryKindAreCollapsed)
{
    EXPECT_EQ(stripHTML(u"a\u00a0\u2003\u3000\u2028\u0085\v\f\r\nb"_qs), "a b");
    EXPECT_EQ(stripHTML("a &nbsp; <i> </i> b"), "a b");
    EXPECT_EQ(stripHTML(u"a\u200bb"_qs), u"a\u200bb"_qs);
}

TEST(StripHTMLTest, WhiteSpaceIsWhatTheExpressionTakesForIt)
{
    for (uint unit = 0; unit < 0x10000; ++unit) {
        const QString text = u'a' + QString(QChar(static_cast<char16_t>(unit))) + u'b';
        ASSERT_EQ(stripHTML(text), strippedByExpressions(text)) << std::hex << unit;
    }
}

TEST(StripHTMLTest, GivesWhatTheExpressionsGive)
{
    RandomTokens tokens({"<script", "</script>", "<style",  "</style>", "<",      ">",      "<>",
                         "</",      "a",         "script>", " ",        "\n",     "&",      "amp;",
                         "&lt;",    "&gt;",      "&nbsp;",  "#38;",     "&quot;", "&#x27;", u"\U0001F600"_qs,
                         "<b>",     "\""},
                        4);
    for (int round = 0; round < 20'000; ++round) {
        const QString text = tokens.text(30);
        ASSERT_EQ(stripHTML(text), strippedByExpressions(text)) << text.toStdString();
    }
}

TEST(StripHTMLTest, BeginningsWithoutAnEndStayAndAreReadOnce)
{
    for (const char *const beginning : {"<", "<script", "<style", "</script", "<>"}) {
        const QString text = QString(beginning).repeated(many);
        EXPECT_EQ(stripHTML(text), text) << beginning;
    }
}

TEST(StripHTMLTest, ElementsWithoutAnEndLoseTheirTagsAndAreReadOnce)
{
    EXPECT_EQ(stripHTML(QString("<script>").repeated(many)), " ");
    EXPECT_EQ(stripHTML(QString("<style>x").repeated(many)), QString(" x").repeated(many));
    EXPECT_EQ(stripHTML(QString("<<>").repeated(many)), " ");
}

TEST(StripHTMLTest, ManyEntitiesAreReadOnce)
{
    EXPECT_EQ(stripHTML(QString("&lt;").repeated(many)), QString("<").repeated(many));
    EXPECT_EQ(stripHTML(QString("&amp;").repeated(many)), QString("&").repeated(many));
    EXPECT_EQ(stripHTML(QString("&").repeated(4 * many)), QString("&").repeated(4 * many));
    EXPECT_EQ(stripHTML(QString("&nbsp;").repeated(many)), " ");
}

} // namespace
} // namespace morvane
