#include "integration/net/NetFixture.h"

#include <QDir>
#include <QProcess>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class HttpClientTest : public NetTest {
protected:
    static Task<int> statusOf(Task<HttpResponse> opening)
    {
        const HttpResponse response = co_await std::move(opening);
        co_return response.status();
    }
    static Task<QByteArray> bodyOf(Task<HttpResponse> opening)
    {
        HttpResponse response = co_await std::move(opening);
        co_return co_await response.body(ampleBytes);
    }
    static qsizetype openDescriptors()
    {
        return QDir(u"/proc/self/fd"_s).entryList(QDir::AllEntries | QDir::System).size();
    }
};

TEST_F(HttpClientTest, FetchGivesStatusHeadersAddressAndBody)
{
    RawHttpServer server(RawHttpServer::answering([](const RawHttpRequest &) {
        return rawHttpResponse(203, "hello", {{"X-Test", " one "}, {"x-test", "two"}});
    }));
    const FetchResult result = fetch(get(server.url("/a?b=c")));
    EXPECT_EQ(result.status, 203);
    EXPECT_TRUE(result.isSuccess());
    EXPECT_EQ(result.body, "hello");
    EXPECT_EQ(result.url, server.url("/a?b=c"));
    EXPECT_EQ(result.headers.value("X-TEST"), "one");
    EXPECT_EQ(server.requests().value(0).target, "/a?b=c");
    EXPECT_EQ(server.requests().value(0).method, "GET");
}

TEST_F(HttpClientTest, HeadComesBeforeTheBody)
{
    Gate headSeen = false;
    RawHttpServer server([&headSeen](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(rawHttpHead(200, {{"Content-Length", "4"}}));
        if (connection.waitUntil([&headSeen] { return headSeen.load(); }))
            connection.send("late");
    });
    auto opening = scheduler.spawn(client.open(get(server.url())));
    ASSERT_TRUE(waitUntil([&opening] { return opening.done(); }));
    HttpResponse response = opening.result();
    EXPECT_EQ(response.status(), 200);
    headSeen = true;
    EXPECT_EQ(runTask(scheduler, response.body(ampleBytes)), "late");
}

TEST_F(HttpClientTest, InterimResponsesArePassedOver)
{
    RawHttpServer server([](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send("HTTP/1.1 103 Early Hints\r\nLink: </x>\r\n\r\n");
        connection.send(rawHttpResponse(200, "final"));
        connection.waitUntilClosedByPeer();
    });
    const FetchResult result = fetch(get(server.url()));
    EXPECT_EQ(result.status, 200);
    EXPECT_FALSE(result.headers.contains("Link"));
    EXPECT_EQ(result.body, "final");
}

TEST_F(HttpClientTest, TrailersAreNoHeaders)
{
    RawHttpServer server([](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(rawHttpHead(200, {{"Transfer-Encoding", "chunked"}, {"Trailer", "X-Sum"}}));
        connection.sendChunk("body");
        connection.send("0\r\nX-Sum: 1\r\n\r\n");
        connection.waitUntilClosedByPeer();
    });
    const FetchResult result = fetch(get(server.url()));
    EXPECT_EQ(result.body, "body");
    EXPECT_FALSE(result.headers.contains("X-Sum"));
}

TEST_F(HttpClientTest, ErrorStatusIsAResponseWithItsBody)
{
    RawHttpServer server(RawHttpServer::answering(
        [](const RawHttpRequest &) { return rawHttpResponse(429, "{\"message\":\"slow down\"}\n"); }));
    const Lines lines = linesOf(get(server.url()));
    EXPECT_EQ(lines.lines, QList<QByteArray>{"{\"message\":\"slow down\"}"});
    EXPECT_EQ(lines.error, std::nullopt);
    EXPECT_EQ(runTask(scheduler, statusOf(client.open(get(server.url())))), 429);
}

TEST_F(HttpClientTest, PostSendsHeadersAndBodyAsGiven)
{
    RawHttpServer server(
        RawHttpServer::answering([](const RawHttpRequest &) { return rawHttpResponse(200, "ok"); }));
    HttpRequest request = post(server.url(), "{\"a\":1}");
    request.headers.set("Content-Type", "application/json");
    request.headers.set("x-goog-api-key", "");
    request.headers.set("User-Agent", "Test/1");
    fetch(request);
    const RawHttpRequest seen = server.requests().value(0);
    EXPECT_EQ(seen.method, "POST");
    EXPECT_EQ(seen.body, "{\"a\":1}");
    EXPECT_EQ(seen.headers.value("Content-Type"), "application/json");
    EXPECT_EQ(seen.headers.value("x-goog-api-key"), "");
    EXPECT_EQ(seen.headers.value("User-Agent"), "Test/1");
    EXPECT_FALSE(seen.headers.contains("Expect"));
}

