// What a tool call costs over both transports, beside a bare loop over the same server. Prints one JSON
// object. The servers are those of tests/peers (scripts/install-peers.sh).

#include "async/SystemClock.h"
#include "mcp/HttpTransport.h"
#include "mcp/MCPConnection.h"
#include "mcp/StdioThread.h"
#include "mcp/StdioTransport.h"
#include "net/HttpClient.h"
#include "support/RunTask.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <arpa/inet.h>
#include <cstdio>
#include <netinet/tcp.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
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

const QByteArray handshakeText = R"({"jsonrpc":"2.0","id":0,"method":"initialize","params":{"protocolVersion":
"2025-03-26","capabilities":{},"clientInfo":{"name":"bare","version":"1"}}})";

/// The floor over standard streams: write, read to the line's end, again.
class BareServer {
public:
    BareServer()
    {
        int input[2];
        int output[2];
        if (::pipe(input) != 0 || ::pipe(output) != 0)
            std::abort();
        m_process = ::fork();
        if (m_process == 0) {
            ::dup2(input[0], 0);
            ::dup2(output[1], 1);
            ::close(input[1]);
            ::close(output[0]);
            if (!::freopen("/dev/null", "w", stderr))
                ::_exit(1);
            const QByteArray node = QFile::encodeName(nodeProgram);
            ::execl(node.constData(), node.constData(), QFile::encodeName(everything).constData(), nullptr);
            ::_exit(127);
        }
        ::close(input[0]);
        ::close(output[1]);
        m_input = input[1];
        m_output = output[0];
        ask(QByteArray(handshakeText).replace('\n', ""));
        m_sent = R"({"jsonrpc":"2.0","method":"notifications/initialized","params":{}})"
                 "\n";
        [[maybe_unused]] const ssize_t count =
            ::write(m_input, m_sent.constData(), std::size_t(m_sent.size()));
    }
    ~BareServer()
    {
        ::close(m_input);
        ::close(m_output);
        ::kill(m_process, SIGTERM);
        ::waitpid(m_process, nullptr, 0);
    }

    void ask(QByteArray text)
    {
        text += '\n';
        if (::write(m_input, text.constData(), std::size_t(text.size())) != text.size())
            std::abort();
        char buffer[65536];
        while (true) {
            const ssize_t count = ::read(m_output, buffer, sizeof buffer);
            if (count <= 0)
                std::abort();
            // Notifications that come behind the handshake hold no result.
            if (QByteArrayView(buffer, count).contains("\"result\""))
                return;
        }
    }

private:
    pid_t m_process = 0;
    int m_input = -1;
    int m_output = -1;
    QByteArray m_sent;
};

/// The floor over HTTP: one connection, a request, all of its answer, again.
class BareClient {
public:
    explicit BareClient(quint16 port)
    {
        m_socket = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const int on = 1;
        ::setsockopt(m_socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        if (::connect(m_socket, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0)
            std::abort();
        const QByteArray head = ask(handshakeText);
        const qsizetype begin = head.toLower().indexOf("mcp-session-id: ") + 16;
        m_session = head.mid(begin, head.indexOf('\r', begin) - begin);
    }
    ~BareClient() { ::close(m_socket); }

    QByteArray ask(const QByteArray &text)
    {
        QByteArray request = "POST /mcp HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: application/json\r\n"
                             "Accept: application/json, text/event-stream\r\nContent-Length: " +
                             QByteArray::number(text.size()) + "\r\n";
        if (!m_session.isEmpty())
            request += "Mcp-Session-Id: " + m_session + "\r\nMCP-Protocol-Version: 2025-03-26\r\n";
        request += "\r\n" + text;
        if (::send(m_socket, request.constData(), std::size_t(request.size()), 0) != request.size())
            std::abort();
        QByteArray answer;
        char buffer[65536];
        while (!answer.endsWith("0\r\n\r\n")) {
            const ssize_t count = ::recv(m_socket, buffer, sizeof buffer, 0);
            if (count <= 0)
                std::abort();
            answer.append(buffer, count);
        }
        return answer;
    }

private:
    int m_socket = -1;
    QByteArray m_session;
};

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
        runStdio();
        runHttp();
        connectMany();
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
            BareServer bare;
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
        remote.setStandardErrorFile(QProcess::nullDevice());
        remote.start(nodeProgram,
                     {u"--require"_s, peersFolder + u"/loopback.cjs"_s, everything, u"streamableHttp"_s});
        QByteArray output;
        waitUntil([&] {
            output += remote.readAllStandardOutput();
            return output.contains("port ") && output.endsWith('\n');
        });
        const QByteArray port = output.mid(output.lastIndexOf("port ") + 5).trimmed();
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
        const QString program = QCoreApplication::applicationDirPath() + u"/scripted-tool-server"_s;
        std::vector<std::shared_ptr<MCPConnection>> all;
        measure("connectTenServers", servers, [&](int count) {
            for (int i = 0; i < count; ++i) {
                all.push_back(stdio(program, {}));
                runTask(m_scheduler, all.back()->connect());
                runTask(m_scheduler, all.back()->listTools());
            }
        });
    }

    SystemClock m_clock;
    Scheduler m_scheduler{m_clock};
    HttpClient m_client;
    StdioThread m_thread{
        QFile::encodeName(QCoreApplication::applicationDirPath() + u"/morvane-server-guard"_s)};
};

} // namespace
} // namespace morvane

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    morvane::Bench().run();
    return 0;
}
