#include "tools/ShellTool.h"

#include "async/SystemClock.h"
#include "support/RunTask.h"
#include "support/Sanitizer.h"
#include "support/TemporaryHome.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QStringList>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <memory>
#include <unistd.h>

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;

namespace morvane {
namespace {

const QString stopped = "The command did not finish within 30 seconds and was stopped.\n";

QString exitedWith(int status)
{
    return u"The command exited with status %1.\n"_s.arg(status);
}

/// A number that a command has written into a file, or 0 as long as it has not.
pid_t processIn(const TemporaryHome &home, const QString &file)
{
    return static_cast<pid_t>(home.read(file).trimmed().toInt());
}

bool isGone(pid_t process)
{
    if (::kill(process, 0) != 0)
        return errno == ESRCH;
    // Processes of others wait for whoever takes their status.
    QFile status(u"/proc/%1/stat"_s.arg(process));
    return !status.open(QIODevice::ReadOnly) || status.readAll().contains(") Z ");
}

qsizetype openDescriptors()
{
    return QDir("/proc/self/fd").entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
}

/// Children of this process that nobody has waited for.
QByteArray children()
{
    QByteArray list;
    const QStringList threads = QDir("/proc/self/task").entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &thread : threads) {
        QFile file("/proc/self/task/" + thread + "/children");
        if (file.open(QIODevice::ReadOnly))
            list += file.readAll();
    }
    return list;
}

qint64 statusKilobytes(const QByteArray &name)
{
    QFile file("/proc/self/status");
    if (file.open(QIODevice::ReadOnly)) {
        const QList<QByteArray> lines = file.readAll().split('\n');
        for (const QByteArray &line : lines)
            if (line.startsWith(name + ':'))
                return line.sliced(name.size() + 1).simplified().split(' ').first().toLongLong();
    }
    ADD_FAILURE() << "no " << name.constData();
    return 0;
}

class ShellToolTest : public testing::Test {
protected:
    QString run(const QString &command) { return runTask(scheduler, tool->runShell(command)); }
    void useLimits(const ShellLimits &limits) { tool = std::make_unique<ShellTool>("/bin/zsh", limits); }

