#include "MorvaneTest.h"

#include "support/PageServer.h"
#include "support/WaitUntil.h"

#include <QDir>
#include <QFile>
#include <gmock/gmock.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using testing::HasSubstr;

/// The built-in browser with its real engine, as the user sees, hears and operates it.
class BrowserWindowTest : public MorvaneTest {
protected:
    BrowserWindowTest()
    {
        m_site.page(
            u"/birds"_s,
            "<title>Birds</title><h1>Kingfishers</h1><p>A kingfisher eats fish.</p>"
            "<form action=\"/search\"><input name=\"q\" aria-label=\"Search\"><button>Go</button></form>");
        m_site.page(u"/files"_s, "<title>Files</title><a href=\"/file\">birds.dat</a>");
        m_site.page(u"/search"_s, "<title>Found</title><p>One kingfisher was found.</p>");
        m_site.answer(u"/file"_s, "HTTP/1.1 200 OK\r\nContent-Type: application/octet-stream\r\n"
                                  "Content-Disposition: attachment; filename=\"birds.dat\"\r\n"
                                  "Content-Length: 5\r\n\r\nbirds");
    }

    MorvaneSession &startBrowser(std::vector<ScriptedTurn> turns)
    {
        MorvaneSession &session = prepare(std::move(turns));
        // The engine refuses to run as root inside its own sandbox, and so do many containers.
        if (geteuid() == 0)
            session.setVariable(u"QTWEBENGINE_DISABLE_SANDBOX"_s, u"1"_s);
        session.start();
        return session;
    }
    /// Presses the button of the main window and waits for the start page.
    static void openWindow(MorvaneSession &morvane)
    {
        morvane.program().find(u"Morvane Browser"_s, AccessibleRole::pushButton).press();
        ASSERT_TRUE(isInFront(morvane));
        ASSERT_TRUE(morvane.program().shows(u"Browser content: Start Page"_s));
    }
    static bool isInFront(MorvaneSession &morvane)
    {
        return morvane.program().shows([](const AccessibleNode &node) {
            return node.role == AccessibleRole::frame && node.name == "Morvane Browser"_L1 &&
                   node.has(AccessibleState::active);
        });
    }
    /// Writes an address by the keyboard and waits for the page of this title.
    void openByKeyboard(MorvaneSession &morvane, const QString &path, const QString &title)
    {
        morvane.keyboard().press(u"Ctrl+L"_s);
        ASSERT_TRUE(morvane.program().focuses(u"Address bar"_s));
        morvane.keyboard().type(m_site.url(path).toString());
        morvane.keyboard().press(u"Return"_s);
        ASSERT_TRUE(morvane.program().shows(u"Browser content: "_s + title));
    }
    std::string address(const QString &path) const { return m_site.url(path).toString().toStdString(); }

    PageServer m_site;
};

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
    MorvaneSession &morvane = startBrowser({});
    openWindow(morvane);
    openByKeyboard(morvane, u"/birds"_s, u"Birds"_s);
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

TEST_F(BrowserWindowTest, AFileIsDownloadedByKeyboard)
{
    MorvaneSession &morvane = startBrowser({});
    openWindow(morvane);
    openByKeyboard(morvane, u"/files"_s, u"Files"_s);
    const auto link = [](const AccessibleNode &node) {
        return node.name == "birds.dat"_L1 && node.has(AccessibleState::focused);
    };
    ASSERT_TRUE(pressUntil(morvane, u"Tab"_s, [&] {
        const auto focused = morvane.program().focused();
        return focused && link(*focused);
    }));
    morvane.keyboard().press(u"Return"_s);
    ASSERT_TRUE(morvane.program().shows(u"Save File from 127.0.0.1"_s));
    morvane.keyboard().press(u"Return"_s);
    EXPECT_TRUE(morvane.ear().hears(u"Download started: birds.dat"_s));
    EXPECT_TRUE(morvane.ear().hears(u"Download complete."_s));
    QFile file(morvane.home() + u"/birds.dat"_s);
    ASSERT_TRUE(file.open(QFile::ReadOnly));
    EXPECT_EQ(file.readAll(), "birds");
}

TEST_F(BrowserWindowTest, TheHistoryIsOpenedByKeyboardAndLeadsToItsPages)
{
    MorvaneSession &morvane = startBrowser({});
    openWindow(morvane);
    openByKeyboard(morvane, u"/birds"_s, u"Birds"_s);
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
    const QString field = u"Tell Morvane what to do in the browser"_s;
    ASSERT_TRUE(pressUntil(morvane, u"F6"_s, [&] {
        const auto focused = morvane.program().focused();
        return focused && focused->name == field;
    }));
    morvane.keyboard().type(u"what is this"_s);
    morvane.keyboard().press(u"Return"_s);
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
