#include "HttpServerFixture.h"

#include "async/Cancelled.h"
#include "mcp/HttpExchanges.h"
#include "support/FakeClock.h"

#include <atomic>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace morvane {
namespace {

namespace json = boost::json;

/// How connections to remote servers are kept, shared and ended.
class HttpConnectionsTest : public HttpServerFixture {};

TEST_F(HttpConnectionsTest, AnswersInStreamsKeepOneConnectionAlive)
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

TEST_F(HttpConnectionsTest, AStreamWithoutEndAndWithoutAnAnswerEndsWithTheCall)
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

TEST_F(HttpConnectionsTest, AStreamThatGoesOnBehindItsAnswerIsGivenUpAndForgotten)
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

TEST_F(HttpConnectionsTest, ShutdownClosesEveryExchange)
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

TEST_F(HttpConnectionsTest, APostOnAConnectionThatIsResetIsNotSentTwice)
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

TEST_F(HttpConnectionsTest, ManyCallsAreUnderWayAtOnce)
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