    TemporaryHome home;
    SystemClock clock;
    Scheduler scheduler{clock};
    std::unique_ptr<ShellTool> tool = std::make_unique<ShellTool>();
};

TEST_F(ShellToolTest, ACommandOfBlanksIsEmpty)
{
    EXPECT_EQ(run("   "), "Error: empty command.");
    EXPECT_EQ(run(" \n\t"), "Error: empty command.");
    EXPECT_EQ(run(""), "Error: empty command.");
}

TEST_F(ShellToolTest, OutputComesWithoutBlanksAtItsEnds)
{
    EXPECT_EQ(run("echo hi"), "hi");
    EXPECT_EQ(run(" \n echo; echo '  hi'; echo \n"), "hi");
}

TEST_F(ShellToolTest, ACommandWithoutOutputGivesTheEmptyText)
{
    EXPECT_EQ(run("true"), "");
}

TEST_F(ShellToolTest, AStatusOtherThanZeroStandsInFront)
{
    EXPECT_EQ(run("false"), exitedWith(1));
    EXPECT_EQ(run("echo out; exit 42"), exitedWith(42) + "out");
}

TEST_F(ShellToolTest, ErrorsOfTheCommandAreToldWithItsStatus)
{
    const QString answer = run("LC_ALL=C ls /nonexistent");
    EXPECT_TRUE(answer.startsWith("The command exited with status ")) << answer.toStdString();
    EXPECT_TRUE(answer.endsWith("No such file or directory")) << answer.toStdString();
}

TEST_F(ShellToolTest, TheStatusOfACommandThatASignalEndedIsItsNumber)
{
    EXPECT_EQ(run("echo before; kill -USR1 $$"), exitedWith(SIGUSR1) + "before");
}

TEST_F(ShellToolTest, OutputComesBeforeErrorsWhateverTheirOrder)
{
    EXPECT_EQ(run("echo error >&2; echo out; echo more >&2"), "out\n\nerror\nmore");
    EXPECT_EQ(run("echo error >&2"), "error");
}

TEST_F(ShellToolTest, BlanksBetweenOutputAndErrorsStay)
{
    EXPECT_EQ(run("echo out; printf '  \\n\\t err \\n' >&2"), "out\n\n  \n\t err");
    EXPECT_EQ(run("printf ' \\n'; printf '\\n  err' >&2"), "err");
    EXPECT_EQ(run("printf 'out  \\n'; printf ' \\n ' >&2"), "out");
    EXPECT_EQ(run("printf out; printf '%4100s' err >&2"), "out\n" + QString(3'996, u' '));
}

TEST_F(ShellToolTest, FourThousandCharactersAreReturnedWithoutANote)
{
    EXPECT_EQ(run("printf 'x%.0s' {1..40000}"), QString(4000, 'x'));
    EXPECT_EQ(run("printf 'é%.0s' {1..5000}; exit 3"), exitedWith(3) + QString(4000, u'é'));
}

TEST_F(ShellToolTest, OutputThatIsNoUtf8IsLostAndErrorsAreKept)
{
    EXPECT_EQ(run("printf 'good \\xff'; echo error >&2"), "error");
    EXPECT_EQ(run("echo out; printf '\\xff' >&2"), "out");
}

TEST_F(ShellToolTest, TheCommandIsRunByZsh)
{
    EXPECT_EQ(run("print -r -- ${ZSH_NAME} ${(U):-ok}"), "zsh OK");
    EXPECT_EQ(run("[[ -o login ]] || [[ -o interactive ]] || echo neither"), "neither");
}

TEST_F(ShellToolTest, TheInputIsAtItsEnd)
{
    EXPECT_EQ(run("cat; echo done"), "done");
}

TEST_F(ShellToolTest, NoDescriptorIsInherited)
{
    const int leaky = ::open("/dev/null", O_RDONLY); // as a library may open one
    ASSERT_GE(leaky, 0);
    EXPECT_EQ(run("exec ls /proc/self/fd"), "0\n1\n2\n3"); // the last is the folder itself
    ::close(leaky);
}

TEST_F(ShellToolTest, SignalsHaveTheirUsualEffect)
{
    ::signal(SIGPIPE, SIG_IGN); // as libraries do
    const QString answer = run("yes | head -n 1; echo ${pipestatus[1]}");
    ::signal(SIGPIPE, SIG_DFL);
    EXPECT_EQ(answer, "y\n" + QString::number(128 + SIGPIPE));
}

TEST_F(ShellToolTest, TheUsersProgramsAreFound)
{
    const QByteArray before = qgetenv("PATH");
    qputenv("PATH", "/usr/bin:/bin");
    EXPECT_EQ(run("echo $PATH"), "/usr/local/bin:/opt/homebrew/bin:/usr/bin:/bin");
    qputenv("PATH", before);
}

TEST_F(ShellToolTest, AShellThatIsMissingIsTold)
{
    tool = std::make_unique<ShellTool>("/nonexistent/zsh");
    EXPECT_EQ(run("echo hi"), "Error starting the command: No such file or directory");
    EXPECT_EQ(run("echo hi"), "Error starting the command: No such file or directory");
}

TEST_F(ShellToolTest, ACommandThatIsTooLongForTheSystemIsTold)
{
    EXPECT_EQ(run("echo " + QString(3'000'000, 'x')), "Error starting the command: Argument list too long");
}

TEST_F(ShellToolTest, ACommandWithANulIsNotRun)
{
    EXPECT_EQ(run(QString("echo one") + QChar(0) + "; echo two"),
              "Error starting the command: it holds a NUL character");
}

TEST_F(ShellToolTest, TheAnswerDoesNotWaitWhenThePipesAreAtTheirEnd)
{
    useLimits({30s, 2s, 20s});
    QElapsedTimer timer;
    timer.start();
    EXPECT_EQ(run("echo hi"), "hi");
    EXPECT_LT(timer.elapsed(), 10'000);
}

TEST_F(ShellToolTest, TheProgramGivesThirtySecondsAndTwoMore)
{
    EXPECT_EQ(ShellLimits().time, 30s); // what the explanation tells the model
    EXPECT_EQ(ShellLimits().untilKill, 2s);
}

TEST_F(ShellToolTest, ACommandBeyondItsLimitIsStoppedAndExplained)
{
    useLimits({300ms, 20s, 200ms});
    EXPECT_EQ(run("echo before; sleep 600"), exitedWith(SIGTERM) + stopped + "before");
}

TEST_F(ShellToolTest, TheExplanationCountsToTheLimitOfCharacters)
{
    useLimits({600ms, 20s, 200ms});
    EXPECT_EQ(run("printf 'x%.0s' {1..8000}; sleep 600"),
              exitedWith(SIGTERM) + stopped + QString(4000 - stopped.size(), 'x'));
}

TEST_F(ShellToolTest, ACommandThatEndsWellWhenAskedToStopIsStillExplained)
{
    useLimits({300ms, 20s, 200ms});
    EXPECT_EQ(run("trap 'echo bye; exit 0' TERM; echo hi; while true; do sleep 0.01; done"),
              stopped + "hi\nbye");
}

TEST_F(ShellToolTest, ACommandThatDoesNotStopIsKilled)
{
    useLimits({300ms, 300ms, 20s});
    EXPECT_EQ(run("trap '' TERM; echo hi; while true; do sleep 0.05; done"),
              exitedWith(SIGKILL) + stopped + "hi");
}

TEST_F(ShellToolTest, EverythingThatTheCommandStartedIsStoppedWithIt)
{
    useLimits({500ms, 20s, 200ms});
    EXPECT_TRUE(run("sleep 600 & echo $! > ~/one; (sleep 600 & echo $! > ~/two; wait) & sleep 600")
                    .startsWith(exitedWith(SIGTERM) + stopped));
    for (const char *const file : {"one", "two"}) {
        ASSERT_GT(processIn(home, file), 0);
        EXPECT_TRUE(waitUntil([&] { return isGone(processIn(home, file)); })) << file;
    }
}

TEST_F(ShellToolTest, ABackgroundProcessThatHoldsThePipesDoesNotHoldTheAnswer)
{
    useLimits({30s, 2s, 200ms});
    EXPECT_EQ(run("echo hi; sleep 600 & echo $! > ~/sleeper"), "hi");
    const pid_t sleeper = processIn(home, "sleeper");
    ASSERT_GT(sleeper, 0);
    EXPECT_FALSE(isGone(sleeper));
    ::kill(sleeper, SIGKILL);
}

TEST_F(ShellToolTest, WhatABackgroundProcessPrintsAfterTheAnswerDoesNotStopIt)
{
    useLimits({30s, 2s, 10ms});
    // Far more than a pipe holds: without a reader the process would block, without a pipe it would die.
    EXPECT_EQ(run("(sleep 0.2; printf 'x%.0s' {1..300000}; echo end > ~/file) &"), "");
    EXPECT_TRUE(waitUntil([this] { return home.read("file") == "end\n"; }));
}

TEST_F(ShellToolTest, CommandsRunBesideEachOther)
{
    auto first = scheduler.spawn(tool->runShell("until [[ -e ~/second ]]; do sleep 0.01; done; echo first"));
    auto second = scheduler.spawn(tool->runShell("touch ~/second; echo second"));
    ASSERT_TRUE(waitUntil([&] { return first.done() && second.done(); }));
    EXPECT_EQ(first.result(), "first");
    EXPECT_EQ(second.result(), "second");
}

TEST_F(ShellToolTest, CancellingTheTaskDoesNotStopTheCommand)
{
    auto handle = scheduler.spawn(tool->runShell("until [[ -e ~/go ]]; do sleep 0.01; done; echo done"));
    settle();
    handle.cancel();
    settle();
    EXPECT_FALSE(handle.done());
    home.write("go", "");
    ASSERT_TRUE(waitUntil([&] { return handle.done(); }));
    EXPECT_EQ(handle.result(), "done");
}

TEST_F(ShellToolTest, TheEndOfTheProgramStopsRunningCommands)
{
    auto handle = scheduler.spawn(tool->runShell("trap '' TERM; echo $$ > ~/shell; sleep 600"));
    ASSERT_TRUE(waitUntil([this] { return processIn(home, "shell") > 0; }));
    tool.reset();
    EXPECT_TRUE(isGone(processIn(home, "shell")));
    EXPECT_FALSE(handle.done());
}

TEST_F(ShellToolTest, AThousandRunsLeaveNeitherZombiesNorDescriptors)
{
    run("true"); // what is opened once; what it still closes counts too, so there may be fewer in the end
    const qsizetype before = openDescriptors();
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(run("exit 7"), exitedWith(7));
    EXPECT_TRUE(waitUntil([before] { return openDescriptors() <= before; }))
        << openDescriptors() << " for " << before;
    EXPECT_EQ(children(), "");
}

TEST_F(ShellToolTest, AHundredMegabytesOfOutputDoNotGrowTheProgram)
{
    run("head -c 3000000 /dev/zero | tr '\\0' x");
    const qint64 before = statusKilobytes("VmRSS");
    QFile reset("/proc/self/clear_refs");
    ASSERT_TRUE(reset.open(QIODevice::WriteOnly));
    reset.write("5"); // the peak counts from here
    reset.close();
    EXPECT_EQ(run("head -c 100000000 /dev/zero | tr '\\0' x"), QString(4000, 'x'));
    // The address sanitizer holds freed blocks back for a while, so there the peak shows them too.
    EXPECT_LT(statusKilobytes("VmHWM") - before, isSanitized() ? 32'000 : 8'000);
}

} // namespace
} // namespace morvane
