#include "BrowserTest.h"
#include "HeardTest.h"

#include <QRegularExpression>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using testing::ElementsAreArray;

class HeardBrowserTest : public HeardTest, public BrowserTest {
protected:
    /// Starts reader and program and opens the browser's window.
    MorvaneSession &listenToBrowser(std::vector<ScriptedTurn> turns = {})
    {
        MorvaneSession &morvane = prepareBrowser(std::move(turns), Hearing::notifications);
        listenTo(morvane);
        EXPECT_TRUE(reader().hears(u"Type your message, then press Return to send it."_s));
        reader().forget();
        openWindow(morvane);
        EXPECT_TRUE(reader().hears(u"Search the web or type a URL text."_s));
        return morvane;
    }
    /// Goes to an address as one who pastes it: a reader that is told of each letter of quick typing drops
    /// notices.
    void goTo(MorvaneSession &morvane, const QString &path, const QString &title)
    {
        const AccessibleElement field = morvane.program().find(u"Address bar"_s);
        ASSERT_TRUE(moves(morvane, u"Ctrl+L"_s, u"Enter a web address or search term."_s));
        write(field, m_site.url(path).toString());
        ASSERT_TRUE(moves(morvane, u"Return"_s, title + u" document web."_s));
    }
    /// With "…" in place of the site's port.
    QStringList heardOfSite()
    {
        static const QRegularExpression port(u"127\\.0\\.0\\.1:\\d+"_s);
        return heard().replaceInStrings(port, u"127.0.0.1:…"_s);
    }
};

TEST_F(HeardBrowserTest, TheWindowAndWhereTheKeyboardIsAreHeardWhenItOpens)
{
    listenToBrowser();
    const QStringList pieces{u"Morvane Browser frame."_s, u"notification Opened new tab."_s,
                             u"notification Loading page…"_s, u"Search the web or type a URL text."_s};
    for (const QString &piece : pieces)
        EXPECT_TRUE(reader().hears(piece)) << piece.toStdString();
    for (const QString &piece : pieces)
        EXPECT_EQ(times(piece), 1) << piece.toStdString();
}

TEST_F(HeardBrowserTest, TheMainRoadIsHeardAsDocumented)
{
    MorvaneSession &morvane = listenToBrowser();
    reader().forget();
    goTo(morvane, u"/birds"_s, u"Birds"_s);
    const QStringList stops{
        u"Search text."_s,
        u"Go push button."_s,
        u"Expand the agent panel push button."_s,
        u"Summarize this page push button."_s,
        u"List the main links push button."_s,
        u"Open the full conversation in the main window."_s,
        u"Adds images, PDFs, or text files to your next message."_s,
        u"Your message goes to the same conversation as the main window. The agent can use "
        "browser tools to click and type for you."_s,
        u"Switch to this tab."_s,
        u"Open a new tab."_s,
        u"Reload this page push button."_s,
        u"Enter a web address or search term."_s,
        u"Bookmark this page push button."_s,
        u"Open the share menu for this page."_s,
        u"Open browsing history."_s};
    ASSERT_NO_FATAL_FAILURE(goesBy(morvane, stops));
    ASSERT_TRUE(moves(morvane, u"F6"_s, u"Birds document web."_s));
    ASSERT_TRUE(moves(morvane, u"Ctrl+D"_s, u"notification Bookmarked Birds."_s));
    ASSERT_TRUE(moves(morvane, u"Ctrl+="_s, u"notification Zoom 125 percent."_s));
    ASSERT_TRUE(moves(morvane, u"Ctrl+F"_s, u"notification Find bar opened."_s));
    write(morvane.program().find(u"Find in page"_s), u"kingfisher"_s);
    ASSERT_TRUE(morvane.program().shows(u"2 matches"_s));
    ASSERT_TRUE(moves(morvane, u"Return"_s, u"notification 2 matches for kingfisher."_s));
    ASSERT_TRUE(moves(morvane, u"Escape"_s, u"notification Find bar closed."_s));
    EXPECT_THAT(heardOfSite(), ElementsAreArray(documentedIn(u"heard-browser.md"_s)));
}

TEST_F(HeardBrowserTest, EachPageThatFollowsAnotherUnderTheKeyboardIsHeard)
{
    MorvaneSession &morvane = listenToBrowser();
    goTo(morvane, u"/birds"_s, u"Birds"_s);
    goTo(morvane, u"/files"_s, u"Files"_s);
    goTo(morvane, u"/search"_s, u"Found"_s);
    EXPECT_TRUE(reader().hears(u"One kingfisher was found."_s));
    reader().forget();
    ASSERT_TRUE(moves(morvane, u"Ctrl+["_s, u"Files document web."_s));
    ASSERT_TRUE(moves(morvane, u"Ctrl+R"_s, u"Files document web."_s));
    EXPECT_EQ(times(u"Files document web."_s), 2);
}

} // namespace
} // namespace morvane
