#include "McpFixture.h"

#include "support/Sanitizer.h"

#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace morvane {
namespace {

/// That no server, and nothing that it started, outlives its connection or the program.
class ProcessHygieneTest : public McpTest {
protected:
    QStringList family() const { return {u"--stubborn"_s, u"--family"_s, u"--pids"_s, pidFile()}; }
    bool hasFamily() const
    {
        return waitUntil([this] { return pids().size() == 3; });
    }
    /// A server that is a few words of shell: much less to start than ours, without tools.
    std::shared_ptr<MCPConnection> ofShell()
    {
        return stdio(uR"(while read -r line; do case $line in *'"id":'*) id=${line#*'"id":'};
                         echo '{"jsonrpc":"2.0","id":'${id%%[!0-9]*}',"result":{"tools":[]}}';;
                         esac; done)"_s);
    }
    static qsizetype entries(const QString &folder)
    {
        return QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System).size();
    }
    static qsizetype openDescriptors() { return entries(u"/proc/self/fd"_s); }
    static qsizetype threads() { return entries(u"/proc/self/task"_s); }
    static pid_t parentOf(pid_t process) { return statusField(process, "PPid").toInt(); }
    static QByteArray statusField(pid_t process, const QByteArray &key)
    {
        return field(process, u"status"_s, key);
    }
};

TEST_F(ProcessHygieneTest, AnObedientServerIsGoneAfterShutdown)
{
    const auto server = scripted({u"--pids"_s, pidFile()});
    connect(server);
    const QList<pid_t> processes = pids();
    ASSERT_EQ(processes.size(), 1);
    EXPECT_TRUE(isAlive(processes[0]));
    server->shutdown();
    EXPECT_TRUE(areGone(processes));
    EXPECT_TRUE(waitUntil([this] { return thread.runningServers() == 0; }));
}

TEST_F(ProcessHygieneTest, AStubbornServerAndItsWholeFamilyAreGoneAfterTwoSeconds)
{
    const auto server = scripted(family());
    connect(server);
    ASSERT_TRUE(hasFamily());
    server->shutdown();
    EXPECT_TRUE(areGone(pids()));
}

TEST_F(ProcessHygieneTest, AServerThatIsTerminatedMayFinishItsWork)
{
    const QString begun = folder.filePath(u"begun"_s);
    const QString finished = folder.filePath(u"finished"_s);
    const auto server = stdio(
        u"trap '/bin/sleep 1; touch %1; exit' TERM; touch %2; /bin/sleep 1000 & wait"_s.arg(finished, begun));
    auto handshake = scheduler.spawn(server->connect());
    ASSERT_TRUE(waitUntil([&] { return QFile::exists(begun); }));
    server->shutdown();
    EXPECT_TRUE(waitUntil([&] { return QFile::exists(finished); }));
    EXPECT_TRUE(waitUntil([&] { return thread.runningServers() == 0 && handshake.done(); }));
}

TEST_F(ProcessHygieneTest, AServerThatDoesNotHeedTheSignalMayEndWithItsInput)
{
    const QString begun = folder.filePath(u"begun"_s);
    const QString finished = folder.filePath(u"finished"_s);
    const auto server =
        stdio(u"trap '' TERM; touch %2; /bin/cat > /dev/null; touch %1"_s.arg(finished, begun));
    auto handshake = scheduler.spawn(server->connect());
    ASSERT_TRUE(waitUntil([&] { return QFile::exists(begun); }));
    server->shutdown();
    EXPECT_TRUE(waitUntil([&] { return QFile::exists(finished); }));
    EXPECT_TRUE(waitUntil([&] { return thread.runningServers() == 0 && handshake.done(); }));
}

TEST_F(ProcessHygieneTest, AFamilyThatOutlivesItsServerIsEndedWithTheConnection)
{
    const auto server = scripted({u"--family"_s, u"--pids"_s, pidFile()});
    connect(server);
    ASSERT_TRUE(hasFamily());
    EXPECT_EQ(call(server, u"exit"_s).text, "goodbye");
    server->shutdown();
    EXPECT_TRUE(areGone(pids()));
}

TEST_F(ProcessHygieneTest, AReleasedConnectionEndsItsServer)
{
    auto server = scripted({u"--pids"_s, pidFile()});
    connect(server);
    server.reset();
    EXPECT_TRUE(areGone(pids()));
}

TEST_F(ProcessHygieneTest, AServerThatIsEndedDuringItsHandshakeIsGone)
{
    const auto server = scripted({u"--silent"_s, u"--stubborn"_s, u"--pids"_s, pidFile()});
    auto handshake = scheduler.spawn(server->connect());
    ASSERT_TRUE(waitUntil([this] { return pids().size() == 1; }));
    server->shutdown();
    ASSERT_TRUE(waitUntil([&] { return handshake.done(); }));
    EXPECT_THROW(handshake.result(), MCPError);
    EXPECT_TRUE(areGone(pids()));
}

TEST_F(ProcessHygieneTest, TheEndOfTheThreadWaitsForAllServers)
{
    {
        StdioThread own(guard());
        const auto server =
            std::make_shared<MCPConnection>([&](const std::shared_ptr<PendingRequests> &requests) {
                return std::make_unique<StdioTransport>(program(u"scripted-tool-server"_s), family(), own,
                                                        requests);
            });
        connect(server);
        ASSERT_TRUE(hasFamily());
    }
    for (const pid_t process : pids())
        EXPECT_FALSE(isAlive(process));
}

