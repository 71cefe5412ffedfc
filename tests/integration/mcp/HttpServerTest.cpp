#include "McpFixture.h"

#include "async/Cancelled.h"
#include "base/Json.h"
#include "mcp/HttpExchanges.h"
#include "mcp/JsonRpc.h"
#include "support/FakeClock.h"

#include <mutex>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace morvane {
namespace {

namespace json = boost::json;

/// What a server answers to a request with this method and id; nothing for no body at all.
using Reply = std::function<QByteArray(const RawHttpRequest &request, const json::object &message)>;

QByteArray messageText(const json::object &message)
{
    return serializeJson(message);
}

json::object textResult(const std::string &text)
{
    const json::object item{{"type", "text"}, {"text", text}};
    return {{"content", json::array{item}}};
}

QByteArray result(const json::object &message, json::object value)
{
    return messageText({{"jsonrpc", "2.0"}, {"id", message.at("id")}, {"result", std::move(value)}});
}

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

const HttpHeaders jsonType{{"Content-Type", "application/json"}};
const HttpHeaders eventType{{"Content-Type", "text/event-stream"}};

/// Remote servers, honest and hostile. They shake hands properly; what they do with calls a test says.
class HttpServerTest : public McpTest {
protected:
    void serve(Reply onCall)
    {
        server.emplace(RawHttpServer::answering([onCall](const RawHttpRequest &request) {
            const json::object message = parseJsonObject(request.body).value();
            if (!message.contains("id"))
                return rawHttpResponse(202, {});
            if (message.at("method") == "tools/call")
                return onCall(request, message);
            return rawHttpResponse(200, result(message, {{"tools", json::array()}}),
                                   {{"Content-Type", "application/json"}, {"Mcp-Session-Id", "session-1"}});
        }));
        connection = http(server->url(u"/mcp"_s));
    }
    /// Every call is answered with this body, "ID" in it standing for the call's id.
    void serveBody(int status, const QByteArray &body)
    {
        serve([status, body](const RawHttpRequest &, const json::object &message) {
            return rawHttpResponse(status, QByteArray(body).replace("ID", serializeJson(message.at("id"))));
        });
    }
    /// The same with a stream of events.
    void serveEvents(const QByteArray &stream)
    {
        serve([stream](const RawHttpRequest &, const json::object &message) {
            return events(QByteArray(stream).replace("ID", serializeJson(message.at("id"))));
        });
    }
    static QByteArray events(const QByteArray &body)
    {
        return rawHttpHead(200, {{"Content-Type", "text/event-stream"}, {"Connection", "close"}}) + body;
    }
    QString echo() { return call(connection, u"echo"_s).text; }
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

