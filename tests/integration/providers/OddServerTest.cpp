#include "TurnFixture.h"
#include "support/FakeClock.h"
#include "support/RawHttpServer.h"

#include <QProcess>
#include <atomic>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

QByteArray event(const QByteArray &text)
{
    return R"(data: {"choices":[{"delta":{"content":")" + text + "\"}}]}\n\n";
}

/// Servers of which every byte is written by the test.
class OddServerTest : public testing::Test {
protected:
    FakeClock clock; // never moved: pending timers tell what still runs
    Scheduler scheduler{clock};
    HttpClient client;

    TurnOutcome turn(const RawHttpServer &server)
    {
        HttpAIService service(client, endpointsAt(u"http://127.0.0.1:%1"_s.arg(server.port())));
        return RunningTurn(scheduler, service, contextSaying("Hi"), configurationFor(ProviderID::openai))
            .wait();
    }

    static RawHttpServer::Script sending(const QByteArray &response)
    {
        return [response](RawHttpConnection &connection) {
            connection.readRequest();
            connection.send(response);
        };
    }

    static QByteArray output(const QString &program, const QStringList &arguments, const QByteArray &input)
    {
        QProcess process;
        process.start(program, arguments);
        process.write(input);
        process.closeWriteChannel();
        EXPECT_TRUE(process.waitForFinished(30'000));
        EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().constData();
        return process.readAllStandardOutput();
    }
};

TEST_F(OddServerTest, CompressedStreamIsRead)
{
    const QByteArray stream = event("compressed") + event(" text") + "data: [DONE]\n\n";
    const QByteArray gzip = output("gzip", {"-c"}, stream);
    RawHttpServer server(RawHttpServer::answering([&](const RawHttpRequest &) {
        return rawHttpResponse(200, gzip,
                               {{"Content-Encoding", "gzip"}, {"Content-Type", "text/event-stream"}});
    }));
    EXPECT_EQ(turn(server).text(), "compressed text");
}

TEST_F(OddServerTest, BodyThatEndsWithTheConnectionIsWhole)
{
    RawHttpServer server(sending("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + event("a") + event("b")));
    EXPECT_EQ(turn(server).text(), "ab");
}

TEST_F(OddServerTest, LastLineNeedsNoEnd)
{
    RawHttpServer server(sending("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + event("a").trimmed()));
    EXPECT_EQ(turn(server).text(), "a");
}

TEST_F(OddServerTest, CharacterThatIsCutByTheNetworkAndByTheServerIsWhole)
{
    RawHttpServer server([](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(rawHttpHead(200, {{"Connection", "close"}}));
        connection.sendInPieces(event("é\xF0\x9F") + event("\x98\x80\xff"), 1);
    });
    const TurnOutcome outcome = turn(server);
    EXPECT_EQ(outcome.text(), u"é😀\uFFFD"_s);
    EXPECT_EQ(outcome.pieces.join(QString()), outcome.text());
}

TEST_F(OddServerTest, ByteThatNothingFollowsIsReplaced)
{
    RawHttpServer server(sending("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + event("caf\xe9")));
    const TurnOutcome outcome = turn(server);
    EXPECT_EQ(outcome.text(), u"caf\uFFFD"_s);
    EXPECT_EQ(outcome.pieces, (QStringList{u"caf"_s, u"\uFFFD"_s}));
}

TEST_F(OddServerTest, TruncatedChunkedBodyIsATransportError)
{
    RawHttpServer server([](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(rawHttpHead(200, {{"Transfer-Encoding", "chunked"}}));
        connection.sendChunk(event("a"));
        connection.close();
    });
    const TurnOutcome outcome = turn(server);
    EXPECT_EQ(outcome.pieces, QStringList("a"));
    EXPECT_EQ(outcome.transportError, TransportError::Kind::networkConnectionLost);
}

TEST_F(OddServerTest, AnswerThatEndsAtAnyByteIsNeverTakenForTheWhole)
{
    const QByteArray stream = event("one ") + event("tw\xC3\xB3 ") + event("three") + "data: [DONE]\n\n";
    const QByteArray head = rawHttpHead(200, {{"Transfer-Encoding", "chunked"}});
    const QByteArray response =
        head + QByteArray::number(stream.size(), 16) + "\r\n" + stream + "\r\n0\r\n\r\n";
    const qsizetype whole = response.indexOf("[DONE]\n") + 7;
    for (const bool isReset : {true, false})
        for (qsizetype length = 0; length < response.size(); ++length) {
            RawHttpServer server([&](RawHttpConnection &connection) {
                connection.readRequest();
                connection.send(response.first(length));
                if (isReset)
                    connection.reset();
            });
            const TurnOutcome outcome = turn(server);
            ASSERT_EQ(server.requests().size(), 1) << length;
            ASSERT_TRUE(u"one twó three"_s.startsWith(outcome.pieces.join(QString()))) << length;
            if (outcome.result)
                ASSERT_TRUE(length >= whole && outcome.text() == u"one twó three"_s) << length;
            else
                ASSERT_EQ(outcome.transportError, TransportError::Kind::networkConnectionLost) << length;
        }
}

TEST_F(OddServerTest, EndMarkerEndsTheTurnThoughTheConnectionStaysOpen)
{
    RawHttpServer server([](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(rawHttpHead(200, {{"Transfer-Encoding", "chunked"}}));
        connection.sendChunk(event("a") + "data: [DONE]\n\n" + event("late"));
        connection.waitUntilClosedByPeer();
    });
    const TurnOutcome outcome = turn(server);
    EXPECT_EQ(outcome.text(), "a");
    EXPECT_EQ(outcome.pieces, QStringList("a"));
}

TEST_F(OddServerTest, ConnectionServesTheNextTurnThoughTheBodyEndsAfterTheTurn)
{
    std::atomic<int> turnsDone = 0;
    std::atomic<int> bodiesEnded = 0;
    RawHttpServer server([&](RawHttpConnection &connection) {
        while (connection.readRequest()) {
            connection.send(rawHttpHead(200, {{"Transfer-Encoding", "chunked"}}));
            connection.sendChunk(event("a") + "data: [DONE]\n\n");
            if (!connection.waitUntil([&] { return turnsDone > bodiesEnded; }))
                return;
            connection.sendChunk("\n");
            connection.send("0\r\n\r\n");
            ++bodiesEnded;
        }
    });
    for (int i = 1; i <= 3; ++i) {
        EXPECT_EQ(turn(server).text(), "a");
        settle();
        turnsDone = i;
        ASSERT_TRUE(waitUntil([&] { return bodiesEnded == i; }));
        ASSERT_TRUE(waitUntil([&] { return clock.pendingTimers() == 0; }));
    }
    EXPECT_EQ(server.acceptedConnections(), 1);
}

TEST_F(OddServerTest, WhatIsNoHttpIsATransportError)
{
    RawHttpServer server(sending("220 mail ready\r\n"));
    EXPECT_TRUE(turn(server).transportError.has_value());
}

TEST_F(OddServerTest, LineAboveTheLimitIsATransportError)
{
    RawHttpServer server([](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(rawHttpHead(200, {{"Connection", "close"}}));
        while (connection.send(QByteArray(1024 * 1024, 'x'))) {
        }
    });
    EXPECT_EQ(turn(server).transportError, TransportError::Kind::tooLarge);
}

TEST_F(OddServerTest, StreamWithoutEndIsGivenUpAboveTheLimit)
{
    RawHttpServer server([](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(rawHttpHead(200, {{"Connection", "close"}}));
        const QByteArray comment = ": " + QByteArray(1024 * 1024, 'x') + "\n";
        while (connection.send(comment)) {
        }
    });
    EXPECT_EQ(turn(server).transportError, TransportError::Kind::tooLarge);
    EXPECT_LT(server.sentBytes(), 300 * 1024 * 1024);
}

TEST_F(OddServerTest, AnotherReaderOfJsonUnderstandsEveryNumberInABody)
{
    RawHttpServer server(RawHttpServer::answering(
        [](const RawHttpRequest &) { return rawHttpResponse(200, event("ok") + "data: [DONE]\n\n"); }));
    const boost::json::object numbers{{"tenths", 0.7},
                                      {"large", 1e300},
                                      {"small", 5e-324},
                                      {"integer", 9007199254740993},
                                      {"negative", -2.5}};
    AIConfiguration config = configurationFor(ProviderID::openai);
    config.temperature = 0.1 + 0.2;
    config.tools = {AITool{"t", "d", SharedJsonObject(boost::json::object{{"maximum", 0.1}})}};
    const QList<APIMessage> context{
        APIMessage{APIMessage::FunctionCall{"c", "f", SharedJsonObject(numbers), {}}}};
    HttpAIService service(client, endpointsAt(u"http://127.0.0.1:%1"_s.arg(server.port())));
    EXPECT_EQ(RunningTurn(scheduler, service, context, config).wait().text(), "ok");

    const QByteArray check = "import json, sys\n"
                             "body = json.load(sys.stdin)\n"
                             "a = json.loads(body['messages'][0]['tool_calls'][0]['function']['arguments'])\n"
                             "assert a == {'tenths': 0.7, 'large': 1e300, 'small': 5e-324,\n"
                             "             'integer': 9007199254740993, 'negative': -2.5}, a\n"
                             "assert type(a['integer']) is int\n"
                             "assert body['temperature'] == 0.1 + 0.2\n"
                             "assert body['tools'][0]['function']['parameters']['maximum'] == 0.1\n"
                             "print('understood')\n";
    EXPECT_EQ(output("/usr/bin/python3", {"-c", check}, server.requests().value(0).body), "understood\n");
}

} // namespace
} // namespace morvane
