#include "localmodel/LocalModelManager.h"
#include "integration/localmodel/RuntimeFixture.h"
#include "support/FakeClock.h"
#include "support/LogRecorder.h"
#include "support/TimeLimit.h"

#include <QFileInfo>
#include <fcntl.h>

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

namespace morvane {
namespace {

using LocalModelManagerTest = RuntimeTest;

bool isAlive(qint64 process)
{
    return ::kill(static_cast<pid_t>(process), 0) == 0;
}

TEST_F(LocalModelManagerTest, AServerThatRunsIsUsedAsItIs)
{
    RawHttpServer server(RawHttpServer::answering(
        [](const RawHttpRequest &) { return rawHttpResponse(200, R"({"version":"1"})"); }));
    LocalModelManager other(
        http, {server.url(QString()).toString(), downloads.origin(), data(), {}, [] { return 0; }});
    runTask(scheduler, other.ensureRunning(recording()));
    EXPECT_EQ(labels(), QStringList(u"Ollama is already running."_s));
    EXPECT_FALSE(reports.constFirst().fraction);
    EXPECT_TRUE(downloads.requests().isEmpty());
    EXPECT_EQ(server.requests().value(0).target, "/api/version");
}

TEST_F(LocalModelManagerTest, OnlyStatus200IsAServer)
{
    for (const int status : {204, 301, 404, 500}) {
        RawHttpServer server(RawHttpServer::answering(
            [status](const RawHttpRequest &) { return rawHttpResponse(status, "x"); }));
        LocalModelManager other(http, {server.url(QString()).toString(), {}, data(), {}, [] { return 0; }});
        EXPECT_FALSE(runTask(scheduler, other.isServerRunning())) << status;
    }
    EXPECT_FALSE(runTask(scheduler, manager.isServerRunning()));
}

TEST_F(LocalModelManagerTest, AServerThatTricklesIsNone)
{
    RawHttpServer server([](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(rawHttpHead(200, {{"Content-Length", "100000"}}));
        auto next = std::chrono::steady_clock::now();
        while (connection.send("x")) {
            next += 50ms;
            connection.waitUntil([next] { return std::chrono::steady_clock::now() >= next; });
        }
    });
    LocalModelManager other(http, {server.url(QString()).toString(), {}, data(), {}, [] { return 0; }});
    EXPECT_FALSE(runTask(scheduler, other.isServerRunning()));
}

TEST_F(LocalModelManagerTest, AnInstalledProgramIsStarted)
{
    haveProgram();
    EXPECT_TRUE(manager.isBinaryInstalled());
    runTask(scheduler, manager.ensureRunning(recording()));
    EXPECT_EQ(labels(), QStringList(u"Starting Ollama…"_s));
    EXPECT_TRUE(runTask(scheduler, manager.isServerRunning()));
    EXPECT_TRUE(downloads.requests().isEmpty());
    EXPECT_EQ(known(u"calls"_s), "serve 127.0.0.1:" + QByteArray::number(port) + '\n');
}

TEST_F(LocalModelManagerTest, TheServerIsNobodysChildAndHoldsNothingOfOurs)
{
    haveProgram();
    const int leaked = ::open("/dev/zero", O_RDONLY); // inheritable, as libraries' descriptors may be
    runTask(scheduler, manager.ensureRunning(recording()));
    ::close(leaked);
    const QList<QByteArray> lines = serverLines();
    ASSERT_GE(lines.size(), 5);
    EXPECT_NE(lines.at(1).toLongLong(), ::getpid());
    EXPECT_NE(lines.at(2).toLongLong(), ::getsid(0));
    EXPECT_EQ(lines.at(3), "16384");
    EXPECT_THAT(lines, Contains(QByteArray("0 /dev/null")));
    EXPECT_THAT(lines, Contains(QByteArray("1 /dev/null")));
    EXPECT_THAT(lines, Contains(QByteArray("2 /dev/null")));
    for (const QByteArray &line : lines.sliced(4))
        EXPECT_TRUE(line.isEmpty() || line.endsWith(" /dev/null") || line.contains("socket:"))
            << line.toStdString();
}

TEST_F(LocalModelManagerTest, TheServerOutlivesItsStarter)
{
    haveProgram();
    {
        Scheduler own(clock);
        HttpClient client;
        LocalModelManager starter(
            client,
            {u"http://127.0.0.1:%1"_s.arg(port), downloads.origin(), data(), {home.path(u"ollama"_s)}, [] {
                 return -1;
             }});
        runTask(own, starter.ensureRunning([](const QString &, std::optional<double>) {}));
        own.shutdown(1s);
    }
    EXPECT_TRUE(isAlive(serverProcess()));
    EXPECT_TRUE(runTask(scheduler, manager.isServerRunning()));
}

TEST_F(LocalModelManagerTest, AServerThatDoesNotComeIsToldAfter120Rounds)
{
    haveProgram();
    tell(u"silent"_s);
    FakeClock fake;
    Scheduler own(fake);
    const auto start = fake.now();
    auto task = own.spawn(manager.ensureRunning(recording()));
    ASSERT_TRUE(waitUntil([&] {
        fake.advance(500ms);
        return task.done();
    }));
    try {
        task.result();
        FAIL();
    } catch (const InstallError &error) {
        EXPECT_EQ(error.message(), u"Ollama did not start. Please open the Ollama app and try again."_s);
    }
    EXPECT_GE(fake.now() - start, 60s);
    EXPECT_EQ(std::ranges::count(fake.requestedDelays(), Clock::Duration(500ms)), 120);
    own.shutdown(1s);
}

TEST_F(LocalModelManagerTest, TheLogTellsWhatAnswersInTheServersPlace)
{
    RawHttpServer stranger(
        RawHttpServer::answering([](const RawHttpRequest &) { return rawHttpResponse(404, "x"); }));
    haveProgram();
    LocalModelManager other(
        http, {stranger.url(QString()).toString(), {}, data(), {home.path(u"ollama"_s)}, [] { return -1; }});
    FakeClock fake;
    Scheduler own(fake);
    const LogRecorder log;
    auto task = own.spawn(other.ensureRunning(recording()));
    ASSERT_TRUE(waitUntil([&] {
        fake.advance(500ms);
        return task.done();
    }));
    EXPECT_THROW(task.result(), InstallError);
    EXPECT_FALSE(log.lines().filter(u"in its place: \"HTTP status 404\""_s).isEmpty())
        << log.lines().join(u'\n').toStdString();
    own.shutdown(1s);
}

TEST_F(LocalModelManagerTest, WaitingForTheServerCanBeCancelled)
{
    haveProgram();
    tell(u"silent"_s);
    auto task = scheduler.spawn(manager.ensureRunning(recording()));
    ASSERT_TRUE(waitUntil([this] { return calls().contains("serve"); }));
    task.cancel();
    ASSERT_TRUE(waitUntil([&task] { return task.done(); }));
    EXPECT_THROW(task.result(), Cancelled);
}

TEST_F(LocalModelManagerTest, TheListHasTheNamesInTheirOrder)
{
    EXPECT_EQ(runTask(scheduler, manager.installedModels()), QStringList());
    haveProgram();
    EXPECT_EQ(runTask(scheduler, manager.installedModels()), QStringList());
    tell(u"models"_s, "qwen3:4b\nqwen2.5:latest\n");
    EXPECT_EQ(runTask(scheduler, manager.installedModels()), QStringList({u"qwen3:4b"_s, u"qwen2.5"_s}));
    EXPECT_TRUE(known(u"calls"_s).endsWith("list 127.0.0.1:" + QByteArray::number(port) + '\n'));
    tell(u"fails"_s, "qwen3:4b\n");
    EXPECT_EQ(runTask(scheduler, manager.installedModels()), QStringList());
}

TEST_F(LocalModelManagerTest, APullTellsItsProgressAndBringsTheModel)
{
    haveProgram();
    qputenv("OLLAMA_HOST", "example.org:1");
    runTask(scheduler, manager.pull(u"qwen2.5"_s, recording()));
    qunsetenv("OLLAMA_HOST");
    EXPECT_EQ(known(u"models"_s), "qwen2.5:latest\n");
    EXPECT_EQ(known(u"calls"_s), "pull qwen2.5 127.0.0.1:" + QByteArray::number(port) + '\n');
    ASSERT_FALSE(reports.isEmpty());
    EXPECT_EQ(runTask(scheduler, manager.installedModels()), QStringList(u"qwen2.5"_s));
}

TEST_F(LocalModelManagerTest, APullLineIsToldWithItsFraction)
{
    haveProgram();
    tell(u"pull-hangs"_s);
    tell(u"pull-output"_s,
         "pulling manifest\n\x1b[A\x1b[1Gpulling 6a0746a1ec1a: 42% ▕██ ▏ 1.9 GB/4.7 GB\x1b[K\n");
    auto task = scheduler.spawn(manager.pull(u"qwen2.5"_s, recording()));
    ASSERT_TRUE(waitUntil([this] { return !reports.isEmpty(); }));
    EXPECT_EQ(reports.constLast().label, u"Downloading model… 42% (1.9 GB/4.7 GB)"_s);
    EXPECT_EQ(reports.constLast().fraction, 0.42);
    task.cancel();
    ASSERT_TRUE(waitUntil([&task] { return task.done(); }));
    EXPECT_THROW(task.result(), Cancelled);
}

TEST_F(LocalModelManagerTest, HoweverManyFramesComeWithinAMomentTheyAreToldOnce)
{
    haveProgram();
    QByteArray frames;
    for (int frame = 0; frame < 40'000; ++frame)
        frames += "pulling 6a0746a1ec1a: " + QByteArray::number(frame / 400) + "% " +
                  QByteArray::number(frame) + " MB/40000 MB\n";
    tell(u"pull-output"_s, frames);
    FakeClock still;
    Scheduler other(still);
    runTask(other, manager.pull(u"qwen2.5"_s, recording()));
    EXPECT_EQ(reports.size(), 1);
    EXPECT_EQ(known(u"models"_s), "qwen2.5:latest\n");
}

TEST_F(LocalModelManagerTest, ALineWithoutAPercentageIsCutTo160Characters)
{
    haveProgram();
    tell(u"pull-output"_s, QByteArray(500, 'x') + '\n');
    runTask(scheduler, manager.pull(u"qwen2.5"_s, recording()));
    EXPECT_EQ(reports.constLast().label, QString(160, u'x'));
    EXPECT_FALSE(reports.constLast().fraction);
}

TEST_F(LocalModelManagerTest, APullThatTakesTooLongIsEnded)
{
    haveProgram();
    tell(u"pull-hangs"_s);
    tell(u"pull-output"_s, "pulling manifest\n");
    FakeClock fake;
    Scheduler own(fake);
    auto task = own.spawn(manager.pull(u"qwen2.5"_s, recording()));
    ASSERT_TRUE(waitUntil([&] { return !reports.isEmpty() && fake.pendingTimers() == 1; }));
    expectTimeLimit(fake, task, 5400s, u"Command timed out after 5400s."_s);
    own.shutdown(5s);
}

TEST_F(LocalModelManagerTest, AFailedPullTellsTheLastThreeLines)
{
    haveProgram();
    tell(u"fails"_s, "one\n\x1b[31mtwo\x1b[0m\nthree\nError: no such model\n");
    EXPECT_EQ(failureOf(manager.pull(u"nothing"_s, recording())),
              u"The nothing model download failed. two\nthree\nError: no such model"_s);
    tell(u"fails"_s, " \n");
    EXPECT_EQ(failureOf(manager.pull(u"nothing"_s, recording())), u"The nothing model download failed."_s);
}

TEST_F(LocalModelManagerTest, WithoutAProgramAPullFailsInTheSystemsWords)
{
    EXPECT_EQ(failureOf(manager.pull(u"qwen2.5"_s, recording())), u"No such file or directory"_s);
}

TEST_F(LocalModelManagerTest, DeletingTakesTheModelAway)
{
    haveProgram();
    tell(u"models"_s, "qwen3:4b\nqwen2.5:latest\n");
    runTask(scheduler, manager.remove(u"qwen2.5"_s));
    EXPECT_EQ(known(u"models"_s), "qwen3:4b\n");
    EXPECT_EQ(known(u"calls"_s), "rm qwen2.5 127.0.0.1:" + QByteArray::number(port) + '\n');
    EXPECT_EQ(failureOf(manager.remove(u"qwen2.5"_s)), u"Ollama could not delete the qwen2.5 model."_s);
    EXPECT_THAT(calls(), Contains(QByteArray("rm qwen2.5")));
}

TEST_F(LocalModelManagerTest, AModelIsTakenOutOfMemory)
{
    haveProgram();
    tell(u"models"_s, "qwen2.5:latest\n");
    runTask(scheduler, manager.unload(u"qwen2.5"_s));
    EXPECT_EQ(known(u"calls"_s), "stop qwen2.5 127.0.0.1:" + QByteArray::number(port) + '\n');
    EXPECT_EQ(failureOf(manager.unload(u"qwen3:4b"_s)),
              u"Ollama could not free the memory of the qwen3:4b model."_s);
}

TEST_F(LocalModelManagerTest, TooLittleSpaceEndsAnInstallationBeforeAnyDownload)
{
    offerRuntime();
    freeSpace = 1'400'000'000;
    EXPECT_THAT(failureOf(manager.ensureRunning(recording())).toStdString(),
                HasSubstr("Not enough free disk space to install Ollama."));
    EXPECT_TRUE(downloads.requests().isEmpty());
    EXPECT_EQ(labels(), QStringList(u"Downloading Ollama (about 1 GB)…"_s));
}

TEST_F(LocalModelManagerTest, UnknownSpaceLetsAnInstallationThrough)
{
    offerRuntime();
    freeSpace = -1;
    runTask(scheduler, manager.ensureRunning(recording()));
    EXPECT_TRUE(runTask(scheduler, manager.isServerRunning()));
}

TEST_F(LocalModelManagerTest, FromNothingToARunningServer)
{
    offerRuntime();
    EXPECT_FALSE(manager.isBinaryInstalled());
    runTask(scheduler, manager.ensureRunning(recording()));
    EXPECT_TRUE(runTask(scheduler, manager.isServerRunning()));
    EXPECT_TRUE(manager.isBinaryInstalled());
    QStringList order = labels();
    EXPECT_EQ(order.takeFirst(), u"Downloading Ollama (about 1 GB)…"_s);
    EXPECT_EQ(order.takeLast(), u"Starting Ollama…"_s);
    EXPECT_EQ(order.takeLast(), u"Installing Ollama…"_s);
    for (const QString &label : order)
        EXPECT_TRUE(label.startsWith(u"Downloading Ollama… "_s)) << label.toStdString();

    // The program lies in the second place, as a link to where its libraries are.
    const QFileInfo place(data() + u"/ollama"_s);
    EXPECT_TRUE(place.isSymLink());
    EXPECT_TRUE(
        QFileInfo::exists(QFileInfo(place.canonicalFilePath()).path() + u"/../lib/ollama/libggml.so"_s));
    EXPECT_EQ(QDir(data()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
              QStringList({u"ollama"_s, u"ollama-runtime"_s}));
}

} // namespace
} // namespace morvane
