#include "McpFixture.h"

#include "async/Cancelled.h"
#include "support/LogRecorder.h"

#include <QSet>
#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace morvane {
namespace {

namespace json = boost::json;

/// Servers that run as child processes, honest and hostile.
class StdioServerTest : public McpTest {};

TEST_F(StdioServerTest, HandshakeListAndCall)
{
    const auto server = scripted();
    connect(server);
    const QList<MCPTool> tools = runTask(scheduler, server->listTools());
    ASSERT_FALSE(tools.isEmpty());
    EXPECT_EQ(tools[0].name, "echo");
    EXPECT_EQ(tools[0].description, "does echo");
    EXPECT_EQ(call(server, u"echo"_s, {{"text", "Grüße"}}), ToolResult(u"Grüße"_s));
    EXPECT_EQ(call(server, u"fail"_s, {{"text", "no disk"}}), ToolResult(u"Error: no disk"_s));
    EXPECT_EQ(failureOf(server->callTool(u"nonsense"_s, {})), u"Unknown tool: nonsense"_s);
}

TEST_F(StdioServerTest, ASingleQuoteReachesTheServerIntactThroughTheShell)
{
    const QString file = folder.filePath(u"it's $HOME \"here\""_s);
    const auto server = scripted({u"--pids"_s, file});
    connect(server);
    EXPECT_TRUE(QFile::exists(file));
}

TEST_F(StdioServerTest, TheCommandIsSplitByTheShell)
{
    const auto server = stdio(u"MARK=1 "_s + program(u"scripted-tool-server"_s) + u" --pids '"_s + pidFile() +
                              u"' 2>/dev/null"_s);
    connect(server);
    EXPECT_EQ(pids().size(), 1);
}

TEST_F(StdioServerTest, TheEnvironmentIsTheProgramsAndTheShellIsNoLoginShell)
{
    qputenv("MORVANE_TEST_VARIABLE", "as it is");
    const auto server =
        stdio(u"[[ -o login || -o interactive ]] && exit; "_s + program(u"scripted-tool-server"_s));
    connect(server);
    qunsetenv("MORVANE_TEST_VARIABLE");
    EXPECT_EQ(call(server, u"variable"_s, {{"text", "MORVANE_TEST_VARIABLE"}}).text, "as it is");
    EXPECT_EQ(call(server, u"variable"_s, {{"text", "PATH"}}).text, qEnvironmentVariable("PATH"));
}

TEST_F(StdioServerTest, AnEmptyCommandIsRefused)
{
    EXPECT_EQ(failureOf(stdio(u" \t "_s)->connect()), u"No command was given for this server."_s);
    EXPECT_EQ(thread.runningServers(), 0u);
}

TEST_F(StdioServerTest, AShellThatIsNotThereFailsTheLaunchInTheSystemsWords)
{
    StdioThread withoutShell(guard(), "/nowhere/zsh");
    StdioThread withoutGuard("/nowhere/guard");
    for (StdioThread *broken : {&withoutShell, &withoutGuard}) {
        const auto connection =
            std::make_shared<MCPConnection>([broken](const std::shared_ptr<PendingRequests> &requests) {
                return std::make_unique<StdioTransport>(u"cat"_s, QStringList(), *broken, requests);
            });
        EXPECT_EQ(failureOf(connection->connect()), u"No such file or directory"_s);
        EXPECT_TRUE(waitUntil([broken] { return broken->runningServers() == 0; }));
    }
}

TEST_F(StdioServerTest, ACommandThatIsNotThereFailsTheHandshakeAtOnce)
{
    const LogRecorder log;
    EXPECT_EQ(failureOf(stdio(u"/nowhere/server"_s)->connect()),
              u"The MCP server did not respond in time."_s);
    EXPECT_TRUE(waitUntil([this] { return thread.runningServers() == 0; }));
    // Whichever sign comes first ends the connection, which may hide the other.
    const QSet<QString> signs{
        u"morvane.mcp: a tool server has ended, or closed its output, by itself"_s,
        u"morvane.mcp: a tool server does not read what is sent to it: \"Broken pipe\""_s};
    const QStringList lines = log.lines();
    EXPECT_FALSE(lines.isEmpty());
    EXPECT_TRUE(signs.contains(QSet<QString>(lines.cbegin(), lines.cend())))
        << lines.join(u'\n').toStdString();
}

TEST_F(StdioServerTest, AServerThatIsEndedIsNotTakenForOneThatEnds)
{
    const LogRecorder log;
    const auto server = scripted();
    connect(server);
    server->shutdown();
    EXPECT_TRUE(waitUntil([this] { return thread.runningServers() == 0; }));
    EXPECT_EQ(log.lines(), QStringList());
}

TEST_F(StdioServerTest, AServerThatSpeaksBeforeItIsAskedIsUnderstood)
{
    const auto server = scripted({u"--early"_s});
    connect(server);
    EXPECT_EQ(runTask(scheduler, server->listTools())[0].name, "echo");
}

TEST_F(StdioServerTest, LinesThatEndInCrLfAreNotDelivered)
{
    const auto server = scripted({u"--crlf"_s});
    auto handshake = scheduler.spawn(server->connect());
    // The answer is there when the server has been asked and has nothing more to say.
    ASSERT_TRUE(waitUntil([this] { return thread.runningServers() == 1; }));
    EXPECT_FALSE(waitUntil([&] { return handshake.done(); }, 500ms));
    server->shutdown();
    ASSERT_TRUE(waitUntil([&] { return handshake.done(); }));
    EXPECT_THROW(handshake.result(), MCPError);
}

TEST_F(StdioServerTest, HostileAnswersHarmNobody)
{
    const auto server = scripted();
    connect(server);
    EXPECT_EQ(call(server, u"twice"_s).text, "first");
    EXPECT_EQ(call(server, u"stranger"_s).text, "yours");
    EXPECT_EQ(call(server, u"garbage"_s).text, "after garbage");
    EXPECT_EQ(call(server, u"nested"_s).text, "survived");
    EXPECT_EQ(call(server, u"asks"_s).text, "asked");
    EXPECT_EQ(call(server, u"text-id"_s).text, "by text");
    EXPECT_EQ(call(server, u"slow"_s).text, "patience");
}

TEST_F(StdioServerTest, AnswersComeInAnyOrder)
{
    const auto server = scripted();
    connect(server);
    auto first = scheduler.spawn(server->callTool(u"later"_s, {}));
    auto second = scheduler.spawn(server->callTool(u"later"_s, {}));
    ASSERT_TRUE(waitUntil([&] { return first.done() && second.done(); }));
    EXPECT_EQ(first.result().text, "first");
    EXPECT_EQ(second.result().text, "second");
}

TEST_F(StdioServerTest, ManyCallsAreUnderWayAtOnce)
{
    const auto server = scripted();
    connect(server);
    std::vector<TaskHandle<ToolResult>> calls;
    for (int i = 0; i < 64; ++i)
        calls.push_back(
            scheduler.spawn(server->callTool(u"echo"_s, json::object{{"text", std::to_string(i)}})));
    for (int i = 0; i < 64; ++i) {
        ASSERT_TRUE(waitUntil([&] { return calls[std::size_t(i)].done(); }));
        EXPECT_EQ(calls[std::size_t(i)].result().text, QString::number(i));
    }
}

TEST_F(StdioServerTest, AnEndInTheMiddleOfALineFailsTheCall)
{
    const auto server = scripted();
    connect(server);
    EXPECT_EQ(failureOf(server->callTool(u"die"_s, {})), u"The MCP server did not respond in time."_s);
    EXPECT_EQ(failureOf(server->callTool(u"echo"_s, {})), u"The MCP server did not respond in time."_s)
        << "on the write";
    EXPECT_TRUE(waitUntil([this] { return thread.runningServers() == 0; }));
}

TEST_F(StdioServerTest, AnAnswerJustBeforeTheEndArrives)
{
    for (int i = 0; i < 20; ++i) {
        const auto server = scripted();
        connect(server);
        EXPECT_EQ(call(server, u"exit"_s).text, "goodbye");
    }
}

TEST_F(StdioServerTest, AServerThatClosesItsInputFailsTheNextCall)
{
    const auto server = scripted();
    connect(server);
    EXPECT_EQ(call(server, u"deaf"_s).text, "deaf now");
    // The pipe breaks a moment after the answer.
    EXPECT_TRUE(waitUntil([&] {
        auto handle = scheduler.spawn(server->callTool(u"echo"_s, {}));
        const bool done = waitUntil([&] { return handle.done(); }, 50ms);
        if (!done)
            handle.cancel();
        return done;
    }));
}

TEST_F(StdioServerTest, AnswersOfAnySizeArriveWhole)
{
    const auto server = scripted();
    connect(server);
    for (const qint64 size : {100'000, 1'000'000, 20'000'000}) {
        const QString text = call(server, u"big"_s, {{"text", "0123456789"}, {"times", size / 10}}).text;
        EXPECT_EQ(text.size(), size);
        EXPECT_TRUE(text.endsWith(u"0123456789"_s));
    }
}

TEST_F(StdioServerTest, AnswersBeyondAsciiThatFitThePipeArriveWhole)
{
    // A pipe of the usual 64 kB cuts such an answer inside a character sooner or later.
    const auto server = scripted();
    connect(server);
    for (int i = 0; i < 20; ++i) {
        const QString text = call(server, u"big"_s, {{"text", "a日本語"}, {"times", 30'000}}).text;
        EXPECT_EQ(text.size(), 120'000);
    }
}

TEST_F(StdioServerTest, ThePipesHoldAsMuchAsTheSystemAllows)
{
    QFile file(u"/proc/sys/fs/pipe-max-size"_s);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const int most = std::min(file.readAll().trimmed().toInt(), 1024 * 1024);
    const auto server = scripted();
    connect(server);
    EXPECT_EQ(call(server, u"pipes"_s).text, u"%1 %1"_s.arg(most));
}

TEST_F(StdioServerTest, AServerThatClosesItsOutputFailsWhatWaits)
{
    const auto server = stdio(u"read line; exec >&-; exec /bin/cat > /dev/null"_s);
    auto handshake = scheduler.spawn(server->connect());
    ASSERT_TRUE(waitUntil([&] { return handshake.done(); }, 10s)) << "sooner than by its time";
    EXPECT_THROW(handshake.result(), MCPError);
    EXPECT_EQ(thread.runningServers(), 1u);
}

TEST_F(StdioServerTest, LargeArgumentsReachAServerThatReadsSlowly)
{
    const auto server = scripted();
    connect(server);
    const std::string text(8'000'000, 'y');
    EXPECT_EQ(call(server, u"echo"_s, {{"text", text}}).text.size(), 8'000'000);
}

TEST_F(StdioServerTest, NoiseOnStandardErrorHindersNothing)
{
    const auto server = scripted({u"--noise"_s});
    connect(server);
    for (int i = 0; i < 200; ++i)
        ASSERT_EQ(call(server, u"echo"_s, {{"text", "heard"}}).text, "heard");
}

TEST_F(StdioServerTest, CancellingACallEndsItAtOnceAndTheConnectionGoesOn)
{
    const auto server = scripted();
    connect(server);
    auto handle = scheduler.spawn(server->callTool(u"never"_s, {}));
    settle();
    handle.cancel();
    ASSERT_TRUE(waitUntil([&] { return handle.done(); }));
    EXPECT_THROW(handle.result(), Cancelled);
    EXPECT_EQ(call(server, u"echo"_s, {{"text", "still here"}}).text, "still here");
}

TEST_F(StdioServerTest, ACallDuringAReplacementIsTheOldServersAndAnswered)
{
    const auto server = scripted({u"--pids"_s, pidFile()});
    connect(server);
    auto replacement = scheduler.spawn(server->connect());
    auto during = scheduler.spawn(server->callTool(u"pid"_s, {}));
    ASSERT_TRUE(waitUntil([&] { return replacement.done() && during.done(); }));
    EXPECT_NO_THROW(replacement.result());
    ASSERT_EQ(pids().size(), 2);
    EXPECT_EQ(during.result().text, QString::number(pids()[0]));
    EXPECT_EQ(call(server, u"pid"_s).text, QString::number(pids()[1]));
    EXPECT_TRUE(areGone({pids()[0]}));
}

TEST_F(StdioServerTest, AShutdownDuringAReplacementEndsBothServers)
{
    const auto server = scripted({u"--silent"_s, u"--pids"_s, pidFile()});
    auto first = scheduler.spawn(server->connect());
    ASSERT_TRUE(waitUntil([this] { return pids().size() == 1; }));
    auto replacement = scheduler.spawn(server->connect());
    ASSERT_TRUE(waitUntil([this] { return thread.runningServers() == 2; }));
    server->shutdown();
    ASSERT_TRUE(waitUntil([&] { return first.done() && replacement.done(); }));
    EXPECT_THROW(replacement.result(), MCPError);
    EXPECT_TRUE(waitUntil([this] { return thread.runningServers() == 0; }));
}

TEST_F(StdioServerTest, AReplacedServerAnswersWhatItWasAskedAndIsEnded)
{
    const auto server = scripted({u"--pids"_s, pidFile()});
    connect(server);
    auto held = scheduler.spawn(server->callTool(u"later"_s, {}));
    settle();
    const pid_t old = pids().value(0);
    connect(server);
    ASSERT_EQ(pids().size(), 2);
    EXPECT_EQ(call(server, u"pid"_s).text, QString::number(pids()[1]));
    EXPECT_TRUE(isAlive(old)) << "a call waits for its answer";
    held.cancel();
    EXPECT_TRUE(areGone({old}));
    EXPECT_EQ(call(server, u"echo"_s, {{"text", "new"}}).text, "new")
        << "the end of the old one fails nothing";
}

} // namespace
} // namespace morvane