    std::optional<RawHttpServer> server;
    std::shared_ptr<MCPConnection> connection;
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

TEST_F(HttpServerTest, AnswersInStreamsKeepOneConnectionAlive)
{
    server.emplace([](RawHttpConnection &peer) {
        while (const auto request = peer.readRequest()) {
            const json::object message = parseJsonObject(request->body).value();
            peer.send(
                rawHttpHead(200, {{"Content-Type", "text/event-stream"}, {"Transfer-Encoding", "chunked"}}));
            peer.sendChunk("data: " + result(message, textResult("fine")) + "\n\n");
            peer.send("0\r\n\r\n");
        }
    });
    const auto peer = http(server->url());
    for (int i = 0; i < 50; ++i)
        ASSERT_EQ(call(peer, u"echo"_s).text, "fine");
    EXPECT_LE(server->acceptedConnections(), 2);
}

TEST_F(HttpServerTest, AStreamWithoutEndAndWithoutAnAnswerEndsWithTheCall)
{
    for (const char *piece : {"data: {\"method\":\"notifications/progress\"}\n\n", "x\n", "x"}) {
        std::atomic<int> closed = 0;
        server.emplace([&closed, piece](RawHttpConnection &peer) {
            peer.readRequest();
            peer.send(rawHttpHead(200, eventType));
            while (peer.send(piece))
                continue;
            ++closed;
        });
        const auto peer = http(server->url());
        auto handle = scheduler.spawn(peer->callTool(u"echo"_s, {}));
        ASSERT_TRUE(waitUntil([this] { return server->sentBytes() > 300'000; }));
        handle.cancel();
        ASSERT_TRUE(waitUntil([&] { return handle.done(); }));
        EXPECT_THROW(handle.result(), Cancelled);
        EXPECT_TRUE(waitUntil([&] { return closed == 1; }));
    }
}

TEST_F(HttpServerTest, AStreamThatGoesOnBehindItsAnswerIsGivenUpAndForgotten)
{
    server.emplace([](RawHttpConnection &peer) {
        const json::object message = parseJsonObject(peer.readRequest().value().body).value();
        peer.send(rawHttpHead(200, eventType) + "data: " + result(message, textResult("fine")) + "\n\n");
        peer.waitUntilClosedByPeer();
    });
    FakeClock fakeClock;
    Scheduler patient(fakeClock);
    const auto requests = std::make_shared<PendingRequests>();
    const auto exchanges = std::make_shared<HttpExchanges>(server->url(), patient, client, requests);
    requests->add(1, 0, [](const auto &) {});
    exchanges->start(requestText(1, "tools/call", "{}"), 1, MCPTransport::Kind::other);
    ASSERT_TRUE(waitUntil([&] { return requests->count() == 0; }));
    EXPECT_EQ(exchanges->underWay(), 1u) << "a little more may come";
    fakeClock.advance(1s);
    EXPECT_TRUE(waitUntil([&] { return exchanges->underWay() == 0; }));
    EXPECT_TRUE(waitUntil([this] { return server->connectionsClosedByPeer() == 1; }));
    patient.shutdown(1s);
}

TEST_F(HttpServerTest, ShutdownClosesEveryExchange)
{
    server.emplace([](RawHttpConnection &peer) {
        peer.readRequest();
        peer.waitUntilClosedByPeer();
    });
    const auto peer = http(server->url());
    auto handle = scheduler.spawn(peer->callTool(u"echo"_s, {}));
    ASSERT_TRUE(waitUntil([this] { return server->requests().size() == 1; }));
    peer->shutdown();
    ASSERT_TRUE(waitUntil([&] { return handle.done(); }));
    EXPECT_THROW(handle.result(), MCPError);
    EXPECT_TRUE(waitUntil([this] { return server->connectionsClosedByPeer() == 1; }));
    EXPECT_EQ(failureOf(peer->callTool(u"echo"_s, {})), u"The MCP server did not respond in time."_s);
    settle();
    EXPECT_EQ(server->requests().size(), 1) << "nothing is sent any more";
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

TEST_F(HttpServerTest, APostOnAConnectionThatIsResetIsNotSentTwice)
{
    std::atomic<int> writes = 0;
    server.emplace([&writes](RawHttpConnection &peer) {
        while (const auto request = peer.readRequest()) {
            const json::object message = parseJsonObject(request->body).value();
            if (message.at("method") == "tools/call" && ++writes > 1) {
                peer.reset(); // before the first byte of an answer
                return;
            }
            peer.send(rawHttpResponse(200, result(message, textResult("written")), jsonType));
        }
    });
    const auto peer = http(server->url());
    EXPECT_EQ(call(peer, u"write"_s).text, "written");
    EXPECT_EQ(failureOf(peer->callTool(u"write"_s, {})),
              u"could not reach the server: The connection was lost."_s);
    EXPECT_EQ(writes, 2);
}

TEST_F(HttpServerTest, ManyCallsAreUnderWayAtOnce)
{
    serve([](const RawHttpRequest &, const json::object &message) {
        const json::value &text = message.at("params").at("arguments").at("text");
        return rawHttpResponse(200, result(message, textResult(text.as_string().c_str())), jsonType);
    });
    std::vector<TaskHandle<ToolResult>> calls;
    for (int i = 0; i < 64; ++i)
        calls.push_back(
            scheduler.spawn(connection->callTool(u"echo"_s, json::object{{"text", std::to_string(i)}})));
    for (int i = 0; i < 64; ++i) {
        ASSERT_TRUE(waitUntil([&] { return calls[std::size_t(i)].done(); }));
        EXPECT_EQ(calls[std::size_t(i)].result().text, QString::number(i));
    }
}

} // namespace
} // namespace morvane
