// What the agent itself costs, without the window: loops of 20 tool calls that read a file, wait for an
// approval or run a command, and one streamed answer of 100,000 one-word tokens, over real sockets against
// the scripted model. Prints JSON.

#include "BenchAgent.h"

#include "support/ScriptedModel.h"

#include <QCoreApplication>
#include <algorithm>
#include <cstdio>
#include <sys/resource.h>
#include <vector>

using namespace Qt::StringLiterals;

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

/// What the turns of a loop call. Their arguments differ from turn to turn, since the third equal call ends a
/// run.
struct Loop {
    const char *name;
    const char *tool;
    const char *argumentsUpToTurn; ///< JSON, up to where the number of the turn and a closing quote follow.
};

constexpr Loop loops[] = {
    {"read_file", "read_file", R"({"path":"/etc/debian_version","turn":")"},
    // Waits for the user's yes, and then does next to nothing.
    {"approved", "edit_file", R"({"old_string":"a","new_string":"b","file_path":"/nowhere/)"},
    {"shell", "run_shell_command", R"({"command":"echo )"},
};

ModelScript script()
{
    ModelScript script;
    for (const Loop &loop : loops) {
        for (int turn = 0; turn < loopTurns; ++turn) {
            ScriptedCall call;
            call.name = loop.tool;
            call.argumentFragments = {loop.argumentsUpToTurn + std::to_string(turn) + R"("})"};
            call.id = "call_" + std::to_string(turn);
            script.turns.push_back(ScriptedTurn::calling({call}));
        }
        script.turns.push_back(ScriptedTurn::saying({"done"}));
    }
    ScriptedTurn burst;
    burst.steps = {step::Burst{burstTokens}};
    script.turns.push_back(burst);
    return script;
}

/// Says yes to everything that the agent asks.
void agree(AppModel &model)
{
    QObject::connect(&model.gate(), &ApprovalGate::pendingToolCallChanged, &model, [&model] {
        if (model.gate().pendingToolCall())
            QTimer::singleShot(0, &model, [&model] { model.gate().resolvePermission(true, false); });
    });
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    ScriptedModel server(script());
    BenchAgent agent(server.baseURL());

    agree(agent.model);
    std::printf("{\"turns\": %d,", loopTurns);
    int first = 0;
    for (const Loop &loop : loops) {
        agent.ask(QString::fromLatin1(loop.name));
        std::vector<double> times;
        for (const ScriptedRequest &request : server.requests())
            if (request.turn > first && request.turn <= first + loopTurns)
                times.push_back(double(request.sinceLastAnswer.count()) / 1000);
        first += loopTurns + 1;
        std::sort(times.begin(), times.end());
        std::printf("\n \"%s_turn_ms\": {\"p50\": %.3f, \"max\": %.3f},", loop.name, times[times.size() / 2],
                    times.back());
    }

    const double cpuBefore = processSeconds();
    const double mainBefore = mainThreadSeconds();
    QElapsedTimer wall;
    wall.start();
    const StallWatch stalls;
    agent.ask(u"stream"_s);
    const double seconds = double(wall.nsecsElapsed()) / 1e9;

    std::printf("\n \"stream\": {\"tokens\": %zu, \"tokens_per_second\": %.0f, \"process_cpu_s\": %.3f, "
                "\"main_thread_cpu_s\": %.3f, \"longest_stall_ms\": %.2f}}\n",
                burstTokens, double(burstTokens) / seconds, processSeconds() - cpuBefore,
                mainThreadSeconds() - mainBefore, stalls.milliseconds());
    return 0;
}
