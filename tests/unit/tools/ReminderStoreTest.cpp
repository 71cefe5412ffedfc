#include "tools/reminders/ReminderStore.h"

#include "base/ReferenceDate.h"
#include "base/Uuid.h"
#include "support/FakeAnnouncer.h"
#include "support/FakeClock.h"
#include "support/FakeNotificationCenter.h"
#include "support/FakeSoundPlayer.h"
#include "support/FileSizeLimit.h"
#include "support/RunTask.h"
#include "support/TemporaryHome.h"
#include "tools/reminders/PendingReminders.h"

#include <QLocale>
#include <QThreadPool>
#include <gmock/gmock.h>
#include <semaphore>

namespace morvane {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class ReminderStoreTest : public testing::Test {
protected:
    ~ReminderStoreTest() override { scheduler.shutdown(5s); }

    QString set(const QString &message, double minutes)
    {
        return runTask(scheduler, store.setReminder(message, minutes));
    }
    QString list() { return runTask(scheduler, store.listReminders()); }
    QString cancel(const QString &id) { return runTask(scheduler, store.cancelReminder(id)); }
    bool consume(QUuid id) { return runTask(scheduler, store.consumeIfPending(id)); }

    QList<Reminder> stored() const { return PendingReminders(path).list(); }

    /// Lets the time go on as a clock on the wall and a timer see it, a tenth of a second at a time.
    void pass(std::chrono::milliseconds time)
    {
        constexpr std::chrono::milliseconds step = 100ms;
        for (auto passed = 0ms; passed < time; passed += step) {
            now += 0.1;
            clock.advance(step);
            awaitMonitor();
        }
    }

    /// The monitor has looked and sleeps, or has ended. Each of its accesses to the disk is done before one
    /// that is asked for later.
    void awaitMonitor()
    {
        constexpr int accesses = 5;
        for (int access = 0; access < accesses; ++access) {
            settle();
            list();
        }
        settle();
        ASSERT_TRUE(waitUntil([this] { return clock.pendingTimers() > 0 || stored().isEmpty(); }));
    }

    void startMonitoring()
    {
        store.startMonitoring();
        awaitMonitor();
    }

