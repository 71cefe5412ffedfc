#include "EngineFixture.h"

#include <QElapsedTimer>
#include <QSignalSpy>

namespace morvane {
namespace {

/// Pages that do a thing ten thousand times.
class FloodTest : public EngineFixture {
protected:
    FloodTest() { server.page("/two", "<title>Two</title>"); }
};

TEST_F(FloodTest, ATitleThatNeverStandsStillIsShownSomeTimesASecond)
{
    show("<p>x");
    announcer.spoken.clear();
    const QSignalSpy shown(&tab(), &BrowserTab::changed);
    const QSignalSpy toolbar(manager.get(), &BrowserManager::toolbarStateChanged);
    QElapsedTimer timer;
    timer.start();
    runInPage("for (let i = 0; i <= 10000; ++i) document.title = 'title ' + i");
    ASSERT_TRUE(waitUntil([this] { return tab().title() == "title 10000"; }));
    const qint64 most = 2 + timer.elapsed() / 200;
    EXPECT_LE(shown.size(), most);
    EXPECT_LE(toolbar.size(), most);
    EXPECT_TRUE(announcer.spoken.isEmpty());
    EXPECT_EQ(visits.size(), 1);
}

TEST_F(FloodTest, AnAddressThatNeverStandsStillIsShownSomeTimesASecond)
{
    show("<p>x");
    announcer.spoken.clear();
    const QSignalSpy shown(&tab(), &BrowserTab::changed);
    QElapsedTimer timer;
    timer.start();
    runInPage("for (let i = 0; i <= 10000; ++i) try { history.replaceState({}, '', '/at' + i) } catch (e) {}"
              "document.title = 'done'");
    ASSERT_TRUE(waitUntil([this] { return tab().title() == "done"; }));
    EXPECT_LE(shown.size(), 2 + timer.elapsed() / 200);
    EXPECT_TRUE(announcer.spoken.isEmpty());
    EXPECT_EQ(visits.size(), 1);
    EXPECT_TRUE(tab().urlString().contains("/at"));
}

TEST_F(FloodTest, AThousandWishesAreOneQuestion)
{
    show("<p>x");
    runInPage(
        "let refused = 0; for (let i = 0; i < 1000; ++i) navigator.geolocation.getCurrentPosition(() => 0, "
        "() => { if (++refused == 1000) document.title = 'refused'; });");
    ASSERT_TRUE(waitUntil([this] { return !window.permissions.isEmpty(); }));
    EXPECT_EQ(value("1 + 1").toInt(), 2);
    EXPECT_EQ(window.permissions.size(), 1);
    window.permissionAnswers.last()(false);
    EXPECT_TRUE(waitUntil([this] { return tab().title() == "refused"; })) << "and its answer is that of all";
}

TEST_F(FloodTest, WindowsWithoutEndAreHeardSomeTimes)
{
    show("<p>x");
    announcer.spoken.clear();
    runInPage("for (let i = 0; i < 40; ++i) window.open('/two?' + i)");
    ASSERT_TRUE(waitUntil([this] { return tab().title() == "Two" && !page().isLoading(); }));
    EXPECT_LE(announcer.spoken.size(), 20);
    EXPECT_LE(visits.size(), 20);
    EXPECT_EQ(manager->tabs().size(), 1U);
}

TEST_F(FloodTest, WindowsWithoutEndAreRefused)
{
    constexpr int most = 5;
    server.keepWaiting("/waiting");
    const QSignalSpy windows(&page(), &WebPage::newWindowRequested);
    for (int round = 1; round <= 2; ++round) {
        show("<p>x");
        announcer.spoken.clear();
        runInPage("for (let i = 0; i < 300; ++i) window.open('/waiting'); document.title = 'done'");
        EXPECT_EQ(windows.size(), round * most) << "another page begins anew";
        EXPECT_EQ(announcer.spoken.count("More windows of 127.0.0.1 are refused."), 1);
        EXPECT_EQ(value("document.title").toString(), "done");
    }
}

TEST_F(FloodTest, TheAgentTakesFileAfterFileFromLinksThatWantAWindow)
{
    server.answer("/nothing", "HTTP/1.1 204 No Content\r\n\r\n");
    show("<a href=/nothing target=_blank>file</a>");
    for (qsizetype file = 1; file <= 7; ++file) {
        EXPECT_EQ(numberOf(read(), "file"), 1);
        EXPECT_EQ(click(1), "Clicked 'file'.");
        ASSERT_TRUE(waitUntil([&] { return server.requests("/nothing").size() == file; }));
    }
}

TEST_F(FloodTest, TheUserOpensWindowsWhereAPageMayNot)
{
    server.keepWaiting("/waiting");
    show("<p>x<input autofocus><script>document.querySelector('input').onkeydown = () => "
         "open('/two')</script>");
    value("document.querySelector('input').focus()");
    runInPage("for (let i = 0; i < 10; ++i) window.open('/waiting')");
    press("a");
    EXPECT_TRUE(arrives("/two"));
}

TEST_F(FloodTest, APageThatComesAfterTheGreedyOneMayOpenItsWindow)
{
    server.keepWaiting("/waiting");
    server.page("/greedy", "<script>for (let i = 0; i < 10; ++i) open('/waiting')</script>");
    server.page("/modest", "<script>setInterval(() => open('/two'), 20)</script>");
    const QSignalSpy refusals(&page(), &WebPage::windowsRefused);
    page().load(server.url("/greedy"));
    ASSERT_TRUE(waitUntil([&] { return refusals.size() == 1; }));
    page().load(server.url("/modest"));
    EXPECT_TRUE(arrives("/two"));
}

} // namespace
} // namespace morvane
