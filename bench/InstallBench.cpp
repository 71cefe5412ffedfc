// How long the runtime of local models takes from loopback until it is in its place, what of that is the
// unpacking, and what it costs the main thread and the memory; the archive is made with the window of the
// real one, 128 MiB. Beside it curl and tar on the same archive in the same run. Prints one JSON object.
// Needs tar, zstd and curl. Optional argument: the size of what is in the archive, in megabytes.

#include "ProcMegabytes.h"

#include "async/SystemClock.h"
#include "localmodel/RuntimeInstaller.h"
#include "net/HttpClient.h"
#include "support/RawHttpServer.h"
#include "support/RunTask.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <vector>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using Clock = std::chrono::steady_clock;

constexpr qint64 megabyte = 1024 * 1024;

double secondsSince(Clock::time_point begin)
{
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

double threadMilliseconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

bool execute(const QString &program, const QStringList &arguments)
{
    return QProcess::execute(program, arguments) == 0;
}

/// Bytes that shrink to some two thirds, as programs do, and where the beginning repeats every 64 megabytes.
void writeLibrary(const QString &path, qint64 megabytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        std::exit(EXIT_FAILURE);
    std::vector<quint64> words(megabyte / sizeof(quint64));
    QRandomGenerator random(11);
    for (qint64 number = 0; number < megabytes; ++number) {
        if (number % 64 == 0)
            random.seed(11);
        random.generate(words.begin(), words.end());
        for (quint64 &word : words)
            word &= 0x3f3f'3f3f'3f3f'3f3f;
        file.write(reinterpret_cast<const char *>(words.data()), megabyte);
        if (number % 64 == 7)
            random.seed(static_cast<quint32>(number));
    }
}

/// Makes the archive of a runtime in `folder` and gives its path.
QString makeArchive(const QString &folder, qint64 megabytes)
{
    const QString tree = folder + u"/tree"_s;
    QDir().mkpath(tree + u"/bin"_s);
    QDir().mkpath(tree + u"/lib/ollama"_s);
    QFile program(tree + u"/bin/ollama"_s);
    if (!program.open(QIODevice::WriteOnly) || program.write("#!/bin/sh\n") < 0 ||
        !program.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner))
        std::exit(EXIT_FAILURE);
    writeLibrary(tree + u"/lib/ollama/library.so"_s, megabytes);
    QString archive = folder + u"/archive.tar.zst"_s;
    if (!execute(u"tar"_s, {u"-C"_s, tree, u"-I"_s, u"zstd -q -1 --long=27"_s, u"-cf"_s, archive, u"."_s}))
        std::exit(EXIT_FAILURE);
    execute(u"rm"_s, {u"-rf"_s, tree});
    return archive;
}

void serve(RawHttpConnection &connection, const QString &path)
{
    while (connection.readRequest()) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return;
        connection.send(
            rawHttpHead(200, {{"Content-Length", QByteArray::number(file.size())}, {"ETag", "\"1\""}}));
        while (!file.atEnd())
            if (!connection.send(file.read(megabyte)))
                return;
    }
}

int run(int count, char **arguments)
{
    QCoreApplication application(count, arguments);
    const qint64 megabytes = count > 1 ? std::atoll(arguments[1]) : 2048;
    const QTemporaryDir folder;
    const QString archive = makeArchive(folder.path(), megabytes);
    RawHttpServer server([&archive](RawHttpConnection &connection) { serve(connection, archive); });
    SystemClock clock;
    Scheduler scheduler(clock);
    HttpClient http;

    double longestTurn = 0;
    Clock::time_point unpacking;
    const double memoryBefore = procMegabytes(u"self"_s, "status", "VmRSS");
    auto begin = Clock::now();
    RuntimeInstaller installer(http, u"http://127.0.0.1:%1"_s.arg(server.port()), folder.filePath(u"data"_s));
    auto task = scheduler.spawn(installer.install([&](const QString &, std::optional<double> fraction) {
        if (!fraction)
            unpacking = Clock::now();
    }));
    while (!task.done()) {
        const double before = threadMilliseconds();
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        longestTurn = std::max(longestTurn, threadMilliseconds() - before);
    }
    if (!QFile::exists(task.result()))
        return EXIT_FAILURE;
    const double whole = secondsSince(begin);
    const double unpacked = secondsSince(unpacking);
    const double memory = procMegabytes(u"self"_s, "status", "VmHWM") - memoryBefore;

    const QString other = folder.filePath(u"curl.tar.zst"_s);
    QDir().mkpath(folder.filePath(u"other"_s));
    begin = Clock::now();
    if (!execute(u"curl"_s, {u"-s"_s, u"-o"_s, other, server.url().toString()}) ||
        !execute(u"tar"_s, {u"-I"_s, u"zstd -q -d --long=27"_s, u"-xf"_s, other, u"-C"_s,
                            folder.filePath(u"other"_s)}) ||
        !execute(u"sync"_s, {u"-f"_s, folder.path()}))
        return EXIT_FAILURE;
    const double others = secondsSince(begin);
    std::printf("{\"unpackedMegabytes\": %lld, \"archiveMegabytes\": %lld, \"seconds\": %.1f, "
                "\"secondsOfUnpacking\": %.1f, \"curlAndTarSeconds\": %.1f, "
                "\"longestMainThreadTurnMilliseconds\": %.2f, \"moreMemoryMegabytes\": %.1f}\n",
                static_cast<long long>(megabytes), static_cast<long long>(QFile(archive).size() / megabyte),
                whole, unpacked, others, longestTurn, memory);
    return EXIT_SUCCESS;
}

} // namespace
} // namespace morvane

int main(int count, char **arguments)
{
    return morvane::run(count, arguments);
}
