// What the agent itself costs, without the window: a 20-turn loop of tool calls and one streamed answer of
// 100,000 one-word tokens, over real sockets against the scripted model. Prints JSON.

#include "BenchAgent.h"

#include "support/ScriptedModel.h"

#include <QCoreApplication>
#include <algorithm>
#include <cstdio>
#include <sys/resource.h>
#include <vector>

using namespace morvane;

namespace {

constexpr int loopTurns = 20;
constexpr std::size_t burstTokens = 100000;

double processSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

double mainThreadSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) + double(time.tv_nsec) / 1e9;
}

ModelScript script()
{
    ModelScript script;
    for (int turn = 0; turn < loopTurns; ++turn) {
        ScriptedCall call;
        call.name = "calculate";
        call.argumentFragments = {R"({"expression":")" + std::to_string(turn) + R"(+1"})"};
        call.id = "call_" + std::to_string(turn);
        script.turns.push_back(ScriptedTurn::calling({call}));
    }
    script.turns.push_back(ScriptedTurn::saying({"done"}));
    ScriptedTurn burst;
    burst.steps = {step::Burst{burstTokens}};
    script.turns.push_back(burst);
    return script;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    ScriptedModel server(script());
    BenchAgent agent(server.baseURL());

    agent.ask(QStringLiteral("loop"));
    std::vector<double> turnTimes;
    for (const ScriptedRequest &request : server.requests()) {
        if (request.turn > 0 && request.turn <= loopTurns)
            turnTimes.push_back(double(request.sinceLastAnswer.count()) / 1000);
    }
    std::sort(turnTimes.begin(), turnTimes.end());

    const double cpuBefore = processSeconds();
    const double mainBefore = mainThreadSeconds();
    QElapsedTimer wall;
    wall.start();
    const StallWatch stalls;
    agent.ask(QStringLiteral("stream"));
    const double seconds = double(wall.nsecsElapsed()) / 1e9;

    std::printf("{\"tool_turn_ms\": {\"p50\": %.3f, \"max\": %.3f, \"turns\": %zu},\n"
                " \"stream\": {\"tokens\": %zu, \"tokens_per_second\": %.0f, \"process_cpu_s\": %.3f, "
                "\"main_thread_cpu_s\": %.3f, \"longest_stall_ms\": %.2f}}\n",
                turnTimes[turnTimes.size() / 2], turnTimes.back(), turnTimes.size(), burstTokens,
                double(burstTokens) / seconds, processSeconds() - cpuBefore, mainThreadSeconds() - mainBefore,
                stalls.milliseconds());
    return 0;
}
