#include "integration/net/NetFixture.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using namespace std::chrono_literals;
using Kind = TransportError::Kind;

/// A port whose backlog is full: the system drops what knocks.
class FullBacklog {
public:
    FullBacklog()
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto *const generic = reinterpret_cast<sockaddr *>(&address);
        m_sockets.push_back(::socket(AF_INET, SOCK_STREAM, 0));
        EXPECT_EQ(::bind(m_sockets.front(), generic, size), 0);
        EXPECT_EQ(::listen(m_sockets.front(), 0), 0);
        EXPECT_EQ(::getsockname(m_sockets.front(), generic, &size), 0);
        m_port = ntohs(address.sin_port);
        for (int i = 0; i < 4; ++i) {
            m_sockets.push_back(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0));
            ::connect(m_sockets.back(), generic, size);
        }
    }
    ~FullBacklog()
    {
        for (const int socket : m_sockets)
            ::close(socket);
    }
    FullBacklog(const FullBacklog &) = delete;
    FullBacklog &operator=(const FullBacklog &) = delete;

    QUrl url() const { return QUrl(u"http://127.0.0.1:%1/"_s.arg(m_port)); }

private:
    std::vector<int> m_sockets; ///< The listener and what fills its backlog.
    quint16 m_port = 0;
};

class TransportFailureTest : public NetTest {
protected:
    /// Sends `bytes` after the request and then ends the connection in order.
    static RawHttpServer::Script sendAndClose(const QByteArray &bytes)
    {
        return [bytes](RawHttpConnection &connection) {
            connection.readRequest();
            connection.send(bytes);
        };
    }
    /// Sends `bytes` after the request and then nothing more.
    static RawHttpServer::Script sendAndStall(const QByteArray &bytes)
    {
        return [bytes](RawHttpConnection &connection) {
            connection.readRequest();
            connection.send(bytes);
            connection.waitUntilClosedByPeer();
        };
    }
    HttpRequest impatient(const QUrl &url)
    {
        HttpRequest request = get(url);
        request.silenceLimit = 150ms;
        return request;
    }
    static quint16 portWithoutListener()
    {
        const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        EXPECT_EQ(::bind(socket, reinterpret_cast<sockaddr *>(&address), size), 0);
        EXPECT_EQ(::getsockname(socket, reinterpret_cast<sockaddr *>(&address), &size), 0);
        ::close(socket);
        return ntohs(address.sin_port);
    }
};

TEST_F(TransportFailureTest, RefusedPort)
{
    const QUrl url(u"http://127.0.0.1:%1/"_s.arg(portWithoutListener()));
    EXPECT_EQ(fetchFailure(get(url)), Kind::cannotConnectToHost);
    EXPECT_EQ(failureOf(client.open(get(url))), Kind::cannotConnectToHost);
}

TEST_F(TransportFailureTest, UnresolvedHostIsTold)
{
    // ".invalid" never resolves; without any network that is the reason that is told.
    const auto kind = fetchFailure(get(QUrl(u"http://morvane-test.invalid/"_s)));
    EXPECT_TRUE(kind == Kind::unresolvedHost || kind == Kind::notConnectedToInternet);
}

TEST_F(TransportFailureTest, ContentLengthThatIsNotReachedIsALostConnection)
{
    RawHttpServer server(sendAndClose(rawHttpHead(200, {{"Content-Length", "100"}}) + "one\ntwo\nthr"));
    const Lines result = linesOf(get(server.url()));
    EXPECT_EQ(result.lines, (QList<QByteArray>{"one", "two"}));
    EXPECT_EQ(result.error, Kind::networkConnectionLost);
    EXPECT_EQ(fetchFailure(get(server.url())), Kind::networkConnectionLost);
}

