#include "async/Cancelled.h"
#include "integration/net/NetFixture.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class CancellationTest : public NetTest {
protected:
    /// Cancels and expects the task to end so, and every connection to be closed by the client.
    template <class T> void cancelAndExpectClosed(TaskHandle<T> handle, const RawHttpServer &server)
    {
        EXPECT_FALSE(handle.done());
        handle.cancel();
        ASSERT_TRUE(waitUntil([&handle] { return handle.done(); }));
        EXPECT_THROW(handle.result(), Cancelled);
        EXPECT_TRUE(waitUntil([&server] { return server.connectionsClosedByPeer() > 0; }));
    }

    /// Serves `bytes` after the request and then waits for the client to go.
    static RawHttpServer::Script sendAndStall(const QByteArray &bytes)
    {
        return [bytes](RawHttpConnection &connection) {
            connection.readRequest();
            connection.send(bytes);
            connection.waitUntilClosedByPeer();
        };
    }

    static Task<int> countLines(Task<HttpResponse> opening, int *count)
    {
        HttpResponse response = co_await std::move(opening);
        LineReader reader = response.lines();
        while (co_await reader.next())
            ++*count;
        co_return *count;
    }
};

TEST_F(CancellationTest, WhileTheHeadIsAwaited)
{
    RawHttpServer server(sendAndStall(""));
    auto handle = scheduler.spawn(client.open(get(server.url())));
    ASSERT_TRUE(waitUntil([&server] { return server.requests().size() == 1; }));
    cancelAndExpectClosed(handle, server);
}

TEST_F(CancellationTest, WhileALineIsAwaited)
{
    RawHttpServer server(sendAndStall(rawHttpHead(200, {}) + "one\ntw"));
    int count = 0;
    auto handle = scheduler.spawn(countLines(client.open(get(server.url())), &count));
    ASSERT_TRUE(waitUntil([&count] { return count == 1; }));
    cancelAndExpectClosed(handle, server);
    EXPECT_EQ(count, 1);
}

TEST_F(CancellationTest, WhileAWholeBodyIsAwaited)
{
    RawHttpServer server(sendAndStall(rawHttpHead(200, {{"Content-Length", "50000000"}}) + "begun"));
    auto handle = scheduler.spawn(client.fetch(get(server.url()), ampleBytes));
    ASSERT_TRUE(waitUntil([&server] { return server.sentBytes() > 40; }));
    cancelAndExpectClosed(handle, server);
}

TEST_F(CancellationTest, WhileTheBodyIsUploaded)
{
    Gate cancelled = false;
    RawHttpServer server([&cancelled](RawHttpConnection &connection) {
        connection.waitUntil([&cancelled] { return cancelled.load(); });
        connection.waitUntilClosedByPeer();
    });
    auto handle = scheduler.spawn(client.open(post(server.url(), QByteArray(50 * 1000 * 1000, 'x'))));
    ASSERT_TRUE(waitUntil([&server] { return server.acceptedConnections() == 1; }));
    cancelled = true;
    cancelAndExpectClosed(handle, server);
}

TEST_F(CancellationTest, BeforeTheTaskHasStarted)
{
    RawHttpServer server(sendAndStall(""));
    auto handle = scheduler.spawn(client.open(get(server.url())));
    handle.cancel();
    ASSERT_TRUE(waitUntil([&handle] { return handle.done(); }));
    EXPECT_THROW(handle.result(), Cancelled);
    EXPECT_TRUE(waitUntil([&server] { return server.openConnections() == 0; }));
}

TEST_F(CancellationTest, WhileConnecting)
{
    const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto *const generic = reinterpret_cast<sockaddr *>(&address);
    ASSERT_EQ(::bind(listener, generic, size), 0);
    ASSERT_EQ(::listen(listener, 0), 0);
    ASSERT_EQ(::getsockname(listener, generic, &size), 0);
    std::vector<int> fillers; // a full backlog: what knocks now is not answered
    for (int i = 0; i < 4; ++i) {
        fillers.push_back(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0));
        ::connect(fillers.back(), generic, size);
    }
    auto handle =
        scheduler.spawn(client.open(get(QUrl(u"http://127.0.0.1:%1/"_s.arg(ntohs(address.sin_port))))));
    settle();
    EXPECT_FALSE(handle.done());
    handle.cancel();
    ASSERT_TRUE(waitUntil([&handle] { return handle.done(); }));
    EXPECT_THROW(handle.result(), Cancelled);
    for (const int filler : fillers)
        ::close(filler);
    ::close(listener);
}

TEST_F(CancellationTest, EndlessStreamStopsAtOnce)
{
    RawHttpServer server([](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(rawHttpHead(200, {}));
        const QByteArray lines = QByteArray("data: word\n\n").repeated(1000);
        while (connection.send(lines)) {
        }
    });
    int count = 0;
    auto handle = scheduler.spawn(countLines(client.open(get(server.url())), &count));
    ASSERT_TRUE(waitUntil([&count] { return count > 10000; }));
    handle.cancel();
    ASSERT_TRUE(waitUntil([&handle] { return handle.done(); }));
    EXPECT_THROW(handle.result(), Cancelled);
    EXPECT_TRUE(waitUntil([&server] { return server.openConnections() == 0; }));
}

