#include "BrowserTest.h"

#include <QFile>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using testing::HasSubstr;

class BrowserWindowTest : public BrowserTest {};

TEST_F(BrowserWindowTest, TheModelOpensTypesPressesAndReadsWhileTheUserLooksOn)
{
    MorvaneSession &morvane =
        startBrowser({callingTool("browser_open", R"({"url":")" + address(u"/birds"_s) + R"("})"),
                      callingTool("browser_type", R"({"number":1,"text":"kingfisher"})"),
                      callingTool("browser_click", R"({"number":2})"), callingTool("browser_read", "{}"),
                      ScriptedTurn::saying({"One was found."})});
    morvane.send(u"Find me a kingfisher"_s);
    ASSERT_TRUE(morvane.ear().hears(u"One was found."_s));
    EXPECT_TRUE(lastResult(morvane).startsWith(u"Page: Found\nURL: "_s)) << qPrintable(lastResult(morvane));
    EXPECT_TRUE(morvane.program().shows(u"Browser content: Found"_s));
    ASSERT_EQ(m_site.requests(u"/search"_s).size(), 1);
    EXPECT_THAT(m_site.requests(u"/search"_s).first().target.toStdString(), HasSubstr("q=kingfisher"));
    // The user's keyboard has stayed where it was.
    EXPECT_TRUE(morvane.program().focuses(u"Message Morvane"_s));
}

TEST_F(BrowserWindowTest, WhereTheEngineWouldEndTheProgramItIsNotStarted)
{
    MorvaneSession &morvane =
        prepareBrowser({callingTool("browser_open", R"({"url":")" + address(u"/birds"_s) + R"("})"),
                        ScriptedTurn::saying({"I cannot see it."})});
    morvane.setVariable(u"XKB_CONFIG_ROOT"_s, morvane.home());
    morvane.start();
    morvane.send(u"Find me a kingfisher"_s);
    ASSERT_TRUE(morvane.ear().hears(u"I cannot see it."_s));
    EXPECT_THAT(lastResult(morvane).toStdString(), HasSubstr("the package xkb-data has them."));
    EXPECT_TRUE(morvane.isRunning());
}

TEST_F(BrowserWindowTest, WhereNothingDrawsWithOpenGLTheProcessorDraws)
{
    MorvaneSession &morvane =
        prepareBrowser({callingTool("browser_open", R"({"url":")" + address(u"/birds"_s) + R"("})"),
                        ScriptedTurn::saying({"I see it."})});
    morvane.setVariable(u"QT_QUICK_BACKEND"_s, {});
    morvane.setVariable(u"QT_XCB_GL_INTEGRATION"_s, u"none"_s);
    morvane.start();
    morvane.send(u"Find me a kingfisher"_s);
    ASSERT_TRUE(morvane.ear().hears(u"I see it."_s));
    EXPECT_THAT(lastResult(morvane).toStdString(), HasSubstr("A kingfisher eats fish."));
    EXPECT_TRUE(morvane.program().shows(u"Browser content: Birds"_s));
}

TEST_F(BrowserWindowTest, TheModelGoesBackFromAPageThatItsPressHasOpened)
{
    MorvaneSession &morvane =
        startBrowser({callingTool("browser_open", R"({"url":")" + address(u"/birds"_s) + R"("})"),
                      callingTool("browser_click", R"({"number":2})"), callingTool("browser_back", "{}"),
                      ScriptedTurn::saying({"Back again."})});
    morvane.send(u"Look and come back"_s);
    ASSERT_TRUE(morvane.ear().hears(u"Back again."_s));
    EXPECT_EQ(lastResult(morvane), u"Went back to the previous page."_s);
    EXPECT_TRUE(morvane.program().shows(u"Browser content: Birds"_s));
}

