#include "WebFixture.h"

#include "support/FakeBrowser.h"
#include "support/FakeDesktop.h"
#include "support/QuietReminders.h"
#include "support/TemporaryHome.h"
#include "support/WillingUser.h"
#include "tools/BuiltinTools.h"
#include "tools/screen/ScreenTools.h"

#include <QUrlQuery>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

QString noResults(const QString &query)
{
    return "No search results were found for \"" + query +
           "\". Try a different query or use the web_fetch tool to read a specific page.";
}

QByteArray resultLink(int number)
{
    const QByteArray n = QByteArray::number(number);
    return "<div class=\"result\"><h2 class=\"result__title\"><a rel=\"nofollow\" class=\"result__a\" "
           "href=\"//search.example/l/?uddg=https%3A%2F%2Fsite" +
           n + ".example%2Fpage%3Fa%3D1%26b%3D2&amp;rut=abc\">Title <b>" + n + "</b></a></h2>\n";
}

QByteArray resultSnippet(int number)
{
    return "<a class=\"result__snippet\" href=\"//search.example/\">Snippet &quot;" +
           QByteArray::number(number) + "&quot;</a></div>\n";
}

QByteArray resultPage(int links, int snippets)
{
    QByteArray page = "<!DOCTYPE html>\n<html><body>\n";
    for (int number = 1; number <= links; ++number)
        page += resultLink(number) + (number <= snippets ? resultSnippet(number) : "</div>\n");
    return page + "</body></html>\n";
}

class WebSearchTest : public WebTest {
protected:
    /// A search service with these two answers.
    void serveSearch(const QByteArray &page, const QByteArray &instant = rawHttpResponse(200, "{}"))
    {
        serve(RawHttpServer::answering([page, instant](const RawHttpRequest &request) {
            return request.target.startsWith("/html/") ? page : instant;
        }));
    }
    void serveInstant(const QByteArray &json)
    {
        serveSearch(rawHttpResponse(200, "<html>a new layout</html>"), rawHttpResponse(200, json));
    }
};

TEST_F(WebSearchTest, APageOfTwentyLinksGivesSixEntries)
{
    serveSearch(rawHttpResponse(200, resultPage(20, 20)));
    QStringList expected;
    for (int number = 1; number <= 6; ++number) {
        const QString n = QString::number(number);
        expected << n + ". Title " + n + " \n   Snippet \"" + n + "\"\n   https://site" + n +
                        ".example/page?a=1&b=2";
    }
    EXPECT_EQ(search("fish"), expected.join("\n\n"));
    EXPECT_EQ(server->requests().size(), 1);
}

TEST_F(WebSearchTest, FiveLinksAndThreeSnippetsGiveSnippetsOnTheFirstThree)
{
    serveSearch(rawHttpResponse(200, resultPage(5, 3)));
    const QStringList entries = search("fish").split("\n\n");
    ASSERT_EQ(entries.size(), 5);
    EXPECT_EQ(entries[2], "3. Title 3 \n   Snippet \"3\"\n   https://site3.example/page?a=1&b=2");
    EXPECT_EQ(entries[3], "4. Title 4 \n   https://site4.example/page?a=1&b=2");
}

TEST_F(WebSearchTest, TheQueryArrivesAsItIs)
{
    for (const QString &query : {QString("latest version"), QString("c++ & c#"), QString("a=b?c/d%20"),
                                 u"\u00e4\u6f22\U0001F600"_qs, QString("\"quoted\"\nline"), QString()}) {
        serveSearch(rawHttpResponse(200, resultPage(1, 1)));
        EXPECT_TRUE(search(query).startsWith("1. Title 1"));
        ASSERT_EQ(server->requests().size(), 1);
        const RawHttpRequest request = server->requests().first();
        EXPECT_EQ(request.method, "GET");
        // What a form's reader takes for a blank must not be sent bare.
        EXPECT_FALSE(request.target.contains('+')) << request.target.constData();
        const QUrl target(QString::fromLatin1(request.target));
        EXPECT_EQ(target.path(), "/html/");
        EXPECT_EQ(QUrlQuery(target).queryItemValue("q", QUrl::FullyDecoded), query);
    }
}

TEST_F(WebSearchTest, AnEmptyQueryIsSentAsItIs)
{
    serveInstant("{}");
    EXPECT_EQ(search(""), noResults(""));
    EXPECT_EQ(server->requests().value(0).target, "/html/?q=");
    EXPECT_EQ(server->requests().value(1).target, "/?q=&format=json&no_html=1&skip_disambig=1&kl=us-en");
}

TEST_F(WebSearchTest, TheResultsPageIsAskedForAsABrowserAndTheInstantAnswerNot)
{
    serveInstant("{}");
    search("fish");
    ASSERT_EQ(server->requests().size(), 2);
    EXPECT_TRUE(header(server->requests()[0], "User-Agent").startsWith("Mozilla/5.0 (Macintosh; "));
    EXPECT_EQ(header(server->requests()[1], "User-Agent"), HttpClientOptions().userAgent);
    EXPECT_EQ(server->requests()[1].target, "/?q=fish&format=json&no_html=1&skip_disambig=1&kl=us-en");
}

