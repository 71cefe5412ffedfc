// How fast lines of a streamed response reach a coroutine on the main thread, and what that costs it.
// Prints one JSON object. Optional argument: the number of lines.

#include "async/SystemClock.h"
#include "net/HttpClient.h"
#include "support/RawHttpServer.h"
#include "support/RunTask.h"

#include <QCoreApplication>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <vector>

namespace morvane {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int repetitions = 7;

struct Measurement {
    double wallMilliseconds = 0;
    double mainThreadMilliseconds = 0;
    double longestStallMilliseconds = 0;
};

double milliseconds(Clock::duration duration)
{
    return std::chrono::duration<double, std::milli>(duration).count();
}

double threadMilliseconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

Task<qint64> readAll(Task<HttpResponse> opening)
{
    HttpResponse response = co_await std::move(opening);
    LineReader reader = response.lines();
    qint64 lines = 0;
    while (co_await reader.next())
        ++lines;
    co_return lines;
}

Measurement measure(Scheduler &scheduler, HttpClient &client, const QUrl &url, qint64 expectedLines)
{
    HttpRequest request;
    request.url = url;
    // What a user would feel: how late a timer of one millisecond comes.
    Clock::time_point lastTurn = Clock::now();
    Clock::duration longestGap{};
    QTimer heartbeat;
    heartbeat.setTimerType(Qt::PreciseTimer);
    QObject::connect(&heartbeat, &QTimer::timeout, [&] {
        const auto now = Clock::now();
        longestGap = std::max(longestGap, now - lastTurn);
        lastTurn = now;
    });
    heartbeat.start(1);
    const auto begin = Clock::now();
    const double threadBegin = threadMilliseconds();
    auto handle = scheduler.spawn(readAll(client.open(request)));
    while (!handle.done())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    Measurement result;
    result.mainThreadMilliseconds = threadMilliseconds() - threadBegin;
    result.wallMilliseconds = milliseconds(Clock::now() - begin);
    result.longestStallMilliseconds = std::max(0.0, milliseconds(longestGap) - 1);
    if (handle.result() != expectedLines) {
        std::fprintf(stderr, "lines are missing\n");
        std::exit(1);
    }
    return result;
}

template <class Field> double median(std::vector<Measurement> &results, Field field)
{
    std::sort(results.begin(), results.end(),
              [field](const auto &a, const auto &b) { return a.*field < b.*field; });
    return results[results.size() / 2].*field;
}

void print(const char *name, qint64 lines, std::vector<Measurement> results, const char *separator)
{
    const double wall = median(results, &Measurement::wallMilliseconds);
    const double mainThread = median(results, &Measurement::mainThreadMilliseconds);
    const double worstStall =
        std::max_element(results.begin(), results.end(), [](const auto &a, const auto &b) {
            return a.longestStallMilliseconds < b.longestStallMilliseconds;
        })->longestStallMilliseconds;
    std::printf("  \"%s\": {\"lines\": %lld, \"linesPerSecond\": %.0f, \"wallMilliseconds\": %.1f, "
                "\"mainThreadCpuMilliseconds\": %.1f, \"longestMainThreadStallMilliseconds\": %.2f}%s\n",
                name, static_cast<long long>(lines), static_cast<double>(lines) / wall * 1e3, wall,
                mainThread, worstStall, separator);
}

int run(qint64 lines)
{
    const QByteArray line =
        "data: {\"id\":\"chat-0123456789\",\"object\":\"chat.completion.chunk\",\"model\":"
        "\"a-model-name\",\"choices\":[{\"index\":0,\"delta\":{\"content\":\" word\"},"
        "\"logprobs\":null,\"finish_reason\":null}],\"usage\":null}\n\n";
    const QByteArray body = line.repeated(lines);
    RawHttpServer server([&](RawHttpConnection &connection) {
        while (const auto request = connection.readRequest()) {
            connection.send(rawHttpHead(200, {{"Content-Length", QByteArray::number(body.size())}}));
            connection.sendInPieces(body, request->target == "/burst" ? 64 * 1024 : line.size());
        }
    });
    SystemClock clock;
    Scheduler scheduler(clock);
    HttpClient client;
    std::printf("{\n  \"benchmark\": \"lines of a streamed response\",\n");
    for (const char *kind : {"burst", "lineForLine"}) {
        const QUrl url = server.url(u'/' + QLatin1String(kind));
        std::vector<Measurement> results;
        for (int i = 0; i < repetitions; ++i)
            results.push_back(measure(scheduler, client, url, lines));
        print(kind, lines, results, std::string_view(kind) == "burst" ? "," : "");
    }
    std::printf("}\n");
    return 0;
}

} // namespace
} // namespace morvane

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    return morvane::run(argc > 1 ? std::atoll(argv[1]) : 100000);
}
