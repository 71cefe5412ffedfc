// How fast a large file comes from loopback to the disk, and what that costs the main thread and the memory,
// beside the curl command in the same run. Prints one JSON object. Optional argument: the size in megabytes.

#include "ProcMegabytes.h"

#include "async/SystemClock.h"
#include "net/FileDownload.h"
#include "net/HttpClient.h"
#include "net/PartialFile.h"
#include "support/RawHttpServer.h"
#include "support/RunTask.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
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

constexpr int repetitions = 3;

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

void serve(RawHttpConnection &connection, qint64 bytes)
{
    const QByteArray piece(1024 * 1024, 'x');
    while (connection.readRequest()) {
        connection.send(rawHttpHead(200, {{"Content-Length", QByteArray::number(bytes)}, {"ETag", "\"1\""}}));
        for (qint64 left = bytes; left > 0; left -= piece.size())
            if (!connection.send(piece))
                return;
    }
}

int run(int count, char **arguments)
{
    QCoreApplication application(count, arguments);
    const qint64 megabytes = count > 1 ? std::atoll(arguments[1]) : 1024;
    const qint64 bytes = megabytes * 1024 * 1024;
    RawHttpServer server([bytes](RawHttpConnection &connection) { serve(connection, bytes); });
    const QTemporaryDir folder;
    SystemClock clock;
    Scheduler scheduler(clock);
    HttpClient http;

    double longestTurn = 0;
    const double memoryBefore = procMegabytes(u"self"_s, "status", "VmRSS");
    std::vector<double> ours;
    std::vector<double> curls;
    for (int repetition = 0; repetition < repetitions; ++repetition) {
        const QString path = folder.filePath(u"ours"_s);
        auto begin = Clock::now();
        auto task = scheduler.spawn(
            downloadFile(&http, {server.url(), path, bytes, [](qint64, std::optional<qint64>) {}}));
        while (!task.done()) {
            const double before = threadMilliseconds();
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            longestTurn = std::max(longestTurn, threadMilliseconds() - before);
        }
        task.result();
        ours.push_back(secondsSince(begin));
        if (QFile(path).size() != bytes)
            return EXIT_FAILURE;
        PartialFile::remove(path);

        const QString other = folder.filePath(u"curl"_s);
        begin = Clock::now();
        if (QProcess::execute(u"curl"_s, {u"-s"_s, u"-o"_s, other, server.url().toString()}) != 0)
            return EXIT_FAILURE;
        curls.push_back(secondsSince(begin));
        QFile::remove(other);
    }
    const double own = *std::ranges::min_element(ours);
    const double curl = *std::ranges::min_element(curls);
    std::printf(
        "{\"megabytes\": %lld, \"megabytesPerSecond\": %.0f, \"curlMegabytesPerSecond\": %.0f, "
        "\"share\": %.2f, \"longestMainThreadTurnMilliseconds\": %.2f, \"moreMemoryMegabytes\": %.1f}\n",
        static_cast<long long>(megabytes), static_cast<double>(megabytes) / own,
        static_cast<double>(megabytes) / curl, curl / own, longestTurn,
        procMegabytes(u"self"_s, "status", "VmHWM") - memoryBefore);
    return EXIT_SUCCESS;
}

} // namespace
} // namespace morvane

int main(int count, char **arguments)
{
    return morvane::run(count, arguments);
}