TEST_F(TransportFailureTest, ChunkedBodyWithoutItsEndIsALostConnection)
{
    const QByteArray head = rawHttpHead(200, {{"Transfer-Encoding", "chunked"}});
    for (const char *body : {"4\r\none\n\r\n", "4\r\none\n\r\n5\r\ntw", "4\r\none\n\r\n0", "4\r\none\n"}) {
        RawHttpServer server(sendAndClose(head + body));
        const Lines result = linesOf(get(server.url()));
        EXPECT_EQ(result.lines, QList<QByteArray>{"one"}) << body;
        EXPECT_EQ(result.error, Kind::networkConnectionLost) << body;
    }
}

TEST_F(TransportFailureTest, TruncationIsSeenEveryTime)
{
    RawHttpServer server(
        sendAndClose(rawHttpHead(200, {{"Transfer-Encoding", "chunked"}}) + "6\r\nhello\n\r\n"));
    for (int i = 0; i < 100; ++i)
        ASSERT_EQ(linesOf(get(server.url())).error, Kind::networkConnectionLost) << i;
}

TEST_F(TransportFailureTest, BodyWithoutLengthEndsWithTheConnection)
{
    RawHttpServer server(sendAndClose(rawHttpHead(200, {}) + "one\ntwo"));
    const Lines result = linesOf(get(server.url()));
    EXPECT_EQ(result.lines, (QList<QByteArray>{"one", "two"}));
    EXPECT_EQ(result.error, std::nullopt);
}

TEST_F(TransportFailureTest, ResetInMidStreamIsALostConnection)
{
    Gate read = false;
    RawHttpServer server([&read](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(rawHttpHead(200, {}) + "one\ntwo\n");
        if (connection.waitUntil([&read] { return read.load(); }))
            connection.reset();
    });
    HttpResponse response = runTask(scheduler, client.open(get(server.url())));
    LineReader reader = response.lines();
    EXPECT_EQ(runTask(scheduler, nextOf(&reader)), "one");
    EXPECT_EQ(runTask(scheduler, nextOf(&reader)), "two");
    read = true;
    EXPECT_EQ(failureOf(nextOf(&reader)), Kind::networkConnectionLost);
    EXPECT_EQ(failureOf(nextOf(&reader)), Kind::networkConnectionLost);
}

TEST_F(TransportFailureTest, ConnectionEndedWithoutAnAnswerIsLost)
{
    RawHttpServer closing([](RawHttpConnection &connection) { connection.readRequest(); });
    EXPECT_EQ(fetchFailure(get(closing.url())), Kind::networkConnectionLost);
    RawHttpServer resetting([](RawHttpConnection &connection) {
        connection.readRequest();
        connection.reset();
    });
    EXPECT_EQ(fetchFailure(get(resetting.url())), Kind::networkConnectionLost);
}

TEST_F(TransportFailureTest, HeadThatBreaksOffIsALostConnection)
{
    for (const char *head : {"HTTP/1.1 200 OK\r\nContent-Le", "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n",
                             "HTTP/1.1 200 OK\r\n", "HTTP/1.1 20"}) {
        RawHttpServer server(sendAndClose(head));
        EXPECT_EQ(fetchFailure(get(server.url())), Kind::networkConnectionLost) << head;
        EXPECT_EQ(failureOf(client.open(get(server.url()))), Kind::networkConnectionLost) << head;
    }
}

TEST_F(TransportFailureTest, WhatIsNoHttpIsMalformed)
{
    RawHttpServer other(sendAndClose("220 mail.example ESMTP ready\r\n"));
    EXPECT_EQ(fetchFailure(get(other.url())), Kind::malformedResponse);
    RawHttpServer binary(sendAndClose(QByteArray(1000, '\0')));
    EXPECT_EQ(fetchFailure(get(binary.url())), Kind::malformedResponse);
}

