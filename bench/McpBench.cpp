// What a tool call costs over both transports, beside a bare loop over the same server, what connecting
// costs, and what a long answer and many tools do to memory and main thread. Prints one JSON object. The
// servers are those of tests/peers (scripts/install-peers.sh).

#include "BareClient.h"
#include "BareServer.h"
#include "BenchAgent.h"
#include "ProcMegabytes.h"

#include "mcp/JsonRpc.h"
#include "mcp/LineFraming.h"
#include "mcp/MCPManager.h"
#include "mcp/ToolAnswers.h"
#include "support/ScriptedModel.h"

#include "async/SystemClock.h"
#include "base/InstalledFiles.h"
#include "base/Uuid.h"
#include "mcp/HttpTransport.h"
#include "mcp/MCPConnection.h"
#include "mcp/StdioThread.h"
#include "mcp/StdioTransport.h"
#include "net/HttpClient.h"
#include "support/RunTask.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryFile>
#include <cstdio>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr int stdioCalls = 10'000;
constexpr int httpCalls = 2'000;
constexpr int atOnce = 64;
constexpr int servers = 10;

const QString peersFolder = QStringLiteral(MORVANE_SOURCE_DIR "/tests/peers");
const QString nodeProgram = peersFolder + u"/node_modules/.bin/node"_s;
const QString everything =
    peersFolder + u"/node_modules/@modelcontextprotocol/server-everything/dist/index.js"_s;

double processorMicroseconds()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    const auto microseconds = [](const timeval &time) {
        return double(time.tv_sec) * 1e6 + double(time.tv_usec);
    };
    return microseconds(usage.ru_utime) + microseconds(usage.ru_stime);
}

/// The peak of memory counts from here.
void forgetPeak()
{
    QFile references(u"/proc/self/clear_refs"_s);
    if (references.open(QIODevice::WriteOnly))
        references.write("5");
}

/// Measures `calls` calls that `work` makes, and prints them as one member.
template <class Work> void measure(const char *name, int calls, Work work)
{
    const double processorBefore = processorMicroseconds();
    const auto begin = SteadyClock::now();
    work(calls);
    const double seconds = std::chrono::duration<double>(SteadyClock::now() - begin).count();
    const double processor = (processorMicroseconds() - processorBefore) / calls;
    std::printf("  \"%s\": {\"perSecond\": %.0f, \"ownProcessorMicroseconds\": %.1f},\n", name,
                calls / seconds, processor);
    std::fflush(stdout);
}

QByteArray callText(int id)
{
    return R"({"jsonrpc":"2.0","id":)" + QByteArray::number(id) +
           R"(,"method":"tools/call","params":{"name":"echo","arguments":{"message":"hello"}}})";
}

Task<void> callOneAfterTheOther(std::shared_ptr<MCPConnection> connection, int calls)
{
    const boost::json::object arguments{{"message", "hello"}};
    for (int i = 0; i < calls; ++i) {
        const ToolResult answer = co_await connection->callTool(u"echo"_s, arguments);
        if (answer.text != "Echo: hello"_L1)
            std::abort();
    }
}

class Bench {
public:
    ~Bench() { m_scheduler.shutdown(std::chrono::seconds(1)); }

    void run()
    {
        std::printf("{\n  \"benchmark\": \"calls of tools on servers\",\n");
        readLongLine(25);
        readLongLine(50);
        runStdio();
        runHttp();
        connectMany();
        holdMain();
        std::printf("  \"calls\": {\"stdio\": %d, \"http\": %d}\n}\n", stdioCalls, httpCalls);
    }

private:
    std::shared_ptr<MCPConnection> stdio(const QString &command, const QStringList &args)
    {
        return std::make_shared<MCPConnection>([&](const std::shared_ptr<PendingRequests> &requests) {
            return std::make_unique<StdioTransport>(command, args, m_thread, requests);
        });
    }

