#include "integration/net/NetFixture.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class RedirectionTest : public NetTest {
protected:
    /// Answers /from/{status} with a redirect to /to, and anything else with the method that was used.
    RawHttpServer server{RawHttpServer::answering([](const RawHttpRequest &request) {
        if (!request.target.startsWith("/from/"))
            return rawHttpResponse(200, request.method + ' ' + request.body);
        return rawHttpResponse(request.target.sliced(6).toInt(), "moved", {{"Location", "/to?x=1"}});
    })};

    HttpRequest from(int status, const QByteArray &method = "GET", const QByteArray &body = {})
    {
        HttpRequest request = get(server.url(u"/from/%1"_s.arg(status)));
        request.method = method;
        request.body = body;
        return request;
    }
};

TEST_F(RedirectionTest, GetFollowsEveryKind)
{
    for (const int status : {301, 302, 303, 307, 308}) {
        const FetchResult result = fetch(from(status));
        EXPECT_EQ(result.status, 200) << status;
        EXPECT_EQ(result.body, "GET ") << status;
        EXPECT_EQ(result.url, server.url("/to?x=1")) << status;
    }
    EXPECT_EQ(server.acceptedConnections(), 1);
}

TEST_F(RedirectionTest, PostKeepsMethodAndBodyOn307And308)
{
    EXPECT_EQ(fetch(from(307, "POST", "payload")).body, "POST payload");
    EXPECT_EQ(fetch(from(308, "POST", "payload")).body, "POST payload");
}

TEST_F(RedirectionTest, PostIsNotSilentlyTurnedIntoAGet)
{
    for (const int status : {301, 302, 303}) {
        const FetchResult result = fetch(from(status, "POST", "payload"));
        EXPECT_EQ(result.status, status);
        EXPECT_EQ(result.body, "moved");
    }
}

TEST_F(RedirectionTest, PostBecomesAGetWhereTheRequestAllowsIt)
{
    for (const int status : {301, 302, 303}) {
        HttpRequest request = from(status, "POST", "payload");
        request.redirects = RedirectRule::allowGet;
        EXPECT_EQ(fetch(request).body, "GET ") << status;
    }
    EXPECT_FALSE(server.requests().last().headers.contains("Content-Length"));
}

TEST_F(RedirectionTest, NothingIsFollowedWhereTheRequestForbidsIt)
{
    HttpRequest request = from(302);
    request.redirects = RedirectRule::none;
    EXPECT_EQ(fetch(request).status, 302);
    EXPECT_EQ(server.requests().size(), 1);
}

TEST_F(RedirectionTest, EndlessRedirectsEnd)
{
    RawHttpServer circle(RawHttpServer::answering(
        [](const RawHttpRequest &) { return rawHttpResponse(302, "", {{"Location", "/again"}}); }));
    EXPECT_EQ(fetchFailure(get(circle.url())), TransportError::Kind::tooManyRedirects);
    EXPECT_EQ(circle.requests().size(), 21);
}

TEST_F(RedirectionTest, OtherSchemesAreNotFollowed)
{
    RawHttpServer trap(RawHttpServer::answering([](const RawHttpRequest &) {
        return rawHttpResponse(302, "", {{"Location", "file:///etc/passwd"}});
    }));
    EXPECT_EQ(fetchFailure(get(trap.url())), TransportError::Kind::invalidUrl);
}

TEST_F(RedirectionTest, KeysDoNotReachAnotherOrigin)
{
    RawHttpServer door(RawHttpServer::answering([this](const RawHttpRequest &) {
        return rawHttpResponse(307, "", {{"Location", server.url("/elsewhere").toEncoded()}});
    }));
    HttpRequest request = post(door.url(), "payload");
    request.headers.set("Authorization", "Bearer secret");
    request.headers.set("x-goog-api-key", "secret");
    request.headers.set("Content-Type", "application/json");
    EXPECT_EQ(fetch(request).body, "POST payload");
    const RawHttpRequest seen = server.requests().value(0);
    EXPECT_FALSE(seen.headers.contains("Authorization"));
    EXPECT_FALSE(seen.headers.contains("x-goog-api-key"));
    EXPECT_EQ(seen.headers.value("Content-Type"), "application/json");
}

TEST_F(RedirectionTest, EndlessBodyOfARedirectIsNotReadToItsEnd)
{
    RawHttpServer flood([](RawHttpConnection &connection) {
        const auto request = connection.readRequest();
        if (request && request->target == "/to") {
            connection.send(rawHttpResponse(200, "arrived"));
            return;
        }
        connection.send(rawHttpHead(302, {{"Location", "/to"}}));
        while (connection.send(QByteArray(10000, 'x'))) {
        }
    });
    EXPECT_EQ(fetch(get(flood.url())).body, "arrived");
}

} // namespace
} // namespace morvane