TEST_F(TransportFailureTest, BrokenChunksAndCompressionAreMalformed)
{
    RawHttpServer chunks(
        sendAndClose(rawHttpHead(200, {{"Transfer-Encoding", "chunked"}}) + "zz\r\nhello\r\n0\r\n\r\n"));
    EXPECT_EQ(fetchFailure(get(chunks.url())), Kind::malformedResponse);
    RawHttpServer compressed(
        sendAndClose(rawHttpResponse(200, "this is no gzip", {{"Content-Encoding", "gzip"}})));
    EXPECT_EQ(fetchFailure(get(compressed.url())), Kind::malformedResponse);
}

TEST_F(TransportFailureTest, HeadersAboveTheLimitAreTooLarge)
{
    RawHttpServer oneLine(sendAndStall("HTTP/1.1 200 OK\r\nX: " + QByteArray(1000 * 1000, 'x')));
    EXPECT_EQ(fetchFailure(get(oneLine.url())), Kind::tooLarge);
    RawHttpServer manyLines(
        sendAndStall("HTTP/1.1 200 OK\r\n" + QByteArray("X: 0123456789\r\n").repeated(100000)));
    EXPECT_EQ(fetchFailure(get(manyLines.url())), Kind::tooLarge);
    RawHttpServer interim([](RawHttpConnection &connection) {
        connection.readRequest();
        while (connection.send("HTTP/1.1 100 Continue\r\n\r\n")) {
        }
    });
    EXPECT_EQ(fetchFailure(get(interim.url())), Kind::tooLarge);
}

TEST_F(TransportFailureTest, ManyHeadersBelowTheLimitAreRead)
{
    RawHttpServer server(sendAndStall("HTTP/1.1 200 OK\r\n" + QByteArray("X: 0123456789\r\n").repeated(5000) +
                                      "Content-Length: 2\r\n\r\nok"));
    const FetchResult result = fetch(get(server.url()));
    EXPECT_EQ(result.headers.fields().size(), 5001);
    EXPECT_EQ(result.body, "ok");
}

TEST_F(TransportFailureTest, LineEndsInRequestHeadersAreRefused)
{
    RawHttpServer server(
        RawHttpServer::answering([](const RawHttpRequest &) { return rawHttpResponse(200, "ok"); }));
    for (const char *value : {"a\r\nX-Injected: 1", "a\nb", "a\rb", "key\n"}) {
        HttpRequest request = get(server.url());
        request.headers.set("Authorization", value);
        EXPECT_EQ(fetchFailure(request), Kind::invalidRequest) << value;
        EXPECT_EQ(failureOf(client.open(request)), Kind::invalidRequest) << value;
    }
    HttpRequest named = get(server.url());
    named.headers.set("X-A: b\r\nX-Injected", "1");
    EXPECT_EQ(fetchFailure(named), Kind::invalidRequest);
    HttpRequest method = get(server.url());
    method.method = "GET / HTTP/1.1\r\nX-Injected: 1\r\n";
    EXPECT_EQ(fetchFailure(method), Kind::invalidRequest);
    EXPECT_EQ(server.acceptedConnections(), 0);
}

TEST_F(TransportFailureTest, AddressesThatAreNoHttpAreRefused)
{
    for (const char *url : {"", "no scheme", "ftp://127.0.0.1/", "file:///etc/passwd", "http://", "http:///x",
                            "dict://127.0.0.1:1/"}) {
        EXPECT_EQ(fetchFailure(get(QUrl(QString::fromLatin1(url)))), Kind::invalidUrl) << url;
    }
}

TEST_F(TransportFailureTest, SilenceBeforeTheHeadTimesOut)
{
    RawHttpServer server(sendAndStall(""));
    EXPECT_EQ(failureOf(client.open(impatient(server.url()))), Kind::timedOut);
    EXPECT_TRUE(waitUntil([&server] { return server.connectionsClosedByPeer() == 1; }));
}

TEST_F(TransportFailureTest, SilenceInTheBodyTimesOut)
{
    RawHttpServer server(sendAndStall(rawHttpHead(200, {{"Content-Length", "50000000"}}) + "one\ntw"));
    const Lines result = linesOf(impatient(server.url()));
    EXPECT_EQ(result.lines, QList<QByteArray>{"one"});
    EXPECT_EQ(result.error, Kind::timedOut);
    EXPECT_EQ(fetchFailure(impatient(server.url())), Kind::timedOut);
}