    void callAll(const std::shared_ptr<MCPConnection> &connection, int calls)
    {
        runTask(m_scheduler, callOneAfterTheOther(connection, calls), std::chrono::minutes(2));
    }
    void callInParallel(const std::shared_ptr<MCPConnection> &connection, int calls)
    {
        std::vector<TaskHandle<void>> lanes;
        for (int lane = 0; lane < atOnce; ++lane)
            lanes.push_back(m_scheduler.spawn(callOneAfterTheOther(connection, calls / atOnce)));
        for (auto &lane : lanes)
            waitUntil([&lane] { return lane.done(); }, std::chrono::minutes(2));
    }

    void runStdio()
    {
        {
            BareServer bare(QFile::encodeName(nodeProgram), QFile::encodeName(everything));
            measure("stdioFloor", stdioCalls, [&bare](int calls) {
                for (int i = 1; i <= calls; ++i)
                    bare.ask(callText(i));
            });
        }
        const auto connection = stdio(nodeProgram, {everything});
        runTask(m_scheduler, connection->connect());
        callAll(connection, 1'000);
        measure("stdio", stdioCalls, [&](int calls) { callAll(connection, calls); });
        measure("stdio64AtOnce", stdioCalls, [&](int calls) { callInParallel(connection, calls); });
        connection->shutdown();
    }

    void runHttp()
    {
        QProcess remote;
        // What it prints for each request goes to a file: reading it would count as ours.
        QTemporaryFile output;
        if (!output.open())
            std::abort();
        remote.setStandardOutputFile(output.fileName());
        remote.setStandardErrorFile(QProcess::nullDevice());
        remote.start(nodeProgram,
                     {u"--require"_s, peersFolder + u"/loopback.cjs"_s, everything, u"streamableHttp"_s});
        QByteArray printed;
        waitUntil([&] {
            printed += output.readAll();
            return printed.contains("port ") && printed.endsWith('\n');
        });
        const QByteArray port = printed.mid(printed.lastIndexOf("port ") + 5).trimmed();
        {
            BareClient bare(port.toUShort());
            measure("httpFloor", httpCalls, [&bare](int calls) {
                for (int i = 1; i <= calls; ++i)
                    bare.ask(callText(i));
            });
        }
        const auto connection =
            std::make_shared<MCPConnection>([&](const std::shared_ptr<PendingRequests> &requests) {
                return std::make_unique<HttpTransport>(
                    u"http://127.0.0.1:%1/mcp"_s.arg(QString::fromLatin1(port)), m_scheduler, m_client,
                    requests);
            });
        runTask(m_scheduler, connection->connect());
        callAll(connection, 100);
        measure("http", httpCalls, [&](int calls) { callAll(connection, calls); });
        measure("http64AtOnce", httpCalls, [&](int calls) { callInParallel(connection, calls); });
        connection->shutdown();
        remote.kill();
        remote.waitForFinished();
    }

    void connectMany()
    {
        {
            std::vector<std::unique_ptr<BareServer>> bare;
            measure("connectTenServersFloor", servers, [&](int count) {
                for (int i = 0; i < count; ++i) {
                    bare.push_back(std::make_unique<BareServer>(QFile::encodeName(scriptedServer())));
                    bare.back()->ask(R"({"jsonrpc":"2.0","id":2,"method":"tools/list","params":{}})");
                }
            });
        }
        const QString program = scriptedServer();
        std::vector<std::shared_ptr<MCPConnection>> all;
        measure("connectTenServers", servers, [&](int count) {
            for (int i = 0; i < count; ++i) {
                all.push_back(stdio(program, {}));
                runTask(m_scheduler, all.back()->connect());
                runTask(m_scheduler, all.back()->listTools());
            }
        });
    }

    /// A line in pieces of 4 kB, from the pipe to the text that the model gets. In a process of its own,
    /// whose memory nobody has used yet; to be called while there is one thread.
    static void readLongLine(int megabytes)
    {
        std::fflush(stdout);
        const pid_t process = ::fork();
        if (process != 0) {
            ::waitpid(process, nullptr, 0);
            return;
        }
        // At its full size at once: what is given back before would shape how memory is handed out later.
        constexpr QByteArrayView sentence = "a line of some words in it\\n";
        QByteArray words;
        words.reserve(megabytes * 1'000'000 + 1'000);
        words += R"({"jsonrpc":"2.0","id":1,"result":{"content":[{"type":"text","text":")";
        while (words.size() < megabytes * 1'000'000)
            words += sentence;
        words += "\"}]}}\n";
        const double before = procMegabytes(u"self"_s, "status", "VmRSS");
        forgetPeak();
        const auto begin = SteadyClock::now();
        LineFraming framing;
        QList<QByteArray> lines;
        for (qsizetype start = 0; start < words.size(); start += 4096)
            lines += framing.consume(
                QByteArrayView(words).sliced(start, std::min<qsizetype>(4096, words.size() - start)));
        const double framed = procMegabytes(u"self"_s, "status", "VmHWM") - before;
        auto message = parseJSONText(lines.takeFirst());
        const ToolResult result = toolResult(resultOf(std::move(message)).value());
        const double seconds = std::chrono::duration<double>(SteadyClock::now() - begin).count();
        if (result.text.size() < megabytes * 900'000)
            std::abort();
        std::printf("  \"lineOf%dMB\": {\"milliseconds\": %.0f, \"memoryTimesItsSize\": {\"framed\": %.2f, "
                    "\"read\": %.2f}},\n",
                    megabytes, seconds * 1e3, framed / double(words.size()) * 1e6,
                    (procMegabytes(u"self"_s, "status", "VmHWM") - before) / double(words.size()) * 1e6);
        std::fflush(stdout);
        ::_exit(0);
    }

    /// How long the main thread is held by an answer of 50 MB, by a list of 500 tools with schemas of 10 kB
    /// each, and by a run that offers them.
    void holdMain()
    {
        {
            const auto connection = stdio(scriptedServer(), {});
            runTask(m_scheduler, connection->connect());
            const StallWatch stalls;
            const ToolResult answer =
                runTask(m_scheduler,
                        connection->callTool(
                            u"big"_s, boost::json::object{{"text", "0123456789"}, {"times", 5'000'000}}),
                        std::chrono::minutes(1));
            if (answer.text.size() != 50'000'000)
                std::abort();
            printHold("answerOf50MB", stalls);
        }
        TemporaryHome home;
        MCPManager manager(
            m_scheduler, home.path(), [this](const MCPServerConfig &server, const auto &requests) {
                return std::make_unique<StdioTransport>(server.command, server.args, m_thread, requests);
            });
        manager.appendServer(
            {newUuid(), u"Many"_s, u"stdio"_s, scriptedServer(), {u"--tools"_s, u"500"_s}, {}, true});
        for (const char *time : {"listing500Tools", "listing500ToolsAgain"}) {
            const StallWatch stalls;
            runTask(m_scheduler, manager.refreshAll());
            printHold(time, stalls);
        }
        ModelScript script;
        for (int turn = 0; turn < 5; ++turn)
            script.turns.push_back(ScriptedTurn::saying({"fine"}));
        ScriptedModel model(script);
        BenchAgent agent(model.baseURL());
        agent.toolServers.tools = manager.exposedAITools();
        if (agent.toolServers.tools.size() < 500)
            std::abort();
        {
            const StallWatch stalls;
            for (int turn = 0; turn < 5; ++turn)
                agent.ask(u"Hello"_s);
            printHold("requestWith500Tools", stalls);
        }
        std::printf("  \"bytesOfARequestWith500Tools\": %s,\n",
                    model.requests().front().headers.at("content-length").c_str());
    }
    static void printHold(const char *name, const StallWatch &stalls)
    {
        std::printf("  \"%s\": {\"longestHoldMilliseconds\": %.2f, \"inProcessorTime\": %.2f},\n", name,
                    stalls.milliseconds(), stalls.processorMilliseconds());
        std::fflush(stdout);
    }

    static QString scriptedServer()
    {
        return QCoreApplication::applicationDirPath() + u"/scripted-tool-server"_s;
    }

    SystemClock m_clock;
    Scheduler m_scheduler{m_clock};
    HttpClient m_client;
    StdioThread m_thread{
        QFile::encodeName(InstalledFiles::aroundProgram().helper(u"morvane-server-guard"_s))};
};

} // namespace
} // namespace morvane

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    morvane::Bench().run();
    return 0;
}
