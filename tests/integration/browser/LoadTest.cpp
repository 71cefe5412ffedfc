#include "EngineFixture.h"
#include "EngineProcesses.h"

#include "support/SamplePdf.h"

#include <QLineEdit>
#include <QWidget>
#include <csignal>

namespace morvane {
namespace {

/// Loads that do not go as most do.
class LoadTest : public EngineFixture {
protected:
    LoadTest()
    {
        server.page("/one",
                    "<title>One</title><a href=/two>to two</a><p id=end style='margin-top:3000px'>end");
        server.page("/two", "<title>Two</title><p>two");
    }

    void redirect(const QString &from, const QByteArray &to)
    {
        HttpHeaders headers;
        headers.set("Location", to);
        server.answer(from, rawHttpResponse(302, "", headers));
    }
    bool hasHeard(const QString &text) const { return announcer.spoken.contains(text); }
};

TEST_F(LoadTest, APlaceInTheSamePageIsThereAtOnce)
{
    open("/one");
    const QString text = open("/one#end");
    EXPECT_TRUE(text.startsWith("Page: One\nURL: " + server.url("/one#end").toString() + '\n'))
        << text.toStdString();
    EXPECT_FALSE(page().isLoading());
    EXPECT_GT(value("window.scrollY").toInt(), 0);
    EXPECT_EQ(server.requests("/one").size(), 1);
    EXPECT_EQ(run(manager->operations().browserBack()), "Went back to the previous page.");
    EXPECT_FALSE(page().isLoading());
    EXPECT_EQ(tab().urlString(), server.url("/one").toString());
}

TEST_F(LoadTest, TheSameAddressAgainIsLoadedAgain)
{
    open("/one");
    EXPECT_TRUE(open("/one").startsWith("Page: One\n"));
    EXPECT_EQ(server.requests("/one").size(), 2);
    EXPECT_EQ(visits.size(), 2);
    EXPECT_EQ(tab().lastElementRefs().size(), 1);
}

TEST_F(LoadTest, AnAnswerWithoutAPageLeavesTheOldOneInSilence)
{
    open("/one");
    announcer.spoken.clear();
    server.answer("/nothing", "HTTP/1.1 204 No Content\r\n\r\n");
    EXPECT_TRUE(open("/nothing").startsWith("Page: One\n"));
    EXPECT_EQ(tab().urlString(), server.url("/one").toString());
    EXPECT_FALSE(announcer.spoken.join(' ').contains("Failed"));
    EXPECT_EQ(visits.size(), 1);
}

TEST_F(LoadTest, APageThatNeverEndsLoadingCanBeRead)
{
    HttpHeaders headers;
    headers.set("Content-Type", "text/html");
    headers.set("Content-Length", "1000000");
    server.answer("/endless", rawHttpHead(200, headers) + "<title>Endless</title><button>there</button>" +
                                  QByteArray(5000, ' '));
    server.stayOpenAfter("/endless");
    page().load(server.url("/endless"));
    ASSERT_TRUE(waitUntil([this] { return tab().title() == "Endless"; }));
    EXPECT_TRUE(page().isLoading());
    EXPECT_TRUE(read().endsWith(":\n[1] button 'there'\n"));
    EXPECT_EQ(tab().lastElementRefs().size(), 1);
    page().stop();
    EXPECT_TRUE(waitUntil([this] { return !page().isLoading(); }));
    EXPECT_TRUE(open("/two").startsWith("Page: Two\n"));
}

TEST_F(LoadTest, ARequestThatIsSentInCirclesEnds)
{
    open("/one");
    redirect("/circle", "/circle");
    EXPECT_TRUE(open("/circle").startsWith("Page: One\n"));
    EXPECT_TRUE(hasHeard("Failed to load: The server sends the request round in circles."))
        << announcer.spoken.join('|').toStdString();
}

TEST_F(LoadTest, ARedirectionCannotLeaveTheWeb)
{
    open("/one");
    for (const char *place : {"file:///etc/hostname", "data:text/html,x", "chrome://version"}) {
        redirect("/away", place);
        EXPECT_TRUE(open("/away").startsWith("Page: One\n")) << place;
    }
}

TEST_F(LoadTest, AServerThatHasNoNameIsTold)
{
    open("/one");
    EXPECT_TRUE(run(manager->operations().browserOpen("http://nowhere.test/")).startsWith("Page: One\n"));
    EXPECT_TRUE(hasHeard("Failed to load: There is no server with this name."))
        << announcer.spoken.join('|').toStdString();
    EXPECT_EQ(tab().title(), "One");
}

TEST_F(LoadTest, AServerThatSaysNothingIsTold)
{
    PageServer silent;
    silent.answer("/", "HTTP/1.1");
    silent.closeAfter("/");
    open("/one");
    EXPECT_TRUE(run(manager->operations().browserOpen(silent.url("/").toString())).contains("Page: "));
    EXPECT_FALSE(page().isLoading());
}

TEST_F(LoadTest, ANameAndAPasswordInAnAddressAreNotKept)
{
    QUrl address = server.url("/one");
    address.setUserName("ann");
    address.setPassword("secret");
    const QString text = run(manager->operations().browserOpen(address.toString()));
    EXPECT_TRUE(text.startsWith("Page: One\n"));
    EXPECT_FALSE(text.contains("secret"));
    EXPECT_EQ(tab().urlString(), server.url("/one").toString());
    ASSERT_FALSE(visits.isEmpty());
    EXPECT_EQ(visits.last().first, server.url("/one").toString());
    EXPECT_FALSE(announcer.spoken.join(' ').contains("secret"));
}

TEST_F(LoadTest, AProxyAsksForANameAndGetsNoneUnasked)
{
    HttpHeaders headers;
    headers.set("Proxy-Authenticate", "Basic realm=\"Office\"");
    proxy().answer("http://far.test/x", rawHttpResponse(407, "<title>Barred</title>keep out", headers));
    page().view()->hide();
    page().load(QUrl("http://far.test/x"));
    EXPECT_TRUE(
        waitUntil([&] { return !proxy().requests("http://far.test/x").isEmpty() && !page().isLoading(); }));
    for (const RawHttpRequest &request : proxy().requests("http://far.test/x"))
        EXPECT_EQ(request.headers.value("Proxy-Authorization").value_or(""), "");
    page().view()->show();
    page().load(QUrl("http://far.test/x"));
    underSheet([] { return true; },
               [&](QDialog &dialog) {
                   EXPECT_EQ(dialog.windowTitle(), "127.0.0.1 says");
                   const QList<QLineEdit *> fields = dialog.findChildren<QLineEdit *>();
                   ASSERT_EQ(fields.size(), 2);
                   fields[0]->setText("ann");
                   fields[1]->setText("secret");
                   proxy().page("http://far.test/x", "<title>Far</title>");
                   dialog.accept();
               });
    EXPECT_TRUE(waitUntil([this] { return tab().title() == "Far"; }));
    EXPECT_EQ(proxy().requests("http://far.test/x").last().headers.value("Proxy-Authorization"),
              "Basic " + QByteArray("ann:secret").toBase64());
}

TEST_F(LoadTest, AWindowWithoutAPageIsNone)
{
    open("/one");
    runInPage("for (const address of [undefined, '', 'about:blank', 'data:text/html,x', 'javascript:1']) "
              "window.open(address); document.title = 'still here'");
    ASSERT_TRUE(waitUntil([this] { return tab().title() == "still here"; }));
    EXPECT_TRUE(read().startsWith("Page: still here\n"));
    EXPECT_EQ(tab().urlString(), server.url("/one").toString());
    EXPECT_FALSE(page().isLoading());
    EXPECT_EQ(manager->tabs().size(), 1U);
    runInPage("window.open('/two', 'name', 'width=200')");
    EXPECT_TRUE(arrives("/two"));
}

TEST_F(LoadTest, ADocumentOfAnotherKindIsShown)
{
    HttpHeaders headers;
    headers.set("Content-Type", "application/pdf");
    server.answer("/paper",
                  rawHttpResponse(200, samplePdf({{SamplePage::Kind::text, "some words"}}), headers));
    const QString text = open("/paper");
    EXPECT_TRUE(text.contains("URL: " + server.url("/paper").toString() + '\n')) << text.toStdString();
    EXPECT_TRUE(window.destinations.isEmpty()) << "it is shown and not written anywhere";
    EXPECT_EQ(tab().urlString(), server.url("/paper").toString());
    EXPECT_EQ(visits.size(), 1);
    headers.set("Content-Type", "text/plain");
    server.answer("/plain", rawHttpResponse(200, "plain words", headers));
    EXPECT_TRUE(open("/plain").contains("Page text:\nplain words\n"));
}

TEST_F(LoadTest, TheStartPageStaysWhenItIsLoadedAgain)
{
    for (const bool dies : {false, true}) {
        for (const pid_t process : dies ? pageProcesses() : QList<pid_t>())
            ::kill(process, SIGKILL);
        ASSERT_TRUE(!dies || waitUntil([this] { return hasHeard("Failed to load: The page crashed."); }));
        page().reload();
        ASSERT_TRUE(waitUntil([this] { return !page().isLoading(); }));
        EXPECT_EQ(value("document.title").toString(), "Start Page");
    }
    EXPECT_EQ(tab().urlString(), "");
    EXPECT_TRUE(open("/one").startsWith("Page: One\n"));
    EXPECT_FALSE(tab().canGoBack());
}

TEST_F(LoadTest, APageThatDiesUnderAnOperationEndsIt)
{
    open("/one");
    runInPage("setTimeout(() => { document.title = 'busy'; for (;;); })");
    ASSERT_TRUE(waitUntil([this] { return tab().title() == "busy"; }));
    int answers = 0;
    page().evaluate("1", [&answers](const QVariant &value) { answers += value.isValid() ? 100 : 1; });
    auto handle = scheduler.spawn(manager->operations().browserRead());
    settle();
    ASSERT_FALSE(handle.done());
    for (const pid_t process : pageProcesses())
        ::kill(process, SIGKILL);
    ASSERT_TRUE(waitUntil([&] { return answers > 0 && handle.done(); }));
    EXPECT_EQ(answers, 1) << "there is nothing to wait for";
    EXPECT_TRUE(handle.result().startsWith("Error: could not read the page."))
        << handle.result().toStdString();
    EXPECT_TRUE(hasHeard("Failed to load: The page crashed."));
    EXPECT_TRUE(click(1).startsWith("Error: "));
    EXPECT_TRUE(open("/two").startsWith("Page: Two\n"));
}

TEST_F(LoadTest, APageThatDiesWhileItIsLeftDoesNotHoldTheNext)
{
    open("/one");
    server.keepWaiting("/slow");
    page().load(server.url("/slow"));
    ASSERT_TRUE(waitUntil([this] { return !server.requests("/slow").isEmpty(); }));
    for (const pid_t process : pageProcesses())
        ::kill(process, SIGKILL);
    EXPECT_TRUE(open("/two").startsWith("Page: Two\n"));
    EXPECT_TRUE(tab().canGoBack());
}

TEST_F(LoadTest, ACrashedPageComesBackWithAReload)
{
    open("/one");
    for (const pid_t process : pageProcesses())
        ::kill(process, SIGKILL);
    ASSERT_TRUE(waitUntil([this] { return hasHeard("Failed to load: The page crashed."); }));
    page().reload();
    ASSERT_TRUE(waitUntil([this] { return server.requests("/one").size() == 2 && !page().isLoading(); }));
    EXPECT_TRUE(read().startsWith("Page: One\n"));
}

TEST_F(LoadTest, APageThatGoesRoundForEverCanBeReadAndLeft)
{
    server.page("/round", "<title>Round</title><meta http-equiv=refresh content=0><p>again");
    page().load(server.url("/round"));
    ASSERT_TRUE(waitUntil([this] { return server.requests("/round").size() > 5; }));
    EXPECT_TRUE(open("/two").startsWith("Page: Two\n"));
    EXPECT_EQ(tab().title(), "Two");
}

} // namespace
} // namespace morvane
