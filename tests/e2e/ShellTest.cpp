#include "MorvaneTest.h"

#include "support/WaitUntil.h"

#include <QDir>
#include <QFile>
#include <chrono>

using namespace Qt::StringLiterals;

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
    morvane.send(u"Run something slow"_s);
    // The limit is 30 seconds of real time, and two more if the command does not obey.
    ASSERT_TRUE(waitUntil([&] { return morvane.model().requests().size() >= 2; }, 60s));
    ASSERT_TRUE(morvane.ear().hears(u"It took too long."_s));
    EXPECT_EQ(lastResult(morvane), u"The command exited with status 15.\n"
                                   "The command did not finish within 30 seconds and was stopped.\nbegun"_s);
    QFile child(morvane.home() + u"/child.pid"_s);
    ASSERT_TRUE(child.open(QIODevice::ReadOnly));
    const QString process = u"/proc/"_s + QString::fromLatin1(child.readAll().trimmed());
    EXPECT_TRUE(waitUntil([&] { return !QDir(process).exists(); }));
}

} // namespace
} // namespace morvane