TEST_F(CancellationTest, NoLineIsGivenOnceTheTaskIsCancelled)
{
    RawHttpServer server(RawHttpServer::answering(
        [](const RawHttpRequest &) { return rawHttpResponse(200, QByteArray("line\n").repeated(1000)); }));
    struct Reading {
        std::optional<TaskHandle<int>> handle;
        int count = 0;

        static Task<int> run(Reading *self, Task<HttpResponse> opening)
        {
            HttpResponse response = co_await std::move(opening);
            LineReader reader = response.lines();
            while (co_await reader.next())
                if (++self->count == 5)
                    self->handle->cancel();
            co_return self->count;
        }
    } reading;
    reading.handle = scheduler.spawn(Reading::run(&reading, client.open(get(server.url()))));
    ASSERT_TRUE(waitUntil([&reading] { return reading.handle->done(); }));
    EXPECT_THROW(reading.handle->result(), Cancelled);
    EXPECT_EQ(reading.count, 5);
}

TEST_F(CancellationTest, ResponseThatIsDroppedEndsItsTransfer)
{
    RawHttpServer server(sendAndStall(rawHttpHead(200, {{"Content-Length", "100"}})));
    {
        const HttpResponse response = runTask(scheduler, client.open(get(server.url())));
        EXPECT_EQ(response.status(), 200);
    }
    EXPECT_TRUE(waitUntil([&server] { return server.connectionsClosedByPeer() == 1; }));
}

TEST_F(CancellationTest, ReaderThatIsDroppedEndsItsTransfer)
{
    RawHttpServer server(sendAndStall(rawHttpHead(200, {{"Content-Length", "100"}})));
    {
        HttpResponse response = runTask(scheduler, client.open(get(server.url())));
        const LineReader reader = response.lines();
    }
    EXPECT_TRUE(waitUntil([&server] { return server.connectionsClosedByPeer() == 1; }));
}

TEST_F(CancellationTest, ClientThatGoesAwayEndsOpenTransfers)
{
    RawHttpServer server(sendAndStall(rawHttpHead(200, {}) + "one\n"));
    auto goingAway = std::make_unique<HttpClient>();
    int count = 0;
    auto reading = scheduler.spawn(countLines(goingAway->open(get(server.url())), &count));
    auto waiting = scheduler.spawn(goingAway->fetch(get(server.url()), ampleBytes));
    ASSERT_TRUE(waitUntil([&] { return count == 1 && server.requests().size() == 2; }));
    Task<HttpResponse> unstarted = goingAway->open(get(server.url()));
    goingAway.reset();
    ASSERT_TRUE(waitUntil([&] { return reading.done() && waiting.done(); }));
    EXPECT_THROW(reading.result(), TransportError);
    EXPECT_THROW(waiting.result(), TransportError);
    EXPECT_EQ(failureOf(std::move(unstarted)), TransportError::Kind::clientClosed);
    EXPECT_TRUE(waitUntil([&server] { return server.connectionsClosedByPeer() == 2; }));
}

TEST_F(CancellationTest, ClientThatGoesAwayWithManyTransfersInEveryState)
{
    RawHttpServer server([](RawHttpConnection &connection) {
        connection.readRequest();
        if (connection.number() % 2)
            connection.send(rawHttpHead(200, {}) + QByteArray(5 * 1000 * 1000, 'x'));
        connection.waitUntilClosedByPeer();
    });
    auto goingAway = std::make_unique<HttpClient>();
    QList<TaskHandle<HttpResponse>> handles;
    for (int i = 0; i < 40; ++i)
        handles.append(scheduler.spawn(goingAway->open(get(server.url()))));
    ASSERT_TRUE(waitUntil([&server] { return server.acceptedConnections() > 20; }));
    goingAway.reset();
    for (auto &handle : handles)
        ASSERT_TRUE(waitUntil([&handle] { return handle.done(); }));
    handles.clear();
    EXPECT_TRUE(waitUntil([&server] { return server.openConnections() == 0; }));
}

TEST_F(CancellationTest, SchedulerThatEndsWithOpenTransfersLeavesNothing)
{
    RawHttpServer server(sendAndStall(rawHttpHead(200, {}) + "one\n"));
    int count = 0;
    {
        Scheduler shortLived(clock);
        shortLived.spawn(countLines(client.open(get(server.url())), &count));
        shortLived.spawn(client.fetch(get(server.url()), ampleBytes));
        ASSERT_TRUE(waitUntil([&] { return count == 1 && server.requests().size() == 2; }));
    }
    EXPECT_TRUE(waitUntil([&server] { return server.connectionsClosedByPeer() == 2; }));
}

} // namespace
} // namespace morvane
