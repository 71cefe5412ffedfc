#include "tools/SearchResults.h"

#include "support/RandomTokens.h"
#include "support/WebExpressions.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

constexpr qsizetype megabyte = 1'000'000;

QString link(const QString &address, const QString &title)
{
    return "<h2><a rel=\"nofollow\" class=\"result__a\" href=\"" + address + "\">" + title + "</a></h2>\n";
}

QString snippet(const QString &text)
{
    return "<a class=\"result__snippet\" href=\"x\">" + text + "</a>\n";
}

QStringList parsed(const QString &html)
{
    return SearchResults::parseDDGResults(html);
}

TEST(SearchResultsTest, AnEntryHasTitleSnippetAndAddress)
{
    EXPECT_EQ(parsed("<html>" + link("https://a.example/x", "Some title") + snippet("The snippet text")),
              QStringList("1. Some title\n   The snippet text\n   https://a.example/x"));
}

TEST(SearchResultsTest, TitlesAndSnippetsAreStrippedButNotTrimmed)
{
    EXPECT_EQ(parsed(link("u", "<b>Fish</b> &amp;\nchips ") + snippet("a <b>b</b>&#x27;s")),
              QStringList("1.  Fish & chips \n   a b 's\n   u"));
}

TEST(SearchResultsTest, EveryLinkIsNumbered)
{
    QString html;
    for (int i = 1; i <= 20; ++i)
        html += link("u" + QString::number(i), "t" + QString::number(i));
    const QStringList entries = parsed(html);
    ASSERT_EQ(entries.size(), 20);
    EXPECT_EQ(entries.first(), "1. t1\n   u1");
    EXPECT_EQ(entries.last(), "20. t20\n   u20");
}

TEST(SearchResultsTest, SnippetsPairByPositionAlone)
{
    QString html;
    for (int i = 1; i <= 5; ++i)
        html += link("u", "t");
    for (int i = 1; i <= 3; ++i)
        html += snippet("s" + QString::number(i));
    EXPECT_EQ(parsed(html), QStringList({"1. t\n   s1\n   u", "2. t\n   s2\n   u", "3. t\n   s3\n   u",
                                         "4. t\n   u", "5. t\n   u"}));
    EXPECT_EQ(parsed(snippet("s1") + snippet("s2") + link("u", "t")), QStringList("1. t\n   s1\n   u"));
    EXPECT_EQ(parsed(link("u", "t") + snippet("") + link("v", "w") + snippet("s")),
              QStringList({"1. t\n   u", "2. w\n   s\n   v"}));
}

TEST(SearchResultsTest, APageThatLooksDifferentHasNoEntries)
{
    EXPECT_TRUE(parsed("").isEmpty());
    EXPECT_TRUE(parsed("<html><body>Please prove that you are human.</body></html>").isEmpty());
    EXPECT_TRUE(parsed(snippet("a snippet without a link")).isEmpty());
    EXPECT_TRUE(parsed("<a class='result__a' href='x'>t</a>").isEmpty());
    EXPECT_TRUE(parsed("<a href=\"x\" class=\"result__a\">t</a>").isEmpty());
    EXPECT_TRUE(parsed("<a class=\"result__a\" href=\"\">t</a>").isEmpty());
    EXPECT_TRUE(parsed("<a class=\"result__a\" href=\"x\">t</A>").isEmpty());
}

TEST(SearchResultsTest, AttributesMayStandBetween)
{
    EXPECT_EQ(parsed("<a class=\"result__a\" rel=\"x\"\n id='y' href=\"u\" title=\"z\">t</a>"),
              QStringList("1. t\n   u"));
    EXPECT_EQ(parsed("class=\"result__a\"href=\"u\">t</a>"), QStringList("1. t\n   u"));
}

TEST(SearchResultsTest, OfTwoAddressesTheLastThatFitsCounts)
{
    EXPECT_EQ(parsed("<a class=\"result__a\" href=\"u\" href=\"v\">t</a>"), QStringList("1. t\n   v"));
    EXPECT_EQ(parsed("<a class=\"result__a\" href=\"u\" href=\"\">t</a>"), QStringList("1. t\n   u"));
    EXPECT_EQ(parsed("<a class=\"result__a\" href=\"u\" href=\"v>t</a>"), QStringList("1. t\n   u"));
}

TEST(SearchResultsTest, AnAddressMayHoldABracket)
{
    EXPECT_EQ(parsed("<a class=\"result__a\" href=\"u>v\">t</a>"), QStringList("1. t\n   u>v"));
}

TEST(SearchResultsTest, ABrokenLinkIsPassedOver)
{
    EXPECT_EQ(parsed("<a class=\"result__a\">no address</a>" + link("u", "t")), QStringList("1. t\n   u"));
}

