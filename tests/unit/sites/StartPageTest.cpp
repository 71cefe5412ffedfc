#include "browser/sites/StartPage.h"

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using testing::HasSubstr;

class StartPageTest : public testing::Test {
protected:
    static std::string page(const BrowserSites &sites = {}) { return startPage(sites).toStdString(); }
};

TEST_F(StartPageTest, ItIsCalledStartPageAndHeadedWithTheBrowsersName)
{
    EXPECT_THAT(page(), HasSubstr("<title>Start Page</title>"));
    EXPECT_THAT(page(), HasSubstr("<h1>Morvane Browser</h1>"));
    EXPECT_THAT(page(), HasSubstr("aria-hidden=\"true\">▸</div>"));
    EXPECT_THAT(page(),
                HasSubstr("<p>Ask Morvane in the panel below to open, read, or use any site for you.</p>"));
}

TEST_F(StartPageTest, TheFieldSearchesWithItsTextAsAQueryItem)
{
    EXPECT_THAT(page(), HasSubstr("method=\"get\" action=\"https://duckduckgo.com/\""));
    EXPECT_THAT(page(), HasSubstr("name=\"q\" placeholder=\"Search the web or type a URL\" "
                                  "aria-label=\"Search the web or type a URL\""));
    EXPECT_THAT(page(), HasSubstr("autofocus"));
    EXPECT_THAT(page(), HasSubstr("<button type=\"submit\">Go</button>"));
}

TEST_F(StartPageTest, FiveSitesAreLinkedInTheirOrder)
{
    const QString html = startPage({});
    qsizetype last = 0;
    for (const QString &name :
         {u"Wikipedia"_s, u"YouTube"_s, u"GitHub"_s, u"DuckDuckGo"_s, u"Hacker News"_s}) {
        const qsizetype at = html.indexOf(u'>' + name + u"</a>"_s);
        EXPECT_GT(at, last) << qPrintable(name);
        last = at;
    }
    EXPECT_EQ(html.count(u"<a href=\"https://"_s), 5);
}

TEST_F(StartPageTest, ItsColoursAreThoseOfADarkPage)
{
    EXPECT_THAT(page(), HasSubstr("background: #0b0f19; color: #e7ecf5;"));
}

TEST_F(StartPageTest, AnAddressCannotEndItsAttribute)
{
    BrowserSites sites;
    sites.startPageSearch = u"https://a.test/\"><script>"_s;
    sites.startPageLinks = {{u"<b>"_s, u"https://b.test/?a&\""_s}};
    EXPECT_THAT(page(sites), HasSubstr("action=\"https://a.test/&quot;&gt;&lt;script&gt;\""));
    EXPECT_THAT(page(sites), HasSubstr("<a href=\"https://b.test/?a&amp;&quot;\">&lt;b&gt;</a>"));
}

} // namespace
} // namespace morvane