TEST_F(TransportFailureTest, LargeBodyThatStallsTimesOut)
{
    RawHttpServer server(
        sendAndStall(rawHttpHead(200, {{"Content-Length", "50000000"}}) + QByteArray(30 * 1000 * 1000, 'x')));
    EXPECT_EQ(fetchFailure(impatient(server.url())), Kind::timedOut);
}

TEST_F(TransportFailureTest, LargeBodyThatEndsEarlyIsALostConnection)
{
    RawHttpServer server(
        sendAndClose(rawHttpHead(200, {{"Content-Length", "50000000"}}) + QByteArray(49 * 1000 * 1000, 'x')));
    EXPECT_EQ(fetchFailure(get(server.url())), Kind::networkConnectionLost);
}

TEST_F(TransportFailureTest, ServerThatDoesNotTakeTheUploadTimesOut)
{
    RawHttpServer server([](RawHttpConnection &connection) { connection.waitUntil([] { return false; }); });
    HttpRequest request = impatient(server.url());
    request.method = "POST";
    request.body = QByteArray(50 * 1000 * 1000, 'x');
    EXPECT_EQ(fetchFailure(request), Kind::timedOut);
}

TEST_F(TransportFailureTest, UploadThatIsTakenSlowlyIsNoSilence)
{
    // A pause of a fifth of the limit after each of the first megabytes: several limits in all. The rest,
    // much of which waits in the system's buffers where the client no longer sees it, is taken at once.
    constexpr qsizetype megabyte = 1000 * 1000;
    RawHttpServer server([](RawHttpConnection &connection) {
        for (int i = 0; i < 20; ++i) {
            const auto next = std::chrono::steady_clock::now() + 100ms;
            if (!connection.skipBytes(megabyte) ||
                !connection.waitUntil([next] { return std::chrono::steady_clock::now() >= next; }))
                return;
        }
        if (!connection.skipBytes(20 * megabyte))
            return;
        connection.send(rawHttpResponse(200, "taken"));
        connection.waitUntilClosedByPeer();
    });
    HttpRequest request = post(server.url(), QByteArray(40 * megabyte, 'x'));
    request.silenceLimit = 500ms;
    EXPECT_EQ(fetch(request).body, "taken");
}

TEST_F(TransportFailureTest, TrickleIsNoSilence)
{
    // Ten pieces with pauses of half the limit: several limits in all.
    RawHttpServer server([](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(rawHttpHead(200, {{"Content-Length", "10"}}));
        for (int i = 0; i < 10; ++i) {
            const auto next = std::chrono::steady_clock::now() + 100ms;
            if (!connection.waitUntil([next] { return std::chrono::steady_clock::now() >= next; }))
                return;
            connection.send("x");
        }
        connection.waitUntilClosedByPeer();
    });
    HttpRequest request = get(server.url());
    request.silenceLimit = 500ms;
    EXPECT_EQ(fetch(request).body, "xxxxxxxxxx");
}

TEST_F(TransportFailureTest, ConnectingHasAsMuchTimeAsSilence)
{
    EXPECT_EQ(HttpRequest().connectLimit, std::nullopt);
    const FullBacklog backlog;
    HttpRequest request = get(backlog.url());
    request.silenceLimit = 200ms;
    EXPECT_EQ(fetchFailure(request), Kind::timedOut);
}

TEST_F(TransportFailureTest, ConnectionThatNobodyAcceptsTimesOut)
{
    const FullBacklog backlog;
    HttpRequest request = get(backlog.url());
    request.connectLimit = 200ms;
    EXPECT_EQ(fetchFailure(request), Kind::timedOut);
}

} // namespace
} // namespace morvane