TEST_F(BrowserWindowTest, ByKeyboardAloneAPageIsOpenedMarkedSearchedAndEnlarged)
{
    MorvaneSession &morvane = startWithBirds();
    const Keyboard &keyboard = morvane.keyboard();
    keyboard.press(u"Ctrl+D"_s);
    EXPECT_TRUE(morvane.ear().hears(u"Bookmarked Birds"_s));
    EXPECT_TRUE(morvane.program().shows(u"Bookmarks, 1 items"_s));
    keyboard.press(u"Ctrl+F"_s);
    EXPECT_TRUE(morvane.ear().hears(u"Find bar opened"_s));
    ASSERT_TRUE(morvane.program().focuses(u"Find in page"_s));
    keyboard.type(u"kingfisher"_s);
    ASSERT_TRUE(morvane.program().shows(u"2 matches"_s));
    keyboard.press(u"Return"_s);
    EXPECT_TRUE(morvane.ear().hears(u"2 matches for kingfisher"_s));
    keyboard.press(u"Escape"_s);
    EXPECT_TRUE(morvane.ear().hears(u"Find bar closed"_s));
    keyboard.press(u"Ctrl+="_s);
    EXPECT_TRUE(morvane.ear().hears(u"Zoom 125 percent"_s));
    keyboard.press(u"Ctrl+Shift+W"_s);
    EXPECT_TRUE(morvane.program().hides(u"Browser content: Birds"_s));
}

TEST_F(BrowserWindowTest, TheKeyboardReachesThePageThatAnAddressOpens)
{
    MorvaneSession &morvane = startWithBirds();
    ASSERT_TRUE(morvane.program().shows(u"Kingfishers"_s));
    morvane.keyboard().press(u"Tab"_s);
    EXPECT_TRUE(morvane.program().focuses(u"Search"_s));
}

TEST_F(BrowserWindowTest, AReaderMovesTheFocusInThePage)
{
    MorvaneSession &morvane = startWithBirds();
    const AccessibleElement button = morvane.program().find(u"Go"_s, AccessibleRole::pushButton);
    button.act(u"SetFocus"_s);
    ASSERT_TRUE(morvane.program().focuses(u"Go"_s));
    morvane.keyboard().press(u"Return"_s);
    EXPECT_TRUE(showsPage(morvane, u"Found"_s));
}

TEST_F(BrowserWindowTest, AFileIsDownloadedByKeyboard)
{
    MorvaneSession &morvane = startBrowser({});
    openWindow(morvane);
    openByKeyboard(morvane, u"/files"_s, u"Files"_s);
    ASSERT_TRUE(moveTo(morvane, u"Tab"_s, u"birds.dat"_s));
    morvane.keyboard().press(u"Return"_s);
    ASSERT_TRUE(morvane.program().shows(u"Save File from 127.0.0.1"_s));
    EXPECT_TRUE(pressUntil(morvane, u"Return"_s,
                           [&] { return morvane.ear().heard().contains(u"Download started: birds.dat"_s); }));
    EXPECT_TRUE(morvane.ear().hears(u"Download complete."_s));
    QFile file(morvane.home() + u"/birds.dat"_s);
    ASSERT_TRUE(file.open(QFile::ReadOnly));
    EXPECT_EQ(file.readAll(), "birds");
}

TEST_F(BrowserWindowTest, TheHistoryIsOpenedByKeyboardAndLeadsToItsPages)
{
    MorvaneSession &morvane = startWithBirds();
    openByKeyboard(morvane, u"/search"_s, u"Found"_s);
    const Keyboard &keyboard = morvane.keyboard();
    keyboard.press(u"Ctrl+Y"_s);
    ASSERT_TRUE(morvane.program().focuses(u"Search history"_s));
    keyboard.type(u"bird"_s);
    ASSERT_TRUE(morvane.program().shows(u"1 results"_s));
    keyboard.press(u"Down"_s);
    keyboard.press(u"Down"_s);
    keyboard.press(u"Return"_s);
    EXPECT_TRUE(morvane.program().shows(u"Browser content: Birds"_s));
}

TEST_F(BrowserWindowTest, AMessageFromThePanelLandsInTheSameConversation)
{
    MorvaneSession &morvane = startBrowser({ScriptedTurn::saying({"It is about birds."})});
    openWindow(morvane);
    sendFromPanel(morvane, u"what is this"_s);
    ASSERT_TRUE(morvane.ear().hears(u"It is about birds."_s));
    EXPECT_TRUE(morvane.storesLastMessage(u"text"_s, u"It is about birds."_s));
    const auto requests = morvane.model().requests();
    const auto &message = requests.front().json.at("messages").as_array().back();
    EXPECT_THAT(std::string(message.at("content").as_string()),
                HasSubstr("what is this [Browser window is open — you can use "
                          "browser_open/read/click/type/scroll/back. The user watches live.]"));
}

} // namespace
} // namespace morvane
