#include "HttpServerFixture.h"

#include "support/FakeClock.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace morvane {
namespace {

namespace json = boost::json;

/// As a stored block of the gzip format: what qCompress makes, in another wrapping.
QByteArray gzipped(const QByteArray &plain)
{
    QByteArray packed("\x1F\x8B\x08\0\0\0\0\0\0\x03", 10);
    const QByteArray zlib = qCompress(plain).mid(4); // without Qt's length
    packed += zlib.sliced(2, zlib.size() - 6);       // without its own head and checksum
    const auto number = [&packed](quint32 value) {
        for (int byte = 0; byte < 4; ++byte)
            packed += char(value >> (8 * byte));
    };
    quint32 checksum = 0xFFFFFFFF;
    for (const char byte : plain) {
        checksum ^= quint8(byte);
        for (int bit = 0; bit < 8; ++bit)
            checksum = checksum & 1 ? checksum >> 1 ^ 0xEDB88320 : checksum >> 1;
    }
    number(~checksum);
    number(quint32(plain.size()));
    return packed;
}

class HttpServerTest : public HttpServerFixture {
protected:
    /// Whether a call is still waiting when its exchange is over, and how it fails when its time has come.
    void expectSilence()
    {
        FakeClock fakeClock;
        Scheduler patient(fakeClock);
        MCPConnection other([&](const std::shared_ptr<PendingRequests> &requests) {
            return std::make_unique<HttpTransport>(server->url(u"/mcp"_s).toString(), patient, client,
                                                   requests);
        });
        auto handle = patient.spawn(other.callTool(u"echo"_s, {}));
        ASSERT_TRUE(waitUntil([&] { return server->sentBytes() > 0; }));
        EXPECT_FALSE(waitUntil([&] { return handle.done(); }, 100ms));
        fakeClock.advance(120s);
        ASSERT_TRUE(waitUntil([&] { return handle.done(); }));
        try {
            handle.result();
            ADD_FAILURE() << "it was answered";
        } catch (const MCPError &error) {
            EXPECT_EQ(error.message(), "The MCP server did not respond in time.");
        }
        patient.shutdown(1s);
    }
};

TEST_F(HttpServerTest, APostCarriesTheLiteralHeaders)
{
    serve([](const RawHttpRequest &, const json::object &message) {
        return rawHttpResponse(200, result(message, textResult("fine")), jsonType);
    });
    connect(connection);
    EXPECT_EQ(echo(), "fine");
    // Nobody waits for the answer to the notification that the handshake is over.
    ASSERT_TRUE(waitUntil([this] { return server->requests().size() == 3; }));
    const auto requests = server->requests();
    for (const RawHttpRequest &request : requests) {
        EXPECT_EQ(request.method, "POST");
        EXPECT_EQ(request.target, "/mcp");
        EXPECT_EQ(request.headers.value("Content-Type"), "application/json");
        EXPECT_EQ(request.headers.value("Accept"), "application/json, text/event-stream");
        EXPECT_EQ(request.headers.value("MCP-Protocol-Version"), "Morvane/1.2");
    }
    EXPECT_EQ(requests[0].headers.value("Mcp-Session-Id"), std::nullopt);
    EXPECT_EQ(requests[2].headers.value("Mcp-Session-Id"), "session-1");
}

TEST_F(HttpServerTest, ALaterSessionReplacesTheFirst)
{
    serve([](const RawHttpRequest &, const json::object &message) {
        return rawHttpResponse(200, result(message, textResult("fine")), {{"Mcp-Session-Id", "session-2"}});
    });
    connect(connection);
    echo();
    echo();
    // Nobody waits for the notification that the handshake is over: it may be the last to arrive.
    QList<RawHttpRequest> calls = server->requests();
    erase_if(calls, [](const RawHttpRequest &request) { return !request.body.contains("tools/call"); });
    ASSERT_EQ(calls.size(), 2);
    EXPECT_EQ(calls.last().headers.value("Mcp-Session-Id"), "session-2");
}

TEST_F(HttpServerTest, AnEventWithTheAnswerEndsTheReadingThoughANotificationCameFirst)
{
    serveEvents("event: message\nid: 1\ndata: {\"method\":\"notifications/progress\"}\n\n"
                ": comment\ndata: {\"id\":\"stranger\",\"result\":{}}\n\n"
                "data: {\"id\":ID,\"method\":\"sampling/createMessage\"}\n\n"
                "data:{\"id\":ID,\"result\":{\"content\":[{\"type\":\"text\",\"text\":\"second\"}]}}\n\n"
                "data: {\"id\":ID,\"result\":{}}\n\n");
    EXPECT_EQ(echo(), "second");
}

TEST_F(HttpServerTest, AnAnswerOverSeveralLinesIsOneText)
{
    serveBody(200, "{\n  \"id\": ID,\r\n  \"result\": {\"content\": [{\"type\": \"text\",\n\n\"text\": "
                   "\"pretty\"}]}\n}");
    EXPECT_EQ(echo(), "pretty");
}

TEST_F(HttpServerTest, AnEmptyBodyLeavesTheRequestToItsTime)
{
    serveBody(200, {});
    expectSilence();
}

TEST_F(HttpServerTest, OtherStatusesWithoutAnAnswerLeaveTheRequestToItsTime)
{
    const std::initializer_list<std::pair<int, QByteArray>> answers{
        {401, "<html>Please sign in</html>"},
        {403, {}},
        {404, {}},
        {500, R"({"jsonrpc":"2.0","id":null,"error":{"message":"boom"}})"},
        {200, "<html>\ndata: x\n</html>"},
        {200, "[{\"id\":ID}]"},
        {200, R"({"id":4711,"result":{}})"},
        {200, R"({"id":"IDx","result":{}})"},
        {200, "{\"id\":ID,\"result\":" + QByteArray(5'000'000, '[') + QByteArray(5'000'000, ']') + '}'},
        {204, {}}};
    for (const auto &[status, body] : answers) {
        serveBody(status, body);
        expectSilence();
    }
}

TEST_F(HttpServerTest, AnErrorStatusWithTheRequestsAnswerIsThatAnswer)
{
    serveBody(500, R"({"jsonrpc":"2.0","id":ID,"error":{"message":"out of paper"}})");
    EXPECT_EQ(failureOf(connection->callTool(u"print"_s, {})), u"out of paper"_s);
}

TEST_F(HttpServerTest, ACompressedAnswerIsRead)
{
    const QByteArray packed = gzipped(R"({"id":1,"result":{"content":[{"type":"text","text":"unpacked"}]}})");
    serve([packed](const RawHttpRequest &, const json::object &) {
        return rawHttpResponse(200, packed, {{"Content-Encoding", "gzip"}});
    });
    EXPECT_EQ(echo(), "unpacked");
}

TEST_F(HttpServerTest, AServerThatCannotBeReachedIsToldWithTheReason)
{
    serve({});
    const QUrl gone = server->url(u"/mcp"_s);
    server.reset();
    EXPECT_EQ(failureOf(http(gone)->connect()),
              u"could not reach the server: The server could not be reached."_s);
}

TEST_F(HttpServerTest, AnAddressMustBeAWebAddress)
{
    for (const char *address : {"", "  ", "ftp://x/mcp", "x", "file:///etc/passwd", "http"}) {
        EXPECT_EQ(failureOf(http(QUrl(QString::fromLatin1(address)))->connect()),
                  u"The server URL must start with http:// or https://."_s)
            << address;
    }
}

TEST_F(HttpServerTest, AnAddressMayStandInBlanksAndItsSchemeInCapitals)
{
    serveBody(200, R"({"id":ID,"result":{"content":[{"type":"text","text":"found"}]}})");
    const QString address = u"\t HTTP://127.0.0.1:%1/mcp "_s.arg(server->port());
    const auto peer = std::make_shared<MCPConnection>([&](const std::shared_ptr<PendingRequests> &requests) {
        return std::make_unique<HttpTransport>(address, scheduler, client, requests);
    });
    connect(peer);
    EXPECT_EQ(call(peer, u"echo"_s).text, "found");
}

TEST_F(HttpServerTest, RedirectsWithoutEndAreAFailure)
{
    serve([](const RawHttpRequest &, const json::object &) {
        return rawHttpResponse(307, {}, {{"Location", "/mcp"}});
    });
    EXPECT_TRUE(failureOf(connection->callTool(u"echo"_s, {}))
                    .value_or(QString())
                    .startsWith(u"could not reach the server: "_s));
}

TEST_F(HttpServerTest, ABrokenBodyIsToldAsALostConnection)
{
    server.emplace([](RawHttpConnection &peer) {
        peer.readRequest();
        peer.send(rawHttpHead(200, {{"Content-Length", "1000"}}) + "{\"id\":");
        peer.close();
    });
    EXPECT_EQ(failureOf(http(server->url())->callTool(u"x"_s, {})),
              u"could not reach the server: The connection was lost."_s);
}

TEST_F(HttpServerTest, BytesMayComeOneByOneAndInAnyUtf8)
{
    server.emplace([](RawHttpConnection &peer) {
        while (const auto request = peer.readRequest()) {
            const json::object message = parseJsonObject(request->body).value();
            const QByteArray body = result(message, textResult("Grüße, 日本語"));
            peer.sendInPieces(rawHttpResponse(200, body, jsonType), 1);
        }
    });
    EXPECT_EQ(call(http(server->url()), u"echo"_s).text, u"Grüße, 日本語");
}

TEST_F(HttpServerTest, AnswersOfAnySizeArriveWholeInBothForms)
{
    const std::string many(20'000'000, 'x');
    serve([&many](const RawHttpRequest &request, const json::object &message) {
        const QByteArray text = result(message, textResult(many));
        return request.body.contains("event") ? events("data: " + text + "\n\n")
                                              : rawHttpResponse(200, text, jsonType);
    });
    EXPECT_EQ(call(connection, u"plain"_s).text.size(), 20'000'000);
    EXPECT_EQ(call(connection, u"event"_s).text.size(), 20'000'000);
}

TEST_F(HttpServerTest, AnotherOriginGetsNoSession)
{
    RawHttpServer other(RawHttpServer::answering([](const RawHttpRequest &request) {
        const json::object message = parseJsonObject(request.body).value();
        return rawHttpResponse(200, result(message, textResult("elsewhere")), jsonType);
    }));
    const QByteArray elsewhere = other.url(u"/mcp"_s).toEncoded();
    serve([elsewhere](const RawHttpRequest &, const json::object &) {
        return rawHttpResponse(307, {}, {{"Location", elsewhere}});
    });
    connect(connection);
    EXPECT_EQ(echo(), "elsewhere");
    ASSERT_EQ(other.requests().size(), 1);
    EXPECT_EQ(other.requests()[0].headers.value("Mcp-Session-Id"), std::nullopt);
    EXPECT_EQ(server->requests().last().headers.value("Mcp-Session-Id"), "session-1");
}

TEST_F(HttpServerTest, ARefusedProtocolVersionIsSentAsADateFromThenOn)
{
    serve([](const RawHttpRequest &request, const json::object &message) {
        if (request.headers.value("MCP-Protocol-Version") != "2025-03-26")
            return rawHttpResponse(400, R"({"jsonrpc":"2.0","error":{"code":-32000,"message":
                "Bad Request: Unsupported protocol version: Morvane/1.2"},"id":null})",
                                   jsonType);
        return rawHttpResponse(200, result(message, textResult("fine")), jsonType);
    });
    EXPECT_EQ(echo(), "fine");
    EXPECT_EQ(echo(), "fine");
    EXPECT_EQ(server->requests().size(), 3) << "one refusal, and no more";
}

TEST_F(HttpServerTest, AHandshakeThatIsRefusedWithinItsSessionIsTriedWithoutIt)
{
    for (const int status : {400, 404}) {
        server.emplace(RawHttpServer::answering([status](const RawHttpRequest &request) {
            const json::object message = parseJsonObject(request.body).value();
            if (!message.contains("id"))
                return rawHttpResponse(202, {});
            if (message.at("method") == "initialize" && request.headers.contains("Mcp-Session-Id"))
                return rawHttpResponse(status, R"({"error":{"message":"refused"},"id":null})", jsonType);
            return rawHttpResponse(200, result(message, {}), {{"Mcp-Session-Id", "s"}});
        }));
        const auto peer = http(server->url());
        connect(peer);
        connect(peer);
        ASSERT_TRUE(waitUntil([this] { return server->requests().size() >= 5; }));
        settle();
        EXPECT_EQ(server->requests().size(), 5)
            << "initialize, its notification, and the same with one refusal";
    }
}

} // namespace
} // namespace morvane
