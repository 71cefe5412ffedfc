#include "integration/net/NetFixture.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using Kind = TransportError::Kind;

/// What is sent again on another connection, and what never is.
class RepeatedRequestTest : public NetTest {
protected:
    enum class ConnectionEnd { reset, inOrder };
    /// What became of a POST to a server that answers one request on each connection, reads the next one and
    /// ends the connection.
    struct Repetition {
        qsizetype posts = 0; ///< How often it arrived.
        bool onKeptConnection = false;
        std::optional<Kind> failure;
    };
    Repetition postWhoseAnswerIsLost(const QByteArray &body, ConnectionEnd end)
    {
        RawHttpServer server([end](RawHttpConnection &connection) {
            if (connection.readRequest())
                connection.send(rawHttpResponse(200, "first"));
            if (connection.readRequest() && end == ConnectionEnd::reset)
                connection.reset();
        });
        EXPECT_EQ(fetch(get(server.url())).body, "first");
        Repetition seen;
        seen.failure = fetchFailure(post(server.url(), body));
        for (const RawHttpRequest &request : server.requests()) {
            seen.posts += request.method == "POST";
            seen.onKeptConnection |= request.method == "POST" && request.connection == 0;
        }
        return seen;
    }
};

TEST_F(RepeatedRequestTest, ARequestThatChangesSomethingIsNeverSentTwice)
{
    for (const QByteArray &body :
         {QByteArray("{\"tool\":\"write\"}"), QByteArray(3'000'000, 'x'), QByteArray()})
        for (const ConnectionEnd end : {ConnectionEnd::reset, ConnectionEnd::inOrder}) {
            // What libcurl keeps is its own business; only a round in which it took the kept connection
            // counts.
            bool wasKept = false;
            for (int round = 0; !wasKept && round < 100; ++round) {
                const Repetition seen = postWhoseAnswerIsLost(body, end);
                ASSERT_EQ(seen.posts, 1) << body.size();
                wasKept = seen.onKeptConnection;
                ASSERT_EQ(seen.failure, wasKept ? std::optional(Kind::networkConnectionLost) : std::nullopt);
            }
            EXPECT_TRUE(wasKept) << body.size();
        }
}

TEST_F(RepeatedRequestTest, AKeptConnectionThatHasEndedBeforeCostsARequestNothing)
{
    for (const QByteArray &body : {QByteArray("{\"tool\":\"write\"}"), QByteArray(3'000'000, 'x')})
        for (const ConnectionEnd end : {ConnectionEnd::reset, ConnectionEnd::inOrder}) {
            Gate taken = false;
            RawHttpServer server([end, &taken](RawHttpConnection &connection) {
                if (connection.readRequest())
                    connection.send(rawHttpResponse(200, "ok"));
                if (connection.number() > 0)
                    connection.waitUntilClosedByPeer();
                else if (connection.waitUntil([&taken] { return taken.load(); }) &&
                         end == ConnectionEnd::reset)
                    connection.reset();
            });
            EXPECT_EQ(fetch(get(server.url())).body, "ok");
            taken = true;
            ASSERT_TRUE(waitUntil([&server] { return server.openConnections() == 0; }));
            EXPECT_EQ(fetch(post(server.url(), body)).body, "ok");
            EXPECT_EQ(server.acceptedConnections(), 2);
        }
}

TEST_F(RepeatedRequestTest, PostsShareAConnection)
{
    RawHttpServer server(RawHttpServer::answering(
        [](const RawHttpRequest &request) { return rawHttpResponse(200, request.body); }));
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(fetch(post(server.url(), "body")).body, "body");
    EXPECT_EQ(server.acceptedConnections(), 1);
}

TEST_F(RepeatedRequestTest, AReadIsRepeatedOnANewConnection)
{
    RawHttpServer server([](RawHttpConnection &connection) {
        if (connection.readRequest())
            connection.send(rawHttpResponse(200, "ok"));
        if (connection.readRequest())
            connection.reset();
    });
    EXPECT_EQ(fetch(get(server.url())).body, "ok");
    EXPECT_EQ(fetch(get(server.url())).body, "ok");
}

} // namespace
} // namespace morvane