    TemporaryHome home;
    const QString path = home.path("Morvane/Morvane.conf");
    double now = 800'000'000;
    FakeClock clock;
    Scheduler scheduler{clock};
    FakeNotificationCenter center;
    FakeSoundPlayer sounds;
    FakeAnnouncer announcer;
    ReminderStore store{scheduler, path, center, sounds, announcer, [this] { return now; }};
};

TEST_F(ReminderStoreTest, TheDelayIsToldInMinutesOrSeconds)
{
    EXPECT_EQ(set("tea", 0.5), "Reminder set: \"tea\" in 30 seconds.");
    EXPECT_EQ(set("tea", 0.001), "Reminder set: \"tea\" in 1 seconds.");
    EXPECT_EQ(set("tea", 0.999), "Reminder set: \"tea\" in 59 seconds.");
    EXPECT_EQ(set("tea", 1), "Reminder set: \"tea\" in 1 minutes.");
    EXPECT_EQ(set("tea", 1.5), "Reminder set: \"tea\" in 1.5 minutes.");
    EXPECT_EQ(set("tea", 2), "Reminder set: \"tea\" in 2 minutes.");
    EXPECT_EQ(set("tea", 0.1 + 1), "Reminder set: \"tea\" in 1.1 minutes.");
    EXPECT_EQ(set("tea", 1e7), "Reminder set: \"tea\" in 10000000 minutes.");
}

TEST_F(ReminderStoreTest, ADelayThatIsNotAboveZeroIsRefused)
{
    for (const double minutes : {0.0, -0.0, -1.0, -1e300})
        EXPECT_EQ(set("tea", minutes), "Error: minutes must be greater than zero.");
    EXPECT_TRUE(stored().isEmpty());
    EXPECT_THAT(center.added, IsEmpty());
}

TEST_F(ReminderStoreTest, ADelayBeyondAnyCalendarIsRefused)
{
    for (const double minutes : {1e12, 1e300, 1.7e308})
        EXPECT_EQ(set("tea", minutes), "Error: minutes must be less than a million years.");
    EXPECT_TRUE(stored().isEmpty());
}

TEST_F(ReminderStoreTest, AMessageOfWhiteSpaceIsRefusedBeforeTheDelayIsLookedAt)
{
    EXPECT_EQ(set(" \n\t ", 0), "Error: a reminder message is required.");
    EXPECT_EQ(set("", 1), "Error: a reminder message is required.");
    EXPECT_TRUE(stored().isEmpty());
}

TEST_F(ReminderStoreTest, AReminderIsStoredTrimmedWithItsDate)
{
    set("  time to stretch\n", 2);
    ASSERT_EQ(stored().size(), 1);
    EXPECT_EQ(stored().front().message, "time to stretch");
    EXPECT_EQ(stored().front().fireDate, now + 120);
}

TEST_F(ReminderStoreTest, TheNotificationIsAskedForWithTitleBodySoundAndDelay)
{
    set("tea", 2);
    set("now", 0.001);
    const QList<Reminder> reminders = stored();
    ASSERT_EQ(center.added.size(), 2);
    EXPECT_EQ(center.added.front(), (NotificationRequest{.identifier = uuidText(reminders.front().id),
                                                         .title = "Reminder",
                                                         .body = "tea",
                                                         .sound = "MorvaneDone",
                                                         .delay = 120s}));
    EXPECT_EQ(center.added.back().delay, 1s) << "no less than a second";
}

TEST_F(ReminderStoreTest, AFullDiskIsToldAndNothingIsScheduled)
{
    const FileSizeLimit full(0);
    EXPECT_EQ(set("tea", 2), "Error: the reminder could not be saved.");
    EXPECT_THAT(center.added, IsEmpty());
}

TEST_F(ReminderStoreTest, TheListIsSortedByDateWithShortIdsAndTimes)
{
    EXPECT_EQ(list(), "There are no pending reminders.");
    set("later", 120);
    set("sooner", 5);
    const QList<Reminder> reminders = stored();
    const auto line = [](const Reminder &reminder) {
        const QDateTime time = dateTimeFromReferenceDate(reminder.fireDate).toLocalTime();
        return uuidText(reminder.id).first(8) + ": \"" + reminder.message + "\" at " +
               QLocale::system().toString(time, u"h:mm AP");
    };
    EXPECT_EQ(list(), "Pending reminders:\n" + line(reminders.back()) + "\n" + line(reminders.front()));
}

TEST_F(ReminderStoreTest, ATimeReadsAsOnAWallClock)
{
    qputenv("TZ", "UTC");
    now = referenceDateFromDateTime(QDateTime(QDate(2025, 3, 4), QTime(14, 5), Qt::UTC));
    set("tea", 1);
    EXPECT_TRUE(list().endsWith(": \"tea\" at 2:06 PM")) << list().toStdString();
    qunsetenv("TZ");
}

TEST_F(ReminderStoreTest, WhatACancellationCouldNotRemoveIsRemovedLater)
{
    startMonitoring();
    set("tea", 5);
    {
        const FileSizeLimit full(0);
        EXPECT_EQ(cancel(uuidText(stored().front().id)), "Cancelled the reminder \"tea\".");
        EXPECT_EQ(list(), "There are no pending reminders.");
        clock.advance(2s);
        awaitMonitor();
        EXPECT_EQ(stored().size(), 1);
    }
    EXPECT_TRUE(waitUntil([this] {
        clock.advance(100ms);
        return stored().isEmpty();
    }));
}

TEST_F(ReminderStoreTest, TheShortIdOfTheListCancels)
{
    set("tea", 5);
    const QString id = list().section('\n', 1).first(8);
    EXPECT_EQ(cancel(' ' + id + '\n'), "Cancelled the reminder \"tea\".");
    EXPECT_TRUE(stored().isEmpty());
    EXPECT_THAT(center.removed, ElementsAre(center.added.front().identifier));
    EXPECT_EQ(cancel(id), "Error: no reminder with id \"" + id + "\". Use list_reminders to see the ids.");
}

TEST_F(ReminderStoreTest, AnIdInLowerCaseFindsNothing)
{
    ASSERT_TRUE(PendingReminders(path).add({.id = *uuidFromText(u"ABCDEF01-0000-4000-8000-000000000001"),
                                            .message = "tea",
                                            .fireDate = now + 9}));
    EXPECT_EQ(cancel("abcdef01"),
              "Error: no reminder with id \"abcdef01\". Use list_reminders to see the ids.");
    EXPECT_EQ(cancel("ABCDEF01"), "Cancelled the reminder \"tea\".");
}

TEST_F(ReminderStoreTest, AnyPrefixCancelsAndOfSeveralTheFirstStored)
{
    PendingReminders pending(path);
    pending.add({*uuidFromText(u"AB000000-0000-4000-8000-000000000001"), "first", now + 99});
    pending.add({*uuidFromText(u"AB000000-0000-4000-8000-000000000002"), "second", now + 9});
    EXPECT_EQ(cancel("A"), "Cancelled the reminder \"first\".");
    EXPECT_EQ(cancel("AB000000-0000-4000-8000-000000000002"), "Cancelled the reminder \"second\".");
}

TEST_F(ReminderStoreTest, CancellingNeedsAnId)
{
    set("tea", 5);
    for (const char *id : {"", "  \n"})
        EXPECT_EQ(cancel(id), "Error: a reminder id is required. Use list_reminders to see the ids.");
    EXPECT_EQ(stored().size(), 1);
}

TEST_F(ReminderStoreTest, ADueReminderIsHeardSpokenAndTakenBackFromTheCentre)
{
    startMonitoring();
    set("tea", 0.05);
    pass(2900ms);
    EXPECT_THAT(announcer.spoken, IsEmpty());
    pass(200ms);
    EXPECT_THAT(announcer.spoken, ElementsAre("Reminder: tea"));
    EXPECT_THAT(sounds.played, ElementsAre("MorvaneDone"));
    EXPECT_THAT(center.removed, ElementsAre(center.added.front().identifier));
    EXPECT_TRUE(stored().isEmpty());
    pass(5s);
    EXPECT_EQ(announcer.spoken.size(), 1);
}

TEST_F(ReminderStoreTest, TwoRemindersDueInTheSameSecondBothFire)
{
    startMonitoring();
    set("one", 0.05);
    set("two", 0.05);
    pass(4s);
    EXPECT_THAT(announcer.spoken, ElementsAre("Reminder: one", "Reminder: two"));
    EXPECT_THAT(sounds.played, ElementsAre("MorvaneDone", "MorvaneDone"));
}

TEST_F(ReminderStoreTest, WithoutAMonitorNothingFires)
{
    set("tea", 0.05);
    now += 10;
    clock.advance(10s);
    settle();
    EXPECT_THAT(announcer.spoken, IsEmpty());
    EXPECT_EQ(stored().size(), 1);
}

TEST_F(ReminderStoreTest, NothingIsWatchedWhileNothingIsPending)
{
    startMonitoring();
    EXPECT_EQ(clock.pendingTimers(), 0U);
    set("tea", 0.05);
    awaitMonitor();
    EXPECT_EQ(clock.pendingTimers(), 1U);
    store.startMonitoring();
    settle();
    EXPECT_EQ(clock.pendingTimers(), 1U) << "a second monitor";
    pass(5s);
    EXPECT_EQ(clock.pendingTimers(), 0U);
    EXPECT_EQ(announcer.spoken.size(), 1);
}

TEST_F(ReminderStoreTest, AMonitorThatIsAboutToEndLooksAgainWhereItIsCalled)
{
    for (int round = 1; round <= 20; ++round) {
        // Goes on when its own look at the disk is done and that of the monitor comes next.
        auto another = scheduler.spawn([](auto &test) -> Task<void> {
            co_await test.store.listReminders();
            EXPECT_TRUE(PendingReminders(test.path).add({newUuid(), "tea", test.now - 1}));
            test.store.startMonitoring();
        }(*this));
        store.startMonitoring();
        ASSERT_TRUE(waitUntil([&] { return announcer.spoken.size() == round; }));
        ASSERT_TRUE(waitUntil([this] { return clock.pendingTimers() > 0; }));
        clock.advance(2s);
        awaitMonitor();
    }
}

TEST_F(ReminderStoreTest, AJumpOfTheCalendarIsNoticedWithinASecond)
{
    startMonitoring();
    set("tea", 600);
    awaitMonitor();
    now += 36'000; // the computer slept, and no timer went on
    clock.advance(1s);
    EXPECT_TRUE(waitUntil([this] { return announcer.spoken.size() == 1; }));
}

TEST_F(ReminderStoreTest, APastDueReminderFiresAtTheNextStart)
{
    PendingReminders(path).add({newUuid(), "missed", now - 3600});
    store.reschedulePending();
    store.startMonitoring();
    ASSERT_TRUE(waitUntil([this] { return !announcer.spoken.isEmpty(); }));
    EXPECT_THAT(announcer.spoken, ElementsAre("Reminder: missed"));
    EXPECT_THAT(center.added, IsEmpty()) << "what is over is left to the monitor";
    EXPECT_TRUE(stored().isEmpty());
}

TEST_F(ReminderStoreTest, WhatIsAheadIsScheduledAnewAtTheStart)
{
    PendingReminders pending(path);
    pending.add({newUuid(), "missed", now - 1});
    pending.add({newUuid(), "ahead", now + 60});
    pending.add({newUuid(), "soon", now + 0.25});
    store.reschedulePending();
    ASSERT_TRUE(waitUntil([this] { return center.added.size() == 2; }));
    EXPECT_EQ(center.added.front().body, "ahead");
    EXPECT_EQ(center.added.front().delay, 60s);
    EXPECT_EQ(center.added.back().delay, 1s);
}

TEST_F(ReminderStoreTest, DatesThatNoCalendarKnowsHarmNothing)
{
    PendingReminders(path).add({newUuid(), "never", 1e300});
    PendingReminders(path).add({newUuid(), "always", -1e300});
    store.reschedulePending();
    startMonitoring();
    ASSERT_TRUE(waitUntil([this] { return center.added.size() == 1 && announcer.spoken.size() == 1; }));
    EXPECT_THAT(announcer.spoken, ElementsAre("Reminder: always"));
    EXPECT_TRUE(list().contains("never"));
}

TEST_F(ReminderStoreTest, ConsumingSucceedsOnce)
{
    set("tea", 5);
    const QUuid id = stored().front().id;
    EXPECT_TRUE(consume(id));
    EXPECT_FALSE(consume(id));
    EXPECT_FALSE(consume(newUuid()));
}

TEST_F(ReminderStoreTest, WhateverIsConsumedElsewhereDoesNotFire)
{
    startMonitoring();
    set("tea", 0.05);
    awaitMonitor();
    const QUuid id = stored().front().id;
    now += 3; // due, but the monitor has not looked yet
    EXPECT_TRUE(consume(id));
    clock.advance(3s);
    settle();
    EXPECT_TRUE(waitUntil([this] { return clock.pendingTimers() == 0; }));
    EXPECT_THAT(announcer.spoken, IsEmpty());
    EXPECT_THAT(center.removed, IsEmpty());
}

TEST_F(ReminderStoreTest, MonitorAndDelegateThatRaceFireOnce)
{
    for (int round = 0; round < 20; ++round) {
        announcer.spoken.clear();
        const QUuid id = newUuid();
        PendingReminders(path).add({id, "race", now - 1});
        store.startMonitoring();
        auto delegate = scheduler.spawn(store.consumeIfPending(id));
        ASSERT_TRUE(waitUntil([&] { return delegate.done() && stored().isEmpty(); }));
        ASSERT_TRUE(waitUntil([this] { return clock.pendingTimers() > 0; }));
        clock.advance(2s);
        awaitMonitor();
        EXPECT_EQ(clock.pendingTimers(), 0U);
        EXPECT_EQ(announcer.spoken.size() + (delegate.result() ? 1 : 0), 1);
    }
}

TEST_F(ReminderStoreTest, CorruptBytesReadAsNoRemindersAndTheNextWriteReplacesThem)
{
    home.write("Morvane/Morvane.conf", "[General]\npendingReminders=@ByteArray({\"a\":1})\n");
    EXPECT_EQ(list(), "There are no pending reminders.");
    startMonitoring();
    set("tea", 5);
    EXPECT_EQ(stored().size(), 1);
    EXPECT_EQ(stored().front().message, "tea");
}

TEST_F(ReminderStoreTest, BusyToolsDoNotHoldAReminderUp)
{
    QThreadPool *const pool = QThreadPool::globalInstance();
    std::counting_semaphore release(0);
    const int threads = pool->maxThreadCount();
    for (int thread = 0; thread < threads; ++thread)
        pool->start([&release] { release.acquire(); });
    startMonitoring();
    set("tea", 0.01);
    pass(1s);
    EXPECT_THAT(announcer.spoken, ElementsAre("Reminder: tea"));
    release.release(threads);
    pool->waitForDone();
}

} // namespace
} // namespace morvane
