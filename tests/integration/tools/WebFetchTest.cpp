#include "WebFixture.h"

#include "support/FakeClock.h"

#include <QProcess>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;

namespace morvane {
namespace {

const QString tooLarge = "The page is too large to read.";
const QString undecodable = "Could not decode the page as text.";

using WebFetchTest = WebTest;

QByteArray gzipped(const QByteArray &bytes)
{
    QProcess gzip;
    gzip.start("gzip", {"-c"});
    gzip.write(bytes);
    gzip.closeWriteChannel();
    EXPECT_TRUE(gzip.waitForFinished());
    return gzip.readAllStandardOutput();
}

TEST_F(WebFetchTest, ThePageComesBackAsOneLineOfText)
{
    serveBody("<!DOCTYPE html>\n<html><head><title>Fish</title>\n<style>p { color: red }</style>\n"
              "<script>track();</script></head>\n<body><h1>Fish &amp; chips</h1>\n"
              "<p>cost \xe2\x82\xac 5.</p></body></html>\n");
    EXPECT_EQ(fetch(), u"Fish Fish & chips cost \u20ac 5."_qs);
}

TEST_F(WebFetchTest, AsksAsABrowserWithOneGet)
{
    serveBody("x");
    EXPECT_EQ(fetch(), "x");
    ASSERT_EQ(server->requests().size(), 1);
    const RawHttpRequest request = server->requests().first();
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.target, "/page");
    EXPECT_EQ(header(request, "User-Agent"),
              "Mozilla/5.0 (Macintosh; Intel Mac OS X 10_15_7) AppleWebKit/605.1.15 (KHTML, like Gecko) "
              "Version/17.0 Safari/605.1.15");
}

TEST_F(WebFetchTest, OnlyAddressesOfTheWebAreFetched)
{
    serveBody("x");
    for (const QString &url :
         {QString("ftp://a.example/file"), QString("not a url"), QString(), QString("file:///etc/passwd"),
          QString("a.example/page"), QString("javascript:1"), QString("http://a b.example/"),
          QString("http://a.example:99999/"), QString("//a.example/x"), QString("data:text/html,x")}) {
        EXPECT_EQ(runTask(scheduler, tools->webFetch(url)), "Error: invalid URL \"" + url + "\".");
    }
    EXPECT_TRUE(server->requests().isEmpty());
}

TEST_F(WebFetchTest, TheSchemeMayBeInCapitals)
{
    serveBody("x");
    EXPECT_EQ(runTask(scheduler, tools->webFetch(url().replace("http:", "HTTP:"))), "x");
}

TEST_F(WebFetchTest, AnAddressWithoutAHostFails)
{
    serveBody("x");
    EXPECT_EQ(runTask(scheduler, tools->webFetch("http://")),
              "Fetch failed: The address is not a valid http or https address.");
}

TEST_F(WebFetchTest, ABlankInTheAddressIsEncoded)
{
    serveBody("x");
    EXPECT_EQ(runTask(scheduler, tools->webFetch(url("/a b?c=\u00e4"))), "x");
    EXPECT_EQ(server->requests().value(0).target, "/a%20b?c=%C3%A4");
}

TEST_F(WebFetchTest, EveryOtherStatusIsTold)
{
    for (const int status : {300, 304, 400, 401, 403, 404, 429, 500, 503}) {
        serveBytes(rawHttpResponse(status, "<p>the server's own page</p>"));
        EXPECT_EQ(fetch(), "Fetch failed with HTTP " + QString::number(status) + ".");
    }
}

TEST_F(WebFetchTest, EveryGoodStatusHasItsText)
{
    for (const int status : {200, 201, 206, 299}) {
        serveBytes(rawHttpResponse(status, "x"));
        EXPECT_EQ(fetch(), "x") << status;
    }
}

TEST_F(WebFetchTest, TheBodyOfAFailureIsNotWaitedFor)
{
    serve([](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(rawHttpHead(404, {{"Content-Length", "1000"}}));
        connection.waitUntilClosedByPeer();
    });
    EXPECT_EQ(fetch(), "Fetch failed with HTTP 404.");
}

TEST_F(WebFetchTest, RedirectsAreFollowed)
{
    serve(RawHttpServer::answering([](const RawHttpRequest &request) {
        if (request.target == "/page")
            return rawHttpResponse(302, "moved", {{"Location", "/second"}});
        if (request.target == "/second")
            return rawHttpResponse(301, "moved", {{"Location", "/third"}});
        return rawHttpResponse(200, "arrived at " + request.target);
    }));
    EXPECT_EQ(fetch(), "arrived at /third");
}

TEST_F(WebFetchTest, RedirectsInACircleFail)
{
    serve(RawHttpServer::answering(
        [](const RawHttpRequest &) { return rawHttpResponse(302, "", {{"Location", "/page"}}); }));
    EXPECT_EQ(fetch(), "Fetch failed: The server redirected too many times.");
}

TEST_F(WebFetchTest, ARedirectOutOfTheWebFails)
{
    serve(RawHttpServer::answering([](const RawHttpRequest &) {
        return rawHttpResponse(302, "", {{"Location", "file:///etc/passwd"}});
    }));
    EXPECT_EQ(fetch(), "Fetch failed: The address is not a valid http or https address.");
}

TEST_F(WebFetchTest, APageInLatin1CannotBeDecoded)
{
    serveBytes(rawHttpResponse(200, "<p>Caf\xe9</p>", {{"Content-Type", "text/html; charset=iso-8859-1"}}));
    EXPECT_EQ(fetch(), undecodable);
}

TEST_F(WebFetchTest, BytesThatOnlyLookLikeUtf8CannotBeDecoded)
{
    for (const char *const body :
         {"cut \xe2\x82", "overlong \xc0\xaf", "surrogate \xed\xa0\x80", "\xff\xfeh\0i"}) {
        serveBody(body);
        EXPECT_EQ(fetch(), undecodable) << body;
    }
}

TEST_F(WebFetchTest, AByteOrderMarkIsNoText)
{
    serveBody("\xef\xbb\xbfx");
    EXPECT_EQ(fetch(), "x");
}

TEST_F(WebFetchTest, APageOfScriptsHasNoReadableText)
{
    serveBody("<html><head><script>a();</script></head>\n<body><script>b();</script>&nbsp;</body></html>");
    EXPECT_EQ(fetch(), "The page returned no readable text.");
    serveBody("");
    EXPECT_EQ(fetch(), "The page returned no readable text.");
}

TEST_F(WebFetchTest, OnlyTheFirstSixThousandCharactersComeBack)
{
    serveBody("<p>" + QByteArray(6000, 'a') + "</p>");
    EXPECT_EQ(fetch(), QString(6000, u'a'));
    serveBody("<p>" + QByteArray(5999, 'a') + "bc</p>");
    EXPECT_EQ(fetch(), QString(5999, u'a') + u'b');
    const QString families = u"\U0001F468\u200D\U0001F469\u200D\U0001F467"_qs.repeated(6001);
    serveBody(families.toUtf8());
    EXPECT_EQ(fetch(), families.first(families.size() / 6001 * 6000));
}

TEST_F(WebFetchTest, ABodyOfTenMillionBytesIsTooLarge)
{
    serveBody(QByteArray(9'999'999, 'a'));
    EXPECT_EQ(fetch(), QString(6000, u'a'));
    serveBody(QByteArray(10'000'000, 'a'));
    EXPECT_EQ(fetch(), tooLarge);
}

TEST_F(WebFetchTest, AnEndlessBodyIsStopped)
{
    serve([](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(rawHttpHead(200, {{"Transfer-Encoding", "chunked"}}));
        while (connection.sendChunk(QByteArray(100'000, 'a'))) {
        }
    });
    EXPECT_EQ(fetch(), tooLarge);
    EXPECT_TRUE(waitUntil([this] { return server->openConnections() == 0; }));
}

TEST_F(WebFetchTest, ACompressedPageIsRead)
{
    serveBytes(rawHttpResponse(200, gzipped("<p>small</p>"), {{"Content-Encoding", "gzip"}}));
    EXPECT_EQ(fetch(), "small");
}

TEST_F(WebFetchTest, ACompressedBombIsStoppedBeforeItsEnd)
{
    const QByteArray bomb = gzipped(QByteArray(40'000'000, ' '));
    ASSERT_LT(bomb.size(), 100'000);
    serve([bomb](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(rawHttpHead(
            200, {{"Content-Encoding", "gzip"}, {"Content-Length", QByteArray::number(bomb.size())}}));
        connection.send(bomb.first(bomb.size() / 2));
        connection.waitUntilClosedByPeer();
    });
    EXPECT_EQ(fetch(), tooLarge);
    EXPECT_TRUE(waitUntil([this] { return server->connectionsClosedByPeer() == 1; }));
}

TEST_F(WebFetchTest, ATruncatedBodyFails)
{
    serveBytes(rawHttpHead(200, {{"Content-Length", "1000"}}) + "<p>the beginning");
    EXPECT_EQ(fetch(), "Fetch failed: The connection was lost.");
    serveBytes(rawHttpHead(200, {{"Transfer-Encoding", "chunked"}}) + "5\r\nbegin\r\n");
    EXPECT_EQ(fetch(), "Fetch failed: The connection was lost.");
}

TEST_F(WebFetchTest, WhatIsNoHttpFails)
{
    serveBytes("SSH-2.0-hello\r\n");
    EXPECT_EQ(fetch(), "Fetch failed: The server sent an answer that could not be understood.");
}

TEST_F(WebFetchTest, ARefusedConnectionFails)
{
    serveBody("x");
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ASSERT_EQ(::bind(socket, reinterpret_cast<sockaddr *>(&address), size), 0);
    ASSERT_EQ(::getsockname(socket, reinterpret_cast<sockaddr *>(&address), &size), 0);
    const QString unserved = u"http://127.0.0.1:%1/"_s.arg(ntohs(address.sin_port));
    EXPECT_EQ(runTask(scheduler, tools->webFetch(unserved)),
              "Fetch failed: The server could not be reached.");
    ::close(socket);
}

TEST_F(WebFetchTest, ASilentServerIsLeft)
{
    WebLimits limits;
    limits.silence = 100ms;
    serve(
        [](RawHttpConnection &connection) {
            connection.readRequest();
            connection.send(rawHttpHead(200, {{"Content-Length", "10"}}) + "begun");
            connection.waitUntilClosedByPeer();
        },
        limits);
    EXPECT_EQ(fetch(), "Fetch failed: The server did not answer in time.");
}

TEST_F(WebFetchTest, ATricklingServerIsLeftAfterAMinute)
{
    FakeClock time;
    Scheduler ownScheduler(time);
    std::atomic<bool> trickles = true;
    serve([&trickles](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(rawHttpHead(200, {{"Content-Length", "1000"}}) + "b");
        connection.waitUntil([&trickles] { return !trickles; });
        connection.send("c");
        connection.waitUntilClosedByPeer();
    });
    auto handle = ownScheduler.spawn(tools->webFetch(url()));
    ASSERT_TRUE(waitUntil([this] { return server->sentBytes() > 40; }));
    time.advance(59'999ms);
    trickles = false;
    settle();
    EXPECT_FALSE(handle.done());
    time.advance(1ms);
    ASSERT_TRUE(waitUntil([&handle] { return handle.done(); }));
    EXPECT_EQ(handle.result(), "Fetch failed: The server did not answer in time.");
    EXPECT_TRUE(waitUntil([this] { return server->connectionsClosedByPeer() == 1; }));
}

TEST_F(WebFetchTest, CancellingEndsTheFetchAndIsAnswered)
{
    serve([](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(rawHttpHead(200, {{"Content-Length", "1000"}}) + "begun");
        connection.waitUntilClosedByPeer();
    });
    auto handle = scheduler.spawn(tools->webFetch(url()));
    ASSERT_TRUE(waitUntil([this] { return server->sentBytes() > 40; }));
    EXPECT_FALSE(handle.done());
    handle.cancel();
    ASSERT_TRUE(waitUntil([&handle] { return handle.done(); }));
    EXPECT_EQ(handle.result(), "Fetch failed: The request was cancelled.");
    EXPECT_TRUE(waitUntil([this] { return server->connectionsClosedByPeer() == 1; }));
}

TEST_F(WebFetchTest, AFetchOfACancelledRunAnswersAtOnce)
{
    serveBody("x");
    auto handle = scheduler.spawn(tools->webFetch(url()));
    handle.cancel();
    ASSERT_TRUE(waitUntil([&handle] { return handle.done(); }));
    EXPECT_EQ(handle.result(), "Fetch failed: The request was cancelled.");
}

TEST_F(WebFetchTest, ManyPagesAreFetchedAtOnce)
{
    serve(RawHttpServer::answering(
        [](const RawHttpRequest &request) { return rawHttpResponse(200, "page " + request.target); }));
    std::vector<TaskHandle<QString>> handles;
    for (int i = 0; i < 20; ++i)
        handles.push_back(scheduler.spawn(tools->webFetch(url("/" + QString::number(i)))));
    for (int i = 0; i < 20; ++i) {
        auto &handle = handles[static_cast<std::size_t>(i)];
        ASSERT_TRUE(waitUntil([&handle] { return handle.done(); }));
        EXPECT_EQ(handle.result(), "page /" + QString::number(i));
    }
}

} // namespace
} // namespace morvane
