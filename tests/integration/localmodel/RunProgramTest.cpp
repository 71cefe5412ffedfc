#include "localmodel/RunProgram.h"

#include "async/Cancelled.h"
#include "async/SystemClock.h"
#include "base/ChildProcess.h"
#include "localmodel/InstallError.h"
#include "support/FakeClock.h"
#include "support/RunTask.h"
#include "support/TemporaryHome.h"
#include "support/TimeLimit.h"

#include <QFileInfo>
#include <QThreadPool>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;

namespace morvane {
namespace {

class RunProgramTest : public testing::Test {
protected:
    ~RunProgramTest() override { scheduler.shutdown(5s); }

    ProgramOrder shell(const QString &script)
    {
        return {u"/bin/sh"_s,
                {u"-c"_s, script},
                currentEnvironment(),
                [this](QByteArrayView bytes) { output.append(bytes.data(), bytes.size()); },
                std::nullopt};
    }
    bool comes(const QString &file) const
    {
        return waitUntil([&] { return QFileInfo::exists(home.path(file)); });
    }

    TemporaryHome home;
    SystemClock clock;
    Scheduler scheduler{clock};
    QByteArray output;
};

TEST_F(RunProgramTest, OutputAndErrorsComeTogetherWithTheStatus)
{
    EXPECT_EQ(runTask(scheduler, runProgram(shell(u"echo out; echo err >&2; exit 7"_s))), 7);
    EXPECT_EQ(output, "out\nerr\n");
}

TEST_F(RunProgramTest, MuchOutputComesWhole)
{
    EXPECT_EQ(runTask(scheduler, runProgram(shell(u"head -c 3000000 /dev/zero"_s))), 0);
    EXPECT_EQ(output.size(), 3'000'000);
}

TEST_F(RunProgramTest, ArgumentsAreNotForAShell)
{
    ProgramOrder order = shell({});
    order.path = u"/bin/echo"_s;
    order.arguments = {u"it's; $HOME `x` \"y\""_s};
    runTask(scheduler, runProgram(order));
    EXPECT_EQ(output, "it's; $HOME `x` \"y\"\n");
}

TEST_F(RunProgramTest, AProgramThatIsMissingIsToldInTheSystemsWords)
{
    ProgramOrder order = shell({});
    order.path = home.path(u"missing"_s);
    try {
        runTask(scheduler, runProgram(order));
        FAIL();
    } catch (const InstallError &error) {
        EXPECT_EQ(error.message(), u"No such file or directory"_s);
    }
}

TEST_F(RunProgramTest, BothEndOfOutputAndEndOfProgramAreWaitedFor)
{
    EXPECT_EQ(runTask(scheduler,
                      runProgram(shell(u"exec >&- 2>&-; sleep 0.2; touch '%1'"_s.arg(home.path(u"late"_s))))),
              0);
    EXPECT_TRUE(QFileInfo::exists(home.path(u"late"_s)));
    output.clear();
    EXPECT_EQ(runTask(scheduler, runProgram(shell(u"(sleep 0.2; echo late) & exit 3"_s))), 3);
    EXPECT_EQ(output, "late\n");
}

TEST_F(RunProgramTest, ACancelledProgramIsAskedToEnd)
{
    const QString script = u"trap 'touch \"%1\"' TERM; trap 'touch \"%2\"' INT; touch '%3'; "
                           "until [ -e '%1' ] && [ -e '%2' ]; do sleep 0.02; done"_s.arg(
                               home.path(u"asked"_s), home.path(u"interrupted"_s), home.path(u"ready"_s));
    auto task = scheduler.spawn(runProgram(shell(script)));
    ASSERT_TRUE(comes(u"ready"_s));
    task.cancel();
    ASSERT_TRUE(waitUntil([&task] { return task.done(); }));
    EXPECT_THROW(task.result(), Cancelled);
    EXPECT_TRUE(comes(u"asked"_s));
    EXPECT_TRUE(comes(u"interrupted"_s));
}

TEST_F(RunProgramTest, AProgramThatDoesNotWantToEndIsKilled)
{
    const QString script =
        u"trap '' TERM INT; echo $$ > '%1.new'; mv '%1.new' '%1'; while :; do sleep 0.02; done"_s.arg(
            home.path(u"process"_s));
    auto task = scheduler.spawn(runProgram(shell(script)));
    ASSERT_TRUE(comes(u"process"_s));
    task.cancel();
    ASSERT_TRUE(waitUntil([&task] { return task.done(); }));
    const QString process = u"/proc/"_s + QString::fromLatin1(home.read(u"process"_s)).trimmed();
    EXPECT_TRUE(waitUntil([&process] { return !QFileInfo::exists(process); }));
}

TEST_F(RunProgramTest, AfterItsLimitAProgramIsEndedAndNothingOfItReturned)
{
    FakeClock fake;
    Scheduler own(fake);
    ProgramOrder order = shell(u"touch '%1'; exec sleep 1000"_s.arg(home.path(u"ready"_s)));
    order.limit = 5400s;
    auto task = own.spawn(runProgram(order));
    ASSERT_TRUE(comes(u"ready"_s));
    ASSERT_TRUE(waitUntil([&fake] { return fake.pendingTimers() == 1; }));
    expectTimeLimit(fake, task, 5400s, u"Command timed out after 5400s."_s);
    EXPECT_TRUE(QThreadPool::globalInstance()->waitForDone(10'000));
    own.shutdown(1s);
}

} // namespace
} // namespace morvane