TEST_F(ProcessHygieneTest, NothingOutlivesAProgramThatIsKilled)
{
    // The process that dies is a copy of this test's, with a server of its own.
    const pid_t program = ::fork();
    if (program == 0) {
        StdioThread own(guard());
        SystemClock ownClock;
        Scheduler ownScheduler(ownClock);
        MCPConnection server([&](const std::shared_ptr<PendingRequests> &requests) {
            return std::make_unique<StdioTransport>(McpTest::program(u"scripted-tool-server"_s), family(),
                                                    own, requests);
        });
        runTask(ownScheduler, server.connect());
        ::pause();
    }
    ASSERT_TRUE(hasFamily());
    ::kill(program, SIGKILL);
    ::waitpid(program, nullptr, 0);
    EXPECT_TRUE(areGone(pids()));
}

TEST_F(ProcessHygieneTest, AFamilyDoesNotOutliveAGuardOfWhichAProcessIsKilled)
{
    for (const bool isFirst : {true, false}) {
        QFile::remove(pidFile());
        const auto server = scripted(family());
        connect(server);
        ASSERT_TRUE(hasFamily());
        const pid_t second = parentOf(pids()[0]);
        const pid_t first = parentOf(second);
        ASSERT_EQ(parentOf(first), ::getpid());
        auto call = scheduler.spawn(server->callTool(u"never"_s, {}));
        settle();
        ::kill(isFirst ? first : second, SIGKILL);
        EXPECT_TRUE(areGone(pids() + QList{first, second}));
        ASSERT_TRUE(waitUntil([&] { return call.done(); }));
        EXPECT_THROW(call.result(), MCPError);
        EXPECT_TRUE(waitUntil([this] { return thread.runningServers() == 0; }));
    }
}

TEST_F(ProcessHygieneTest, AServerDoesNotOutliveAGuardThatIsKilledAsAWhole)
{
    const auto server = scripted({u"--stubborn"_s, u"--pids"_s, pidFile()});
    connect(server);
    const pid_t second = parentOf(pids()[0]);
    ::kill(-parentOf(second), SIGKILL);
    EXPECT_TRUE(areGone(pids()));
    EXPECT_TRUE(waitUntil([this] { return thread.runningServers() == 0; }));
}

TEST_F(ProcessHygieneTest, AGuardThatIsTerminatedEndsItsFamily)
{
    const auto server = scripted(family());
    connect(server);
    ASSERT_TRUE(hasFamily());
    ::kill(parentOf(parentOf(pids()[0])), SIGTERM);
    EXPECT_TRUE(areGone(pids()));
    EXPECT_TRUE(waitUntil([this] { return thread.runningServers() == 0; }));
}

TEST_F(ProcessHygieneTest, AServerHasItsOwnGroupThreeDescriptorsAndDefaultSignals)
{
    sigset_t blocked;
    ::sigemptyset(&blocked);
    ::sigaddset(&blocked, SIGUSR1);
    ::pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    const int leaky = ::open("/dev/null", O_RDONLY); // not closed on exec
    const auto server = stdio(u"exec "_s + program(u"scripted-tool-server"_s), {u"--pids"_s, pidFile()});
    connect(server);
    std::signal(SIGPIPE, SIG_DFL);
    ::pthread_sigmask(SIG_UNBLOCK, &blocked, nullptr);
    ::close(leaky);
    const pid_t process = pids().value(0);
    EXPECT_EQ(::getpgid(process), process);
    EXPECT_EQ(entries(u"/proc/%1/fd"_s.arg(process)), 3);
    EXPECT_EQ(statusField(process, "SigBlk").toULongLong(nullptr, 16), 0u);
    // But for the two that the C library keeps for itself, and ignores where a program starts.
    EXPECT_EQ(statusField(process, "SigIgn").toULongLong(nullptr, 16) & ~0x180000000ull, 0u);
}

TEST_F(ProcessHygieneTest, AFloodOnStandardErrorGrowsNothing)
{
    const auto server = scripted({u"--noise"_s, u"--pids"_s, pidFile()});
    connect(server);
    const pid_t process = pids().value(0);
    const auto hasWritten = [process](qint64 megabytes) {
        return waitUntil([&] { return number(process, u"io"_s, "wchar") > megabytes * 1'000'000; });
    };
    ASSERT_TRUE(hasWritten(50));
    const qint64 memory = number(::getpid(), u"status"_s, "VmRSS");
    ASSERT_TRUE(hasWritten(1'000));
    // In kilobytes. The address sanitizer holds freed blocks back for a while.
    EXPECT_LT(number(::getpid(), u"status"_s, "VmRSS"), memory + (isSanitized() ? 300'000 : 8'000));
    EXPECT_EQ(call(server, u"echo"_s, {{"text", "heard"}}).text, "heard");
}

TEST_F(ProcessHygieneTest, AThousandConnectsLeaveNoZombieDescriptorOrThread)
{
    // The memory of the guards is the other tests' affair: to be searched for leaks at the end of each would
    // take most of the time.
    const QByteArray sanitizer = qgetenv("ASAN_OPTIONS");
    qputenv("ASAN_OPTIONS", sanitizer + ":detect_leaks=0");
    const auto restored = qScopeGuard([&sanitizer] { qputenv("ASAN_OPTIONS", sanitizer); });
    connect(ofShell());
    ASSERT_TRUE(waitUntil([this] { return thread.runningServers() == 0; }));
    const qsizetype descriptors = openDescriptors();
    const qsizetype threadsBefore = threads();
    const auto server = ofShell();
    for (int i = 0; i < 1000; ++i)
        connect(server); // each replaces the one before
    server->shutdown();
    ASSERT_TRUE(waitUntil([this] { return thread.runningServers() == 0; }));
    // Idle threads of the pool may have gone meanwhile.
    EXPECT_LE(openDescriptors(), descriptors);
    EXPECT_LE(threads(), threadsBefore);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "no child is left, dead or alive";
}

} // namespace
} // namespace morvane