TEST_F(WebSearchTest, AChangedLayoutFallsThroughToTheInstantAnswer)
{
    serveInstant(R"({"AbstractText": "A fish.", "AbstractURL": "https://a.example/fish", "RelatedTopics": [
        {"Text": "Trout", "FirstURL": "https://a.example/trout"}, {"Name": "Group", "Topics": []}]})");
    EXPECT_EQ(search("fish"),
              "Summary: A fish.\nSource: https://a.example/fish\n- Trout\n  https://a.example/trout");
}

TEST_F(WebSearchTest, WithoutAnInstantAnswerThereAreNoResults)
{
    for (const char *const json : {"{}", "[]", "", "<html>", "{\"AbstractText\": \"\"}", "\xff"}) {
        serveInstant(json);
        EXPECT_EQ(search("a \"fish\""), noResults("a \"fish\"")) << json;
    }
}

TEST_F(WebSearchTest, EveryOtherStatusIsTold)
{
    for (const int status : {304, 403, 404, 429, 500}) {
        serveSearch(rawHttpResponse(status, resultPage(3, 3)));
        EXPECT_EQ(search("fish"), "Search failed with HTTP " + QString::number(status) + ".");
        serveSearch(rawHttpResponse(200, "x"), rawHttpResponse(status, "{}"));
        EXPECT_EQ(search("fish"), "Search failed with HTTP " + QString::number(status) + ".");
    }
}

TEST_F(WebSearchTest, RedirectsAreFollowed)
{
    serve(RawHttpServer::answering([](const RawHttpRequest &request) {
        return request.target == "/elsewhere" ? rawHttpResponse(200, resultPage(1, 0))
                                              : rawHttpResponse(302, "", {{"Location", "/elsewhere"}});
    }));
    EXPECT_TRUE(search("fish").startsWith("1. Title 1"));
}

TEST_F(WebSearchTest, AResultsPageThatIsNoTextCannotBeRead)
{
    serveSearch(rawHttpResponse(200, resultPage(3, 3) + "\xe9"));
    EXPECT_EQ(search("fish"), "Could not read the search results.");
}

TEST_F(WebSearchTest, TransportFailuresAreTold)
{
    const QByteArray truncated = rawHttpHead(200, {{"Content-Length", "1000"}}) + "begun";
    serve([truncated](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(truncated);
    });
    EXPECT_EQ(search("fish"), "Search failed: The connection was lost.");
    serve([truncated](RawHttpConnection &connection) {
        const auto request = connection.readRequest();
        const bool isPage = request && request->target.startsWith("/html/");
        connection.send(isPage ? rawHttpResponse(200, "x", {{"Connection", "close"}}) : truncated);
    });
    EXPECT_EQ(search("fish"), "Search failed: The connection was lost.");
}

TEST_F(WebSearchTest, AnswersThatAreTooLargeFail)
{
    const QByteArray large(10'000'000, ' ');
    serveSearch(rawHttpResponse(200, large));
    EXPECT_EQ(search("fish"), "Search failed: The server's answer is too large.");
    serveSearch(rawHttpResponse(200, "x"), rawHttpResponse(200, large));
    EXPECT_EQ(search("fish"), "Search failed: The server's answer is too large.");
}

TEST_F(WebSearchTest, CancellingEndsTheSearchAndIsAnswered)
{
    serve([](RawHttpConnection &connection) {
        connection.readRequest();
        connection.waitUntilClosedByPeer();
    });
    auto handle = scheduler.spawn(tools->webSearch("fish"));
    ASSERT_TRUE(waitUntil([this] { return server->requests().size() == 1; }));
    handle.cancel();
    ASSERT_TRUE(waitUntil([&handle] { return handle.done(); }));
    EXPECT_EQ(handle.result(), "Search failed: The request was cancelled.");
    EXPECT_TRUE(waitUntil([this] { return server->connectionsClosedByPeer() == 1; }));
}

TEST_F(WebSearchTest, AnAddressThatIsNoneIsTold)
{
    WebTools lost(client, {"http://[", "http://["});
    EXPECT_EQ(runTask(scheduler, lost.webSearch("fish")), "Error: could not build the search URL.");
    EXPECT_EQ(runTask(scheduler, lost.duckDuckGoInstantAnswer("fish")), noResults("fish"));
}

TEST_F(WebSearchTest, TheTwoToolsAreCalledByName)
{
    serveSearch(rawHttpResponse(200, resultPage(1, 0)), rawHttpResponse(200, "<p>a page</p>"));
    const QString origin = u"http://127.0.0.1:%1"_s.arg(server->port());
    TemporaryHome home;
    QuietReminders reminders(scheduler, home.path("Morvane.conf"));
    FakeDesktop desktop;
    ScreenTools screen(desktop.desktop());
    FakeBrowser browser;
    BuiltinTools builtin(client, reminders.store, screen, browser, {origin, origin});
    WillingUser user(scheduler);
    const auto execute = [&](const QString &name, boost::json::object arguments) {
        return runTask(scheduler, builtin.execute(user.permit({name, std::move(arguments), {}, {}}))).text;
    };
    EXPECT_EQ(execute("web_search", {{"query", "fish"}}),
              "1. Title 1 \n   https://site1.example/page?a=1&b=2");
    EXPECT_EQ(execute("web_search", {{"query", 5}}), "1. Title 1 \n   https://site1.example/page?a=1&b=2");
    EXPECT_EQ(server->requests().value(1).target, "/html/?q=");
    EXPECT_EQ(execute("web_fetch", {{"url", url().toStdString()}}), "a page");
}

} // namespace
} // namespace morvane
