#include "MorvaneTest.h"

#include "support/WaitUntil.h"

#include <QDir>
#include <QFile>
#include <chrono>

namespace morvane {
namespace {

using namespace std::chrono_literals;

/// Commands that the model runs.
class ShellTest : public MorvaneTest {};

TEST_F(ShellTest, ACommandOverItsLimitIsStoppedWithAllThatItStarted)
{
    // The file's name is in the command line of what is left running, if anything is.
    MorvaneSession &morvane =
        start({callingTool("run_shell_command",
                           R"({"command":"echo begun; sleep 300 & echo $! > ~/child.pid; sleep 301"})"),
               ScriptedTurn::saying({"It took too long."})});
    morvane.send(QStringLiteral("Run something slow"));
    // The limit is 30 seconds of real time, and two more if the command does not obey.
    ASSERT_TRUE(waitUntil([&] { return morvane.model().requests().size() >= 2; }, 60s));
    ASSERT_TRUE(morvane.ear().hears(QStringLiteral("It took too long.")));
    EXPECT_EQ(lastResult(morvane),
              QStringLiteral("The command exited with status 15.\n"
                             "The command did not finish within 30 seconds and was stopped.\nbegun"));
    QFile child(morvane.home() + QStringLiteral("/child.pid"));
    ASSERT_TRUE(child.open(QIODevice::ReadOnly));
    const QString process = QStringLiteral("/proc/") + QString::fromLatin1(child.readAll().trimmed());
    EXPECT_TRUE(waitUntil([&] { return !QDir(process).exists(); }));
}

} // namespace
} // namespace morvane
