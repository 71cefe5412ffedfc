#pragma once

#include "app/AppModel.h"
#include "async/Scheduler.h"
#include "async/SystemClock.h"
#include "net/HttpClient.h"
#include "providers/HttpAIService.h"
#include "store/ConversationStore.h"
#include "store/SettingsStore.h"
#include "support/FakeBrowser.h"
#include "support/FakeSurroundings.h"
#include "support/QuietReminders.h"
#include "support/RunTask.h"
#include "support/TemporaryHome.h"
#include "tools/BuiltinTools.h"
#include "tools/screen/ScreenTools.h"

#include <QElapsedTimer>
#include <QTimer>
#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <string>

namespace morvane {

/// The longest time that the main thread was not given back to its event loop, as long as the object lives:
/// by the clock, and in processor time, which other programs do not lengthen.
class StallWatch {
public:
    StallWatch()
    {
        QObject::connect(&m_ticks, &QTimer::timeout, &m_ticks, [this] {
            m_longest = std::max(m_longest, double(m_sinceLastTick.nsecsElapsed()) / 1e6);
            m_longestWork = std::max(m_longestWork, processorMillisecondsNow() - m_workAtLastTick);
            beginTick();
        });
        beginTick();
        m_ticks.start(0);
    }
    double milliseconds() const { return m_longest; }
    double processorMilliseconds() const { return m_longestWork; }

private:
    static double processorMillisecondsNow()
    {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
    }
    void beginTick()
    {
        m_workAtLastTick = processorMillisecondsNow();
        m_sinceLastTick.start();
    }

    QElapsedTimer m_sinceLastTick;
    QTimer m_ticks;
    double m_longest = 0;
    double m_longestWork = 0;
    double m_workAtLastTick = 0;
};

/// The agent as the program builds it, without its windows.
struct BenchAgent : FakeSurroundings {
    explicit BenchAgent(const std::string &baseURL)
    {
        settings.setProviderID(ProviderID::custom);
        settings.setModel(QStringLiteral("scripted"));
        settings.setCustomBaseURL(QString::fromStdString(baseURL + "/v1"));
        settings.setMaxSteps(200);
    }
    ~BenchAgent() { scheduler.shutdown(std::chrono::seconds(2)); }

    /// Sends a message and waits for the end of the run; a failure ends the benchmark.
    void ask(const QString &text, const QList<ChatAttachment> &files = {})
    {
        if (!waitUntil([this] { return model.isReady(); }) || !model.send(text, files) ||
            !waitUntil([this] { return !model.isBusy(); }, std::chrono::minutes(2)))
            std::exit(1);
    }

    TemporaryHome home;
    SystemClock clock;
    Scheduler scheduler{clock};
    HttpClient http;
    SettingsStore settings{home.path() + QStringLiteral("/Morvane.conf"), keychain};
    ConversationStore conversations{home.path() + QStringLiteral("/Conversations")};
    HttpAIService provider{http};
    QuietReminders reminders{scheduler, home.path() + QStringLiteral("/Morvane.conf")};
    ScreenTools screen{desktop.desktop()};
    FakeBrowser browser;
    BuiltinTools tools{http, reminders.store, screen, browser};
    AppServices services = servicesAround({
        .scheduler = scheduler,
        .settings = settings,
        .conversations = conversations,
        .executeTool = [this](ToolPermit permit) { return tools.execute(std::move(permit)); },
        .machine = QStringLiteral("A benchmark."),
        .service = &provider,
    });
    AppModel model{services};
};

} // namespace morvane
