#include "BrowserTest.h"

#include "support/WaitUntil.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// A turn that the model keeps to itself until it is released.
ScriptedTurn waiting(ScriptedTurn turn)
{
    turn.steps.insert(turn.steps.begin(), step::Stall{});
    return turn;
}

/// The browser in the hands of the model and of the user at once.
class BrowserSharedTest : public BrowserTest {
protected:
    ScriptedTurn opening(const QString &path) const
    {
        return callingTool("browser_open", R"({"url":")" + address(path) + R"("})");
    }
    /// Whether the model is told what begins so, now or soon.
    static bool isTold(MorvaneSession &morvane, const QString &result)
    {
        return waitUntil([&] { return lastResult(morvane).startsWith(result); });
    }
    /// A session whose model has opened the page of birds for a message from the panel, and presses the
    /// button there when it is released.
    MorvaneSession &startBeforeThePress()
    {
        MorvaneSession &morvane =
            startBrowser({opening(u"/birds"_s), waiting(callingTool("browser_click", R"({"number":2})")),
                          waiting(ScriptedTurn::saying({"It is gone."}))});
        openWindow(morvane);
        sendFromPanel(morvane, u"search it"_s);
        EXPECT_TRUE(isTold(morvane, u"Page: Birds"_s));
        return morvane;
    }
    /// Releases the model when the user has come to the page of files, where its number is no element.
    void expectNothingPressedAmongFiles(MorvaneSession &morvane)
    {
        openByKeyboard(morvane, u"/files"_s, u"Files"_s);
        morvane.model().release();
        EXPECT_TRUE(isTold(morvane, u"Error: there is no element [2]. Run browser_read first"_s));
        EXPECT_TRUE(showsPage(morvane, u"Files"_s));
        EXPECT_TRUE(m_site.requests(u"/search"_s).isEmpty());
    }
    /// A session whose model opens a page that does not come, for a message from the panel.
    MorvaneSession &startBeforeASlowPage(std::vector<ScriptedTurn> further = {})
    {
        m_site.keepWaiting(u"/slow"_s);
        further.insert(further.begin(), opening(u"/slow"_s));
        MorvaneSession &morvane = startBrowser(std::move(further));
        openWindow(morvane);
        sendFromPanel(morvane, u"open it"_s);
        EXPECT_TRUE(isAsked(u"/slow"_s));
        return morvane;
    }
    bool isAsked(const QString &path)
    {
        return waitUntil([&] { return !m_site.requests(path).isEmpty(); });
    }
};

TEST_F(BrowserSharedTest, TheUserSeesEachStepOfTheModel)
{
    MorvaneSession &morvane = startBrowser(
        {opening(u"/birds"_s), waiting(callingTool("browser_type", R"({"number":1,"text":"kingfisher"})")),
         waiting(callingTool("browser_type", R"({"number":1,"text":"kingfisher","submit":true})")),
         waiting(callingTool("browser_back", "{}")), waiting(ScriptedTurn::saying({"Done."}))});
    morvane.send(u"Find me a kingfisher"_s);
    ASSERT_TRUE(isTold(morvane, u"Page: Birds"_s));
    EXPECT_TRUE(showsPage(morvane, u"Birds"_s));
    EXPECT_TRUE(morvane.program().shows(u"Kingfishers"_s));
    EXPECT_EQ(morvane.program().find(u"Address bar"_s).text().toStdString(), address(u"/birds"_s));

    morvane.model().release();
    ASSERT_TRUE(isTold(morvane, u"Typed the text into field [1]."_s));
    EXPECT_TRUE(waitUntil([&] { return morvane.program().find(u"Search"_s).text() == "kingfisher"_L1; }));
    EXPECT_TRUE(m_site.requests(u"/search"_s).isEmpty());

    morvane.model().release();
    ASSERT_TRUE(isTold(morvane, u"Typed the text into field [1] and submitted."_s));
    EXPECT_TRUE(showsPage(morvane, u"Found"_s));
    EXPECT_TRUE(morvane.program().shows(u"One kingfisher was found."_s));

    morvane.model().release();
    ASSERT_TRUE(isTold(morvane, u"Went back to the previous page."_s));
    EXPECT_TRUE(showsPage(morvane, u"Birds"_s));
    morvane.model().release();
    EXPECT_TRUE(morvane.ear().hears(u"Done."_s));
}

