#include "integration/net/NetFixture.h"

#include <ctime>

namespace morvane {
namespace {

class LineReaderTest : public NetTest {
protected:
    /// Serves `body` in pieces of a size, and reads it line by line.
    Lines linesOfPieces(const QByteArray &body, qsizetype pieceSize)
    {
        RawHttpServer server([&](RawHttpConnection &connection) {
            connection.readRequest();
            connection.send(rawHttpHead(200, {{"Content-Length", QByteArray::number(body.size())}}));
            connection.sendInPieces(body, pieceSize);
            connection.waitUntilClosedByPeer();
        });
        return linesOf(get(server.url()));
    }
};

TEST_F(LineReaderTest, OneByteASegment)
{
    const QByteArray body = "data: {\"a\":1}\n\n: comment\ndata: \xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\n\n";
    const Lines result = linesOfPieces(body, 1);
    EXPECT_EQ(result.lines, (QList<QByteArray>{"data: {\"a\":1}", ": comment",
                                               "data: \xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"}));
    EXPECT_EQ(result.error, std::nullopt);
}

TEST_F(LineReaderTest, EveryLineEndHoweverItIsCut)
{
    const QByteArray body = "a\r\nb\rc\nd\r\n\r\n\r\re\n\nf";
    for (const qsizetype pieceSize : {1, 2, 3, 5, 100}) {
        EXPECT_EQ(linesOfPieces(body, pieceSize).lines, (QList<QByteArray>{"a", "b", "c", "d", "e", "f"}))
            << pieceSize;
    }
}

TEST_F(LineReaderTest, LineIsDeliveredAsSoonAsItsEndIsThere)
{
    Gate seen = false;
    RawHttpServer server([&seen](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(rawHttpHead(200, {{"Transfer-Encoding", "chunked"}}));
        connection.sendChunk("first\r");
        if (connection.waitUntil([&seen] { return seen.load(); })) {
            connection.sendChunk("\nsecond");
            connection.send("0\r\n\r\n");
        }
        connection.waitUntilClosedByPeer();
    });
    HttpResponse response = runTask(scheduler, client.open(get(server.url())));
    LineReader reader = response.lines();
    EXPECT_EQ(runTask(scheduler, nextOf(&reader)), "first");
    seen = true;
    EXPECT_EQ(runTask(scheduler, nextOf(&reader)), "second");
    EXPECT_EQ(runTask(scheduler, nextOf(&reader)), std::nullopt);
    EXPECT_EQ(runTask(scheduler, nextOf(&reader)), std::nullopt);
}

TEST_F(LineReaderTest, MegabyteChunksAndMegabyteLines)
{
    QByteArray body;
    QList<QByteArray> expected;
    for (char letter : QByteArray("abcdefgh")) {
        expected.append(QByteArray(1024 * 1024, letter));
        body += expected.last() + '\n';
    }
    EXPECT_TRUE(linesOfPieces(body, 1024 * 1024).lines == expected);
}

TEST_F(LineReaderTest, LineAboveTheLimitIsAnErrorAfterTheLinesBefore)
{
    RawHttpServer server([](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(rawHttpHead(200, {}));
        connection.send("first\nsecond\n" + QByteArray(5000, 'x'));
        connection.waitUntilClosedByPeer();
    });
    HttpRequest request = get(server.url());
    request.maximumLineBytes = 4999;
    const Lines result = linesOf(request);
    EXPECT_EQ(result.lines, (QList<QByteArray>{"first", "second"}));
    EXPECT_EQ(result.error, TransportError::Kind::tooLarge);
    EXPECT_TRUE(waitUntil([&server] { return server.connectionsClosedByPeer() == 1; }));
}

TEST_F(LineReaderTest, LineOfExactlyTheLimitIsDelivered)
{
    RawHttpServer server(RawHttpServer::answering(
        [](const RawHttpRequest &) { return rawHttpResponse(200, QByteArray(5000, 'x') + "\r\n"); }));
    HttpRequest request = get(server.url());
    request.maximumLineBytes = 5000;
    const Lines result = linesOf(request);
    EXPECT_EQ(result.lines, QList<QByteArray>{QByteArray(5000, 'x')});
    EXPECT_EQ(result.error, std::nullopt);
}

TEST_F(LineReaderTest, EndlessLineEndsAtItsLimit)
{
    RawHttpServer server([](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(rawHttpHead(200, {}));
        while (connection.send(QByteArray(100000, 'x'))) {
        }
    });
    const Lines result = linesOf(get(server.url()));
    EXPECT_TRUE(result.lines.isEmpty());
    EXPECT_EQ(result.error, TransportError::Kind::tooLarge);
    EXPECT_GE(server.sentBytes(), 16 * 1024 * 1024);
}

TEST_F(LineReaderTest, LongStreamComesWholeAndInOrder)
{
    constexpr int count = 100000;
    QByteArray body;
    for (int i = 0; i < count; ++i)
        body += "data: " + QByteArray::number(i) + "\n\n";
    const Lines result = linesOfPieces(body, 64 * 1024);
    ASSERT_EQ(result.lines.size(), count);
    for (int i = 0; i < count; ++i)
        ASSERT_EQ(result.lines[i], "data: " + QByteArray::number(i));
}

TEST_F(LineReaderTest, EventLoopLivesUnderAFastStream)
{
    // All lines are there at once, and the reader spends 50 µs of processor time on each, half a second in
    // all; the timer must get its turns in between.
    RawHttpServer server(RawHttpServer::answering(
        [](const RawHttpRequest &) { return rawHttpResponse(200, QByteArray("line\n").repeated(10000)); }));
    const auto readSlowly = [](Task<HttpResponse> opening, const int *turns) -> Task<int> {
        HttpResponse response = co_await std::move(opening);
        LineReader reader = response.lines();
        co_await reader.next();
        const int turnsBefore = *turns;
        while (co_await reader.next()) {
            const std::clock_t begin = std::clock();
            while (std::clock() - begin < CLOCKS_PER_SEC / 20000) {
            }
        }
        co_return *turns - turnsBefore;
    };
    int turns = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&turns] { ++turns; });
    timer.start(0);
    EXPECT_GT(runTask(scheduler, readSlowly(client.open(get(server.url())), &turns)), 20);
}

} // namespace
} // namespace morvane