TEST_F(HttpClientTest, MethodsWithAndWithoutABody)
{
    RawHttpServer server([](RawHttpConnection &connection) {
        while (const auto request = connection.readRequest()) {
            const bool isHead = request->method == "HEAD";
            connection.send(isHead ? rawHttpHead(200, {{"Content-Length", "5"}})
                                   : rawHttpResponse(200, "hello"));
        }
    });
    for (const char *method : {"HEAD", "DELETE", "PUT", "POST", "GET", "PATCH"}) {
        HttpRequest request = get(server.url());
        request.method = method;
        EXPECT_EQ(fetch(request).body, request.method == "HEAD" ? "" : "hello") << method;
        const RawHttpRequest seen = server.requests().last();
        EXPECT_EQ(seen.method, method);
        const bool sendsLength = request.method.startsWith('P');
        EXPECT_EQ(seen.headers.contains("Content-Length"), sendsLength) << method;
        EXPECT_FALSE(seen.headers.contains("Content-Type")) << method;
    }
}

TEST_F(HttpClientTest, UploadsALargeBodyWhole)
{
    RawHttpServer server(
        RawHttpServer::answering([](const RawHttpRequest &) { return rawHttpResponse(200, "ok"); }));
    QByteArray body;
    while (body.size() < 40 * 1000 * 1000)
        body += QByteArray::number(body.size()) + ' ';
    EXPECT_EQ(fetch(post(server.url(), body)).status, 200);
    EXPECT_TRUE(server.requests().value(0).body == body);
}

TEST_F(HttpClientTest, AnswerBeforeTheUploadIsDoneIsTheResponse)
{
    RawHttpServer server([](RawHttpConnection &connection) {
        connection.send(rawHttpResponse(413, "too much", {{"Connection", "close"}}));
        connection.waitUntilClosedByPeer();
    });
    const FetchResult result = fetch(post(server.url(), QByteArray(20 * 1000 * 1000, 'x')));
    EXPECT_EQ(result.status, 413);
    EXPECT_EQ(result.body, "too much");
}

TEST_F(HttpClientTest, SameConnectionServesRequestAfterRequest)
{
    RawHttpServer server(
        RawHttpServer::answering([](const RawHttpRequest &) { return rawHttpResponse(200, "ok"); }));
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(fetch(get(server.url())).body, "ok");
    EXPECT_EQ(server.acceptedConnections(), 1);
}

TEST_F(HttpClientTest, KeptConnectionThatTheServerClosedIsReplaced)
{
    RawHttpServer server([](RawHttpConnection &connection) {
        if (connection.readRequest())
            connection.send(rawHttpResponse(200, "ok"));
    });
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(fetch(get(server.url())).body, "ok");
    EXPECT_EQ(server.acceptedConnections(), 5);
}

TEST_F(HttpClientTest, ManyRequestsAtOnce)
{
    constexpr int count = 100;
    std::atomic<int> arrived = 0;
    RawHttpServer server([&arrived](RawHttpConnection &connection) {
        const auto request = connection.readRequest();
        ++arrived;
        if (request && connection.waitUntil([&arrived] { return arrived == count; }))
            connection.send(rawHttpResponse(200, request->target));
    });
    QList<TaskHandle<FetchResult>> handles;
    for (int i = 0; i < count; ++i)
        handles.append(scheduler.spawn(client.fetch(get(server.url(u"/%1"_s.arg(i))), 100)));
    for (int i = 0; i < count; ++i) {
        ASSERT_TRUE(waitUntil([&handles, i] { return handles[i].done(); })) << i;
        EXPECT_EQ(handles[i].result().body, "/" + QByteArray::number(i));
    }
}

TEST_F(HttpClientTest, ThousandRequestsLeaveNoDescriptors)
{
    RawHttpServer server([](RawHttpConnection &connection) {
        if (connection.readRequest())
            connection.send(rawHttpResponse(200, "ok", {{"Connection", "close"}}));
    });
    fetch(get(server.url()));
    ASSERT_TRUE(waitUntil([&server] { return server.openConnections() == 0; }));
    const qsizetype before = openDescriptors();
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(fetch(get(server.url())).status, 200);
    ASSERT_TRUE(waitUntil([&server] { return server.openConnections() == 0; }));
    EXPECT_LE(openDescriptors(), before);
}

TEST_F(HttpClientTest, CompressedBodyIsDecompressed)
{
    // "data: one\n" through gzip
    const QByteArray compressed =
        QByteArray::fromHex("1f8b08000000000002034b492c49b452c8cf4be50200ecfd36c80a000000");
    RawHttpServer server(RawHttpServer::answering([&compressed](const RawHttpRequest &) {
        return rawHttpResponse(200, compressed, {{"Content-Encoding", "gzip"}});
    }));
    EXPECT_EQ(linesOf(get(server.url())).lines, QList<QByteArray>{"data: one"});
    EXPECT_TRUE(server.requests().value(0).headers.value("Accept-Encoding")->contains("gzip"));
}