TEST(SearchResultsTest, ATitleReachesOverLines)
{
    EXPECT_EQ(parsed("<a class=\"result__a\" href=\"u\">one\ntwo\r\n\u2028three</a>"),
              QStringList("1. one two three\n   u"));
}

TEST(SearchResultsTest, AWrappedAddressIsUnwrapped)
{
    EXPECT_EQ(SearchResults::resolvedAddress("//s.example/l/?uddg=https%3A%2F%2Fa.example%2F%C3%A4&rut=1"),
              u"https://a.example/\u00e4"_qs);
    EXPECT_EQ(SearchResults::resolvedAddress("//s.example/l/?uddg=https%3A%2F%2Fa.example%2F&amp;rut=1"),
              "https://a.example/");
    EXPECT_EQ(SearchResults::resolvedAddress("x?uddg=a+b%26c"), "a+b&c");
    EXPECT_EQ(SearchResults::resolvedAddress("uddg=one&uddg=two"), "one");
    EXPECT_EQ(SearchResults::resolvedAddress("//s.example/?uddg=&x"), "");
}

TEST(SearchResultsTest, AWrappedAddressWithBrokenPercentSignsStaysAsItIs)
{
    EXPECT_EQ(SearchResults::resolvedAddress("//s.example/?uddg=100%&x"), "https://s.example/?uddg=100%&x");
    EXPECT_EQ(SearchResults::resolvedAddress("/?uddg=%4"), "/?uddg=%4");
    EXPECT_EQ(SearchResults::resolvedAddress("/?uddg=%zz"), "/?uddg=%zz");
    EXPECT_EQ(SearchResults::resolvedAddress("/?uddg=%+1"), "/?uddg=%+1");
    EXPECT_EQ(SearchResults::resolvedAddress("/?uddg=%ff"), "/?uddg=%ff");
}

TEST(SearchResultsTest, AnAddressWithoutASchemeGetsOne)
{
    EXPECT_EQ(SearchResults::resolvedAddress("//a.example/x"), "https://a.example/x");
    EXPECT_EQ(SearchResults::resolvedAddress("/relative"), "/relative");
    EXPECT_EQ(SearchResults::resolvedAddress("http://a.example"), "http://a.example");
}

TEST(SearchResultsTest, FindsWhatTheExpressionsFind)
{
    const QStringList links{
        "class=\"result__a\"", "href=\"", "\"", ">", "</a>", "a", "<", " ", "\n", "result__a"};
    RandomTokens linkTokens(links, 1);
    for (int round = 0; round < 30'000; ++round) {
        const QString text = linkTokens.text(25);
        ASSERT_EQ(parsed(text), entriesByExpressions(text)) << text.toStdString();
    }
    RandomTokens allTokens(links + QStringList{"class=\"result__snippet\"", "<b>", "&amp;", u"\U0001F600"_qs},
                           2);
    for (int round = 0; round < 30'000; ++round) {
        const QString text = allTokens.text(40);
        ASSERT_EQ(parsed(text), entriesByExpressions(text)) << text.toStdString();
    }
}

// Searches that began anew at every beginning would need hours for these.

TEST(SearchResultsTest, BeginningsWithoutAnEndAreReadOnce)
{
    const char *const hostile[] = {
        "class=\"result__a\"",
        "class=\"result__a\" href=\"",
        "class=\"result__a\" href=\"x\"",
        "class=\"result__a\" href=\"x\">",
        "class=\"result__a\" href=\"\">",
        "class=\"result__a\" href=\"x>",
        "class=\"result__snippet\"",
        "class=\"result__snippet\">",
        "href=\"x\" ",
        "<",
    };
    for (const char *const beginning : hostile) {
        const QString text = QString(beginning).repeated(10 * megabyte / qsizetype(qstrlen(beginning)));
        EXPECT_TRUE(parsed(text).isEmpty()) << beginning;
        EXPECT_TRUE(parsed(text + ">").isEmpty()) << beginning;
        EXPECT_TRUE(parsed("class=\"result__a\"" + text + ">").isEmpty()) << beginning;
    }
}

TEST(SearchResultsTest, ManyAddressesBeforeOneEndAreReadOnce)
{
    const QString text = "class=\"result__a\"" + QString(" href=\"x\"").repeated(megabyte);
    EXPECT_EQ(parsed(text + ">t</a>"), QStringList("1. t\n   x"));
    EXPECT_EQ(parsed("class=\"result__a\" href=\"u\"" + QString(" href=\"\"").repeated(megabyte) + ">t</a>"),
              QStringList("1. t\n   u"));
}

} // namespace
} // namespace morvane
