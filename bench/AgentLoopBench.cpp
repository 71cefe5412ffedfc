// What the agent itself costs, without the window: a 20-turn loop of tool calls and one streamed answer of
// 100,000 one-word tokens, over real sockets against the scripted model. Prints JSON.

#include "app/AppModel.h"
#include "app/BrowserWindowPort.h"
#include "app/NotificationPort.h"
#include "app/ToolServerPort.h"
#include "app/UpdatePort.h"
#include "async/Scheduler.h"
#include "async/SystemClock.h"
#include "localmodel/OllamaRuntime.h"
#include "net/HttpClient.h"
#include "platform/NoKeychain.h"
#include "providers/HttpAIService.h"
#include "store/ConversationStore.h"
#include "store/SettingsStore.h"
#include "support/FakeAnnouncer.h"
#include "support/FakeAttachments.h"
#include "support/RunTask.h"
#include "support/ScriptedModel.h"
#include "support/TemporaryHome.h"
#include "tools/BuiltinTools.h"

#include <QCoreApplication>
#include <QElapsedTimer>
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

/// The agent as the program builds it, without its windows.
struct Agent {
    explicit Agent(const std::string &baseURL)
    {
        settings.setProviderID(ProviderID::custom);
        settings.setModel(QStringLiteral("scripted"));
        settings.setCustomBaseURL(QString::fromStdString(baseURL + "/v1"));
        settings.setMaxSteps(200);
    }
    ~Agent() { scheduler.shutdown(std::chrono::seconds(2)); }

    void ask(const QString &text)
    {
        if (!model.send(text, {}) || !waitUntil([this] { return !model.isBusy(); }, std::chrono::minutes(2)))
            std::exit(1);
    }

    TemporaryHome home;
    SystemClock clock;
    Scheduler scheduler{clock};
    HttpClient http;
    NoKeychain keychain;
    SettingsStore settings{home.path() + QStringLiteral("/Morvane.conf"), keychain};
    ConversationStore conversations{home.path() + QStringLiteral("/Conversations")};
    HttpAIService service{http};
    BuiltinTools tools{http};
    FakeAnnouncer announcer;
    NoNotifications notifications;
    NoToolServers toolServers;
    NoBrowserWindow browserWindow;
    NoUpdates updates;
    FakeAttachments attachments;
    OllamaRuntime localModel{http, QStringLiteral("http://127.0.0.1:1"), home.path()};
    AppServices services{scheduler,
                         settings,
                         conversations,
                         service,
                         announcer,
                         notifications,
                         toolServers,
                         browserWindow,
                         updates,
                         localModel,
                         attachments,
                         [this](ToolPermit permit) { return tools.execute(std::move(permit)); },
                         [] { return QStringLiteral("A benchmark."); }};
    AppModel model{services};
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    ScriptedModel server(script());
    Agent agent(server.baseURL());

    agent.ask(QStringLiteral("loop"));
    std::vector<double> turnTimes;
    for (const ScriptedRequest &request : server.requests()) {
        if (request.turn > 0 && request.turn <= loopTurns)
            turnTimes.push_back(double(request.sinceLastAnswer.count()) / 1000);
    }
    std::sort(turnTimes.begin(), turnTimes.end());

    double longestTurnOfTheLoop = 0;
    QElapsedTimer sinceLastTick;
    QTimer ticks;
    QObject::connect(&ticks, &QTimer::timeout, &ticks, [&] {
        longestTurnOfTheLoop = std::max(longestTurnOfTheLoop, double(sinceLastTick.nsecsElapsed()) / 1e6);
        sinceLastTick.start();
    });
    const double cpuBefore = processSeconds();
    const double mainBefore = mainThreadSeconds();
    QElapsedTimer wall;
    wall.start();
    sinceLastTick.start();
    ticks.start(0);
    agent.ask(QStringLiteral("stream"));
    const double seconds = double(wall.nsecsElapsed()) / 1e9;
    ticks.stop();

    std::printf("{\"tool_turn_ms\": {\"p50\": %.3f, \"max\": %.3f, \"turns\": %zu},\n"
                " \"stream\": {\"tokens\": %zu, \"tokens_per_second\": %.0f, \"process_cpu_s\": %.3f, "
                "\"main_thread_cpu_s\": %.3f, \"longest_stall_ms\": %.2f}}\n",
                turnTimes[turnTimes.size() / 2], turnTimes.back(), turnTimes.size(), burstTokens,
                double(burstTokens) / seconds, processSeconds() - cpuBefore, mainThreadSeconds() - mainBefore,
                longestTurnOfTheLoop);
    return 0;
}
