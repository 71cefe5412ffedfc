#include "EngineFixture.h"
#include "EngineProcesses.h"

#include <csignal>

namespace morvane {
namespace {

/// What a load of the real engine looks like.
class EngineNavigationTest : public EngineFixture {
protected:
    EngineNavigationTest()
    {
        server.page("/one", "<title>One</title><a id=l href=/two>to two</a>");
        server.page("/two", "<title>Two</title><p>two");
    }
};

TEST_F(EngineNavigationTest, TheStartPageHasNoAddressAndIsNotGoneBackTo)
{
    EXPECT_EQ(tab().title(), "Start Page");
    EXPECT_EQ(tab().urlString(), "");
    EXPECT_TRUE(visits.isEmpty());
    open("/one");
    EXPECT_EQ(tab().title(), "One");
    EXPECT_FALSE(tab().canGoBack());
    EXPECT_EQ(run(manager->operations().browserBack()), "Error: there is no previous page to go back to.");
}

TEST_F(EngineNavigationTest, ALoadIsAnnouncedAndRecordedOnce)
{
    open("/one");
    EXPECT_EQ(announcer.spoken, QStringList({"Loading 127.0.0.1", "Loading 127.0.0.1…", "Loaded 127.0.0.1"}));
    EXPECT_EQ(visits, (QList<std::pair<QString, QString>>{{server.url("/one").toString(), "One"}}));
}

TEST_F(EngineNavigationTest, BackGoesToThePageBefore)
{
    open("/one");
    open("/two");
    EXPECT_TRUE(tab().canGoBack());
    EXPECT_EQ(run(manager->operations().browserBack()), "Went back to the previous page.");
    EXPECT_EQ(tab().title(), "One");
    EXPECT_TRUE(tab().canGoForward());
}

TEST_F(EngineNavigationTest, AnErrorStatusIsAPageLikeAnother)
{
    server.answer("/gone", rawHttpResponse(404, "<title>Gone</title>it is gone"));
    EXPECT_TRUE(open("/gone").contains("it is gone"));
    EXPECT_EQ(visits.size(), 1);
    EXPECT_FALSE(announcer.spoken.join(' ').contains("Failed"));
}

TEST_F(EngineNavigationTest, AServerThatIsNotThereLeavesThePageAndIsTold)
{
    open("/one");
    announcer.spoken.clear();
    quint16 closed = 0;
    {
        const PageServer gone;
        closed = quint16(gone.url("/").port());
    }
    const QString text = run(manager->operations().browserOpen(QString("http://127.0.0.1:%1/").arg(closed)));
    EXPECT_TRUE(text.startsWith("Page: One\n")) << text.toStdString();
    EXPECT_TRUE(announcer.spoken.contains("Failed to load: The server does not accept connections."))
        << announcer.spoken.join('|').toStdString();
    EXPECT_EQ(tab().urlString(), server.url("/one").toString());
}

TEST_F(EngineNavigationTest, APageWithoutATitleIsCalledByItsHost)
{
    server.page("/untitled", "x");
    server.page("/", "y");
    for (const QString &path : {"/untitled", "/"}) {
        open(path);
        EXPECT_EQ(tab().title(), "127.0.0.1");
        EXPECT_EQ(visits.last().second, "");
    }
}

TEST_F(EngineNavigationTest, ARedirectionIsOneLoad)
{
    HttpHeaders to;
    to.set("Location", "/two");
    server.answer("/old", rawHttpResponse(302, "", to));
    open("/one");
    announcer.spoken.clear();
    EXPECT_TRUE(open("/old").startsWith("Page: Two\n"));
    EXPECT_EQ(announcer.spoken, QStringList({"Loading 127.0.0.1", "Loading 127.0.0.1…", "Loaded 127.0.0.1"}));
    EXPECT_EQ(visits.last().first, server.url("/two").toString());
}

TEST_F(EngineNavigationTest, WhatHappensWithinADocumentLeavesTheNumbers)
{
    open("/one");
    announcer.spoken.clear();
    ASSERT_EQ(tab().lastElementRefs().size(), 1);
    runInPage("history.pushState({}, '', '/pushed')");
    ASSERT_TRUE(waitUntil([this] { return tab().urlString() == server.url("/pushed").toString(); }));
    runInPage("location.hash = 'here'");
    ASSERT_TRUE(waitUntil([this] { return tab().urlString() == server.url("/pushed#here").toString(); }));
    EXPECT_EQ(tab().lastElementRefs().size(), 1);
    EXPECT_TRUE(announcer.spoken.isEmpty());
    EXPECT_EQ(click(1), "Clicked 'to two'.");
    EXPECT_TRUE(tab().lastElementRefs().isEmpty());
    EXPECT_TRUE(click(1).startsWith("Error: there is no element [1]."));
}

TEST_F(EngineNavigationTest, AReloadTakesTheNumbersAway)
{
    open("/one");
    EXPECT_EQ(tab().lastElementRefs().size(), 1);
    page().reload();
    ASSERT_TRUE(waitUntil([this] { return server.requests("/one").size() == 2 && !page().isLoading(); }));
    EXPECT_TRUE(tab().lastElementRefs().isEmpty());
    EXPECT_EQ(visits.size(), 2);
}

TEST_F(EngineNavigationTest, ANewLoadTakesThePlaceOfOneThatHangs)
{
    server.keepWaiting("/slow");
    page().load(server.url("/slow"));
    ASSERT_TRUE(waitUntil([this] { return !server.requests("/slow").isEmpty(); }));
    EXPECT_TRUE(open("/two").startsWith("Page: Two\n"));
    EXPECT_FALSE(announcer.spoken.join(' ').contains("Failed"));
}

TEST_F(EngineNavigationTest, AStoppedLoadIsSilent)
{
    server.keepWaiting("/slow");
    page().load(server.url("/slow"));
    ASSERT_TRUE(waitUntil([this] { return !server.requests("/slow").isEmpty(); }));
    announcer.spoken.clear();
    page().stop();
    ASSERT_TRUE(waitUntil([this] { return !page().isLoading(); }));
    EXPECT_TRUE(announcer.spoken.isEmpty());
}

TEST_F(EngineNavigationTest, AWindowThatAPageWantsReplacesIt)
{
    server.page("/opener", "<a id=l target=_blank href=/two>elsewhere</a>");
    open("/opener");
    EXPECT_EQ(click(1), "Clicked 'elsewhere'.");
    EXPECT_TRUE(arrives("/two"));
    EXPECT_TRUE(read().startsWith("Page: Two\n"));
    EXPECT_TRUE(tab().canGoBack());
    EXPECT_EQ(manager->tabs().size(), 1U);
}

TEST_F(EngineNavigationTest, PagesCannotLeaveTheWeb)
{
    open("/one");
    for (const char *script : {"location = 'file:///etc/hostname'", "location = 'data:text/html,x'",
                               "location = 'chrome://version'", "window.open('file:///etc/hostname')"})
        runInPage(script);
    EXPECT_TRUE(read().startsWith("Page: One\n"));
    EXPECT_EQ(tab().urlString(), server.url("/one").toString());
}

TEST_F(EngineNavigationTest, ACrashIsToldAndTheNextLoadWorks)
{
    open("/one");
    announcer.spoken.clear();
    for (const pid_t process : pageProcesses())
        ::kill(process, SIGKILL);
    ASSERT_TRUE(waitUntil([this] { return announcer.spoken.contains("Failed to load: The page crashed."); }));
    EXPECT_TRUE(read().startsWith("Error: could not read the page."));
    EXPECT_TRUE(open("/two").startsWith("Page: Two\n"));
}

TEST_F(EngineNavigationTest, APageThatHangsCanBeLeft)
{
    server.page("/hung", "<title>Hung</title><script>addEventListener('load', () => setTimeout(() => { "
                         "const last = new XMLHttpRequest; last.open('GET', '/last', false); last.send(); "
                         "for (;;); }))</script>");
    page().load(server.url("/hung"));
    ASSERT_TRUE(waitUntil([this] { return !server.requests("/last").isEmpty() && !visits.isEmpty(); }));
    clock.longest = std::chrono::seconds(1);
    EXPECT_TRUE(read().startsWith("Error: could not read the page."));
    clock.longest = Clock::Duration::max();
    EXPECT_TRUE(open("/two").startsWith("Page: Two\n"));
    EXPECT_FALSE(announcer.spoken.join(' ').contains("crashed"));
}

TEST_F(EngineNavigationTest, EveryTabHasItsOwnZoom)
{
    open("/one");
    manager->setZoom(2.0);
    EXPECT_EQ(value("window.devicePixelRatio").toDouble(), 2.0);
    manager->newTab();
    page().view()->resize(900, 700);
    open("/one");
    EXPECT_EQ(value("window.devicePixelRatio").toDouble(), 1.0);
    manager->switchTab(manager->tabs().front()->id());
    EXPECT_EQ(value("window.devicePixelRatio").toDouble(), 2.0);
    open("/two");
    EXPECT_EQ(value("window.devicePixelRatio").toDouble(), 2.0);
    QUrl elsewhere = server.url("/two");
    elsewhere.setHost("other.test");
    run(manager->operations().browserOpen(elsewhere.toString()));
    EXPECT_EQ(value("window.devicePixelRatio").toDouble(), 2.0) << "on another site, too";
}

} // namespace
} // namespace morvane
