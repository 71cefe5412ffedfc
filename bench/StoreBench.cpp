// What the stores cost the start-up and the main thread: the list of 1,000 conversations of 100 kB, a save of
// a conversation of 10 MB, a change of a setting. Prints JSON.

#include "async/Scheduler.h"
#include "async/SystemClock.h"
#include "base/Uuid.h"
#include "platform/NoKeychain.h"
#include "store/ConversationFiles.h"
#include "store/ConversationStore.h"
#include "store/SettingsStore.h"
#include "support/RunTask.h"
#include "support/SampleConversation.h"
#include "support/TemporaryHome.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/resource.h>
#include <vector>

using namespace Qt::StringLiterals;

using namespace morvane;

namespace {

double milliseconds(const QElapsedTimer &timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

double processSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

/// Notes the longest time between two turns of the event loop, to about a millisecond; watching more closely
/// would take a processor from what is measured.
class StallWatch {
public:
    StallWatch()
    {
        m_ticks.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_ticks, &QTimer::timeout, &m_ticks, [this] {
            m_longest = std::max(m_longest, milliseconds(m_sinceTick));
            m_sinceTick.start();
        });
        m_sinceTick.start();
        m_ticks.start(std::chrono::milliseconds(1));
    }
    double longest() const { return m_longest; }

private:
    QTimer m_ticks;
    QElapsedTimer m_sinceTick;
    double m_longest = 0;
};

/// Writes every file of the folder to the disk and out of the system's memory.
void dropFromMemory(const QString &folder)
{
    for (const QFileInfo &file : QDir(folder).entryInfoList(QDir::Files)) {
        QFile open(file.filePath());
        if (open.open(QIODevice::ReadOnly)) {
            ::fsync(open.handle());
            ::posix_fadvise(open.handle(), 0, 0, POSIX_FADV_DONTNEED);
        }
    }
}

struct Listing {
    double wall = 0;
    double cpu = 0;
    double longestStall = 0;
};

Listing list(Scheduler &scheduler, ConversationStore &store, qsizetype expected)
{
    const StallWatch watch;
    const double cpuBefore = processSeconds();
    QElapsedTimer timer;
    timer.start();
    const auto conversations = runTask(scheduler, store.list());
    const Listing listing{milliseconds(timer), (processSeconds() - cpuBefore) * 1e3, watch.longest()};
    if (conversations.size() != expected)
        std::exit(1);
    return listing;
}

void print(const char *name, const Listing &listing)
{
    std::printf("  \"%s\": {\"ms\": %.1f, \"cpu_ms\": %.1f, \"longest_main_thread_stall_ms\": %.2f},\n", name,
                listing.wall, listing.cpu, listing.longestStall);
}

void measureLists(Scheduler &scheduler, const QString &folder)
{
    constexpr int conversationCount = 1000;
    ConversationFile sample = sampleConversation(50, 1750, 2000);
    ConversationStore(folder).remove(newUuid()); // creates the folder
    qsizetype bytes = 0;
    for (int i = 0; i < conversationCount; ++i) {
        sample.id = newUuid();
        sample.updatedAt += 1;
        QFile file(folder + u'/' + uuidText(sample.id) + u".json"_s);
        if (!file.open(QIODevice::WriteOnly))
            std::exit(1);
        bytes += file.write(encodeConversation(sample));
    }
    dropFromMemory(folder);
    ConversationStore onDisk(folder);
    const Listing fromDisk = list(scheduler, onDisk, conversationCount);
    ConversationStore inMemory(folder);
    const Listing cold = list(scheduler, inMemory, conversationCount);
    const Listing warm = list(scheduler, inMemory, conversationCount);
    std::printf("  \"conversations\": %d, \"bytes_each\": %lld,\n", conversationCount,
                static_cast<long long>(bytes / conversationCount));
    print("list_from_disk", fromDisk);
    print("list_cold", cold);
    print("list_warm", warm);
}

void measureSave(Scheduler &scheduler, const QString &folder)
{
    const ConversationFile sample = sampleConversation(100, 50'000, 4'000'000);
    ConversationStore store(folder);
    runTask(scheduler, store.list());
    const StallWatch watch;
    QElapsedTimer timer;
    timer.start();
    store.save(sample.id, sample.title, sample.messages);
    const double held = milliseconds(timer);
    const auto listed = runTask(scheduler, store.list());
    const double durable = milliseconds(timer);
    if (listed.size() != 1)
        std::exit(1);
    timer.start();
    if (!runTask(scheduler, store.load(sample.id)))
        std::exit(1);
    const double loaded = milliseconds(timer);
    std::printf("  \"save\": {\"bytes\": %lld, \"main_thread_held_ms\": %.3f, \"on_disk_ms\": %.1f, "
                "\"load_ms\": %.1f, \"longest_main_thread_stall_ms\": %.2f},\n",
                static_cast<long long>(QFileInfo(folder + u'/' + uuidText(sample.id) + ".json").size()), held,
                durable, loaded, watch.longest());
}

void measureSettings(const QString &path)
{
    NoKeychain keychain;
    QElapsedTimer timer;
    timer.start();
    SettingsStore settings(path, keychain);
    const double opened = milliseconds(timer);
    std::vector<double> times;
    for (int i = 0; i < 2000; ++i) {
        timer.start();
        settings.setTemperature(static_cast<double>(i % 20 + 1) / 10);
        times.push_back(milliseconds(timer));
    }
    std::sort(times.begin(), times.end());
    std::printf("  \"settings\": {\"open_ms\": %.2f, \"change_ms_p50\": %.3f, \"change_ms_p99\": %.3f, "
                "\"change_ms_max\": %.3f}\n",
                opened, times[times.size() / 2], times[times.size() * 99 / 100], times.back());
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const TemporaryHome home;
    SystemClock clock;
    Scheduler scheduler(clock);
    std::printf("{\n  \"benchmark\": \"stores\",\n");
    measureLists(scheduler, home.path(u"List"_s));
    measureSave(scheduler, home.path(u"Save"_s));
    measureSettings(home.path(u"Morvane/Morvane.conf"_s));
    std::printf("}\n");
    return 0;
}