TEST_F(BrowserSharedTest, ANumberOfAPageThatTheUserHasLeftPressesNothing)
{
    expectNothingPressedAmongFiles(startBeforeThePress());
}

TEST_F(BrowserSharedTest, TheModelReadsThePageToWhichTheUserGoesWhileItWaits)
{
    MorvaneSession &morvane = startBeforeASlowPage({waiting(ScriptedTurn::saying({"Done."}))});
    openByKeyboard(morvane, u"/birds"_s, u"Birds"_s);
    EXPECT_TRUE(isTold(morvane, u"Page: Birds"_s));
}

TEST_F(BrowserSharedTest, ATabThatTheUserClosesUnderTheModelIsToldToIt)
{
    MorvaneSession &morvane = startBeforeASlowPage({waiting(ScriptedTurn::saying({"Done."}))});
    morvane.keyboard().press(u"Ctrl+W"_s);
    EXPECT_TRUE(isTold(morvane, u"Error: the browser window is not open."_s));
    EXPECT_TRUE(morvane.ear().hears(u"Closed tab Start Page. Opened new tab."_s));
}

TEST_F(BrowserSharedTest, ATabThatTheUserOpensBesideTheModelsIsNotTakenForIt)
{
    MorvaneSession &morvane = startBeforeThePress();
    morvane.keyboard().press(u"Ctrl+T"_s);
    ASSERT_TRUE(morvane.ear().hears(u"Opened new tab."_s));
    expectNothingPressedAmongFiles(morvane);
}

TEST_F(BrowserSharedTest, TheUserStopsTheModelFromThePanelWhileItsPageLoads)
{
    MorvaneSession &morvane = startBeforeASlowPage();
    morvane.program().find(u"Stop the agent"_s, AccessibleRole::pushButton).press();
    EXPECT_TRUE(morvane.program().shows(u"Send the message to Morvane"_s));
    openByKeyboard(morvane, u"/birds"_s, u"Birds"_s);
}

TEST_F(BrowserSharedTest, AQuestionOfThePageLeavesTheKeyboardWhereTheUserWritesAndStopAnswersIt)
{
    m_site.page(u"/asking"_s, "<title>Asking</title><button onclick=\"document.title = confirm('Sure?')\">Ask"
                              "</button>");
    MorvaneSession &morvane =
        startBrowser({opening(u"/asking"_s), callingTool("browser_click", R"({"number":1})")});
    morvane.send(u"press it"_s);
    ASSERT_TRUE(morvane.program().shows(u"127.0.0.1 says"_s));
    const QString field = u"Message Morvane"_s;
    EXPECT_TRUE(morvane.program().focuses(field));
    morvane.keyboard().type(u"not yet"_s);
    EXPECT_TRUE(waitUntil([&] { return morvane.program().find(field).text() == "not yet"_L1; }));
    morvane.keyboard().press(u"Escape"_s);
    EXPECT_TRUE(morvane.program().hides(u"127.0.0.1 says"_s));
    EXPECT_TRUE(showsPage(morvane, u"false"_s));
}

TEST_F(BrowserSharedTest, TheProgramEndsWhileAQuestionOfThePageWaitsBesideTheUsersWindow)
{
    m_site.page(u"/asking"_s, "<title>Asking</title><button onclick=\"confirm('Sure?')\">Ask</button>");
    MorvaneSession &morvane =
        startBrowser({opening(u"/asking"_s), callingTool("browser_click", R"({"number":1})")});
    morvane.send(u"press it"_s);
    ASSERT_TRUE(morvane.program().shows(u"127.0.0.1 says"_s));
    morvane.keyboard().press(u"Ctrl+Q"_s);
    EXPECT_EQ(morvane.program().process().waitForExit(), 0);
}

} // namespace
} // namespace morvane
