// How long the runtime of local models takes from loopback until it is in its place, what of that is the
// unpacking, and what it costs the main thread and the memory; the archive is made with the window of the
// real one, 128 MiB. Beside it curl and tar on the same archive in the same run. Prints one JSON object.
// Needs tar, zstd and curl. Optional argument: the size of what is in the archive, in megabytes.

#include "ProcMegabytes.h"
#include "RuntimeArchive.h"

#include "async/SystemClock.h"
#include "localmodel/RuntimeInstaller.h"
#include "net/HttpClient.h"
#include "support/RunTask.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using Clock = std::chrono::steady_clock;

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

int run(int count, char **arguments)
{
    QCoreApplication application(count, arguments);
    const qint64 megabytes = count > 1 ? std::atoll(arguments[1]) : 2048;
    const QTemporaryDir folder;
    const QString archive = makeRuntimeArchive(folder.path(), "#!/bin/sh\n", megabytes);
    RawHttpServer server([&archive](RawHttpConnection &connection) { serveFile(connection, archive); });
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
