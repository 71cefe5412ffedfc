#include "async/CurrentContext.h"
#include "async/OffMain.h"
#include "async/Sleep.h"
#include "support/FakeClock.h"
#include "support/RunTask.h"

#include <QStringList>
#include <gtest/gtest.h>
#include <memory>
#include <thread>

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;

namespace morvane {
namespace {

/// Says when it goes.
class Witness {
public:
    Witness(QStringList *log, QString name) : m_log(log), m_name(std::move(name)) {}
    ~Witness() { m_log->append(m_name); }
    Witness(const Witness &) = delete;
    Witness &operator=(const Witness &) = delete;

private:
    QStringList *m_log;
    QString m_name;
};

class SchedulerTest : public testing::Test {
protected:
    FakeClock clock;
    Scheduler scheduler{clock};
    QStringList log;

    static Task<> witnessing(QStringList *log, QString name, int depth)
    {
        const Witness witness(log, name + QString::number(depth));
        if (depth > 0)
            co_await witnessing(log, name, depth - 1);
        else
            co_await sleepFor(1h);
    }
    static Task<int> valueAfter(Clock::Duration duration, int value)
    {
        co_await sleepFor(duration);
        co_return value;
    }
    /// Waits again and again, whatever is asked of it.
    static Task<> stubborn(int *turns)
    {
        while (true) {
            try {
                co_await sleepFor(1h);
            } catch (const Cancelled &) {
                ++*turns;
            }
        }
    }
    static Task<> countTurns(int *turns, int wanted)
    {
        while (*turns < wanted) {
            co_await sleepFor(0s);
            ++*turns;
        }
    }
};

TEST_F(SchedulerTest, TaskGoesOnWhenItsHandleIsDropped)
{
    int turns = 0;
    scheduler.spawn(countTurns(&turns, 1));
    settle();
    clock.advance(0s);
    settle();
    EXPECT_EQ(turns, 1);
}

TEST_F(SchedulerTest, CopiesOfAHandleReferToOneTask)
{
    auto handle = scheduler.spawn(valueAfter(1s, 5));
    auto copy = handle;
    settle();
    copy.cancel();
    settle();
    EXPECT_TRUE(handle.done());
    EXPECT_THROW(handle.result(), Cancelled);
}

TEST_F(SchedulerTest, HandleGivesItsResultLongAfterTheEnd)
{
    auto handle = scheduler.spawn(valueAfter(1s, 5));
    settle();
    clock.advance(1s);
    settle();
    handle.cancel(); // too late
    clock.advance(1h);
    settle();
    ASSERT_TRUE(handle.done());
    EXPECT_EQ(handle.result(), 5);
}

TEST_F(SchedulerTest, HandleMayOutliveTheScheduler)
{
    std::optional<TaskHandle<int>> handle;
    {
        Scheduler shortLived(clock);
        handle = shortLived.spawn(valueAfter(1s, 5));
        settle();
    }
    EXPECT_FALSE(handle->done());
    handle->cancel();
    EXPECT_FALSE(handle->done());
}

TEST_F(SchedulerTest, FrameOfAnEndedTaskGoesAtOnceEvenIfItsHandleStays)
{
    auto handle = scheduler.spawn(witnessing(&log, u"a"_s, 0));
    settle();
    handle.cancel();
    settle();
    EXPECT_EQ(log, QStringList{"a0"});
}

TEST_F(SchedulerTest, TaskMaySpawnOthers)
{
    const auto parent = [](int *turns) -> Task<> {
        const TaskContext context = co_await currentContext();
        for (int i = 0; i < 3; ++i)
            context.scheduler->spawn(countTurns(turns, 1));
    };
    int turns = 0;
    auto handle = scheduler.spawn(parent(&turns));
    settle();
    EXPECT_TRUE(handle.done());
    clock.advance(0s);
    settle();
    EXPECT_EQ(turns, 3);
}

TEST_F(SchedulerTest, WhatIsLeftIsDestroyedInnermostFirstAndNewestFirst)
{
    {
        Scheduler shortLived(clock);
        shortLived.spawn(witnessing(&log, u"a"_s, 2));
        shortLived.spawn(witnessing(&log, u"b"_s, 1));
        settle();
    }
    EXPECT_EQ(log, (QStringList{"b0", "b1", "a0", "a1", "a2"}));
    EXPECT_EQ(clock.pendingTimers(), 0u);
}

TEST_F(SchedulerTest, TaskThatNeverStartedIsDestroyed)
{
    const auto value = std::make_shared<int>(1);
    const auto holding = [](std::shared_ptr<int> held) -> Task<int> { co_return *held; };
    {
        Scheduler shortLived(clock);
        shortLived.spawn(holding(value));
        EXPECT_EQ(value.use_count(), 2);
    }
    settle();
    EXPECT_EQ(value.use_count(), 1);
}

TEST_F(SchedulerTest, ShutdownLetsCancelledTasksTidyUp)
{
    const auto tidying = [](QStringList *to) -> Task<> {
        bool cancelled = false;
        try {
            co_await sleepFor(1h);
        } catch (const Cancelled &) {
            cancelled = true;
        }
        if (cancelled) {
            co_await runOffMain([] {});
            to->append(u"tidy"_s);
        }
    };
    scheduler.spawn(tidying(&log));
    settle();
    scheduler.shutdown(20s);
    EXPECT_EQ(log, QStringList{"tidy"});
}

TEST_F(SchedulerTest, ShutdownEndsTasksThatDoNotWantToEnd)
{
    int turns = 0;
    scheduler.spawn(stubborn(&turns));
    settle();
    scheduler.shutdown(20ms);
    EXPECT_GT(turns, 0);
    const int turnsAtTheEnd = turns;
    settle();
    EXPECT_EQ(turns, turnsAtTheEnd);
}

TEST_F(SchedulerTest, ShutdownDoesNotWaitForAnAnswerBeyondItsLimit)
{
    OneShot<int> answer;
    const auto asking = [](OneShot<int> shot, QStringList *to) -> Task<> {
        const Witness witness(to, u"gone"_s);
        co_await shot.wait();
    };
    scheduler.spawn(asking(answer, &log));
    settle();
    scheduler.shutdown(10ms);
    EXPECT_EQ(log, QStringList{"gone"});
    EXPECT_TRUE(answer.resume(1));
}

TEST_F(SchedulerTest, NothingRunsAfterShutdown)
{
    scheduler.shutdown(0ms);
    auto handle = scheduler.spawn(valueAfter(0s, 1));
    settle();
    EXPECT_FALSE(handle.done());
}

TEST_F(SchedulerTest, EventLoopGetsItsTurnsUnderABusyStreamOfTasks)
{
    // Each task keeps the thread for one millisecond; a hundred are ready at once.
    const auto busy = [](int *done) -> Task<> {
        const auto end = std::chrono::steady_clock::now() + 1ms;
        while (std::chrono::steady_clock::now() < end) {
        }
        ++*done;
        co_return;
    };
    int done = 0;
    for (int i = 0; i < 100; ++i)
        scheduler.spawn(busy(&done));
    int turns = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&turns] { ++turns; });
    timer.start(0);
    ASSERT_TRUE(waitUntil([&done] { return done == 100; }));
    EXPECT_GE(turns, 10);
}

TEST_F(SchedulerTest, ResumptionsFromManyThreadsAllArrive)
{
    constexpr int perThread = 500;
    std::vector<OneShot<int>> shots(4 * perThread);
    int sum = 0;
    const auto adding = [](OneShot<int> shot, int *to) -> Task<> { *to += co_await shot.wait(); };
    for (const OneShot<int> &shot : shots)
        scheduler.spawn(adding(shot, &sum));
    settle();
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&shots, thread] {
            for (std::size_t i = 0; i < perThread; ++i)
                shots[thread * perThread + i].resume(1);
        });
    }
    EXPECT_TRUE(waitUntil([&sum] { return sum == 4 * perThread; }));
    for (std::thread &thread : threads)
        thread.join();
}

} // namespace
} // namespace morvane
