#include "integration/net/NetFixture.h"

namespace morvane {
namespace {

using namespace std::chrono_literals;

class BackPressureTest : public NetTest {
protected:
    static constexpr int lineCount = 400000;

    /// Far more than the buffers of the client and of both sockets together.
    static QByteArray largeBody()
    {
        return QByteArray("data: 0123456789012345678901234567890\n").repeated(lineCount);
    }

    RawHttpServer server{[body = largeBody()](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(rawHttpHead(200, {{"Content-Length", QByteArray::number(body.size())}}));
        connection.send(body);
        connection.waitUntilClosedByPeer();
    }};

    HttpResponse openResponse(HttpRequest request)
    {
        return runTask(scheduler, client.open(std::move(request)));
    }

    /// Whether the server has sent something and then no byte more for `quiet`.
    bool serverStops(std::chrono::milliseconds quiet)
    {
        qint64 last = -1;
        auto since = std::chrono::steady_clock::now();
        return waitUntil([&] {
            const auto now = std::chrono::steady_clock::now();
            if (server.sentBytes() != last) {
                last = server.sentBytes();
                since = now;
            }
            return last > 0 && now - since >= quiet;
        });
    }

    static Task<int> countLines(LineReader *reader)
    {
        int count = 0;
        while (co_await reader->next())
            ++count;
        co_return count;
    }
};

TEST_F(BackPressureTest, ServerIsHeldUpWhileNobodyReads)
{
    HttpResponse response = openResponse(get(server.url()));
    ASSERT_TRUE(serverStops(300ms));
    EXPECT_LT(server.sentBytes(), largeBody().size());
    LineReader reader = response.lines();
    EXPECT_EQ(runTask(scheduler, countLines(&reader)), lineCount);
}

TEST_F(BackPressureTest, ServerIsHeldUpInTheMiddleOfTheLines)
{
    HttpResponse response = openResponse(get(server.url()));
    LineReader reader = response.lines();
    const auto next = [](LineReader *from) -> Task<bool> { co_return (co_await from->next()).has_value(); };
    EXPECT_TRUE(runTask(scheduler, next(&reader)));
    ASSERT_TRUE(serverStops(300ms));
    EXPECT_LT(server.sentBytes(), largeBody().size());
    EXPECT_EQ(runTask(scheduler, countLines(&reader)), lineCount - 1);
}

TEST_F(BackPressureTest, PauseLongerThanTheSilenceLimitIsNoError)
{
    HttpRequest request = get(server.url());
    request.silenceLimit = 200ms;
    HttpResponse response = openResponse(request);
    ASSERT_TRUE(serverStops(1000ms));
    LineReader reader = response.lines();
    EXPECT_EQ(runTask(scheduler, countLines(&reader)), lineCount);
}

TEST_F(BackPressureTest, WholeBodyAfterAPause)
{
    HttpResponse response = openResponse(get(server.url()));
    ASSERT_TRUE(serverStops(300ms));
    EXPECT_TRUE(runTask(scheduler, response.body(ampleBytes)) == largeBody());
}

TEST_F(BackPressureTest, PausedTransferEndsWithItsResponse)
{
    {
        const HttpResponse response = openResponse(get(server.url()));
        ASSERT_TRUE(serverStops(300ms));
        EXPECT_EQ(server.openConnections(), 1);
    }
    EXPECT_TRUE(waitUntil([this] { return server.openConnections() == 0; }));
}

TEST_F(BackPressureTest, PausedTransfersDoNotHoldUpOthers)
{
    std::vector<HttpResponse> paused;
    for (int i = 0; i < 8; ++i)
        paused.push_back(openResponse(get(server.url())));
    ASSERT_TRUE(serverStops(300ms));
    RawHttpServer quick(
        RawHttpServer::answering([](const RawHttpRequest &) { return rawHttpResponse(200, "ok"); }));
    EXPECT_EQ(fetch(get(quick.url())).body, "ok");
}

TEST_F(BackPressureTest, TransferThatBreaksWhilePausedFailsOnceItIsRead)
{
    Gate stopped = false;
    RawHttpServer breaking([&stopped](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(rawHttpHead(200, {{"Content-Length", "100000000"}}) +
                        QByteArray("x\n").repeated(500000));
        if (connection.waitUntil([&stopped] { return stopped.load(); }))
            connection.close();
    });
    HttpResponse response = openResponse(get(breaking.url()));
    stopped = true;
    ASSERT_TRUE(waitUntil([&breaking] { return breaking.openConnections() == 0; }));
    LineReader reader = response.lines();
    EXPECT_EQ(failureOf(countLines(&reader)), TransportError::Kind::networkConnectionLost);
}

} // namespace
} // namespace morvane