TEST_F(HttpClientTest, DecompressedSizeIsWhatTheLimitMeans)
{
    // qCompress: 4 bytes of length, then the zlib stream that HTTP calls "deflate"
    const QByteArray compressed = qCompress(QByteArray(50 * 1000 * 1000, '\0'), 9).sliced(4);
    RawHttpServer server(RawHttpServer::answering([&compressed](const RawHttpRequest &) {
        return rawHttpResponse(200, compressed, {{"Content-Encoding", "deflate"}});
    }));
    ASSERT_LT(compressed.size(), 100 * 1000);
    EXPECT_EQ(fetchFailure(get(server.url()), 1000 * 1000), TransportError::Kind::tooLarge);
    EXPECT_EQ(fetch(get(server.url())).body.size(), 50 * 1000 * 1000);
}

TEST_F(HttpClientTest, SizeLimitHoldsToTheByte)
{
    RawHttpServer server(RawHttpServer::answering(
        [](const RawHttpRequest &) { return rawHttpResponse(200, QByteArray(1000, 'x')); }));
    EXPECT_EQ(fetch(get(server.url()), 1000).body.size(), 1000);
    EXPECT_EQ(fetchFailure(get(server.url()), 999), TransportError::Kind::tooLarge);
}

TEST_F(HttpClientTest, SizeLimitStopsAnEndlessTransfer)
{
    Gate closed = false;
    RawHttpServer server([&closed](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(rawHttpHead(200, {}));
        while (connection.send(QByteArray(10000, 'x'))) {
        }
        closed = true;
    });
    EXPECT_EQ(fetchFailure(get(server.url()), 1000 * 1000), TransportError::Kind::tooLarge);
    EXPECT_TRUE(waitUntil([&closed] { return closed.load(); }));
}

TEST_F(HttpClientTest, SizeLimitHoldsForABodyThatCameBeforeItWasAskedFor)
{
    RawHttpServer server(RawHttpServer::answering(
        [](const RawHttpRequest &) { return rawHttpResponse(200, QByteArray(1000, 'x')); }));
    auto opening = scheduler.spawn(client.open(get(server.url())));
    ASSERT_TRUE(waitUntil([&opening] { return opening.done(); }));
    HttpResponse response = opening.result();
    EXPECT_EQ(failureOf(response.body(999)), TransportError::Kind::tooLarge);
}

TEST_F(HttpClientTest, LargeBodyArrivesWholeAfterTheHead)
{
    RawHttpServer server(RawHttpServer::answering(
        [](const RawHttpRequest &) { return rawHttpResponse(200, QByteArray(50 * 1000 * 1000, 'x')); }));
    EXPECT_EQ(runTask(scheduler, bodyOf(client.open(get(server.url())))).size(), 50 * 1000 * 1000);
}

TEST_F(HttpClientTest, EmptyBodies)
{
    RawHttpServer server(RawHttpServer::answering([](const RawHttpRequest &request) {
        return request.target == "/204" ? rawHttpHead(204, {}) : rawHttpResponse(200, "");
    }));
    EXPECT_EQ(fetch(get(server.url("/204"))).body, "");
    EXPECT_EQ(fetch(get(server.url("/200"))).body, "");
    EXPECT_TRUE(linesOf(get(server.url("/204"))).lines.isEmpty());
}

TEST_F(HttpClientTest, LoopbackIsNeverAskedThroughAProxyAndOthersAre)
{
    RawHttpServer proxy(
        RawHttpServer::answering([](const RawHttpRequest &) { return rawHttpResponse(200, "proxy"); }));
    RawHttpServer server(
        RawHttpServer::answering([](const RawHttpRequest &) { return rawHttpResponse(200, "direct"); }));
    qputenv("http_proxy", proxy.url().toEncoded());
    qunsetenv("no_proxy");
    EXPECT_EQ(fetch(get(server.url())).body, "direct");
    QUrl named = server.url();
    named.setHost(u"localhost"_s);
    EXPECT_EQ(fetch(get(named)).body, "direct");
    EXPECT_EQ(fetch(get(QUrl(u"http://example.test/page"_s))).body, "proxy");
    qunsetenv("http_proxy");
    EXPECT_EQ(proxy.requests().size(), 1);
    EXPECT_EQ(proxy.requests().value(0).target, "http://example.test/page");
}

TEST_F(HttpClientTest, UserNameAndPasswordOfTheAddressAreSent)
{
    RawHttpServer server(
        RawHttpServer::answering([](const RawHttpRequest &) { return rawHttpResponse(200, "ok"); }));
    QUrl url = server.url();
    url.setUserName(u"user"_s);
    url.setPassword(u"secret"_s);
    fetch(get(url));
    EXPECT_EQ(server.requests().value(0).headers.value("Authorization"),
              "Basic " + QByteArray("user:secret").toBase64());
}

TEST_F(HttpClientTest, NoThreadBeforeTheFirstRequest)
{
    const auto threads = [] {
        return QDir(u"/proc/self/task"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size();
    };
    const auto before = threads();
    HttpClient idle;
    EXPECT_EQ(threads(), before);
}

} // namespace
} // namespace morvane
