#include "base/RunShellTool.h"

#include <chrono>
#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace morvane {
namespace {

TEST(RunShellToolTest, GivesTheStatusAndAllThatWasPrinted)
{
    const ShellToolResult result = runShellTool("/bin/sh", {"-c", "echo out; echo error >&2; exit 3"});
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.output, "out\nerror\n");
}

TEST(RunShellToolTest, ArgumentsArePassedAsTheyAre)
{
    EXPECT_EQ(runShellTool("/bin/echo", {"a b", "$HOME", "*", u"é"_qs}).output, u"a b $HOME * é\n"_qs);
}

TEST(RunShellToolTest, AProgramThatIsMissingCannotBeStarted)
{
    const ShellToolResult result = runShellTool("/nonexistent/tool", {});
    EXPECT_EQ(result.status, -1);
    EXPECT_EQ(result.output, "");
}

TEST(RunShellToolTest, OutputThatIsNoUtf8IsLost)
{
    const ShellToolResult result = runShellTool("/bin/sh", {"-c", "printf 'a\\377'"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "");
}

TEST(RunShellToolTest, MuchOutputIsReadToItsEnd)
{
    EXPECT_EQ(runShellTool("/bin/sh", {"-c", "head -c 1000000 /dev/zero | tr '\\0' x"}).output.size(),
              1'000'000);
}

TEST(RunShellToolTest, AProgramThatRunsTooLongIsKilled)
{
    EXPECT_EQ(runShellTool("/bin/sleep", {"600"}, 50ms).status, -1);
    EXPECT_EQ(runShellTool("/bin/sh", {"-c", "exec >&- 2>&-; exec sleep 600"}, 50ms).status, -1);
    EXPECT_EQ(runShellTool("/bin/sh", {"-c", "echo out; exit 3"}, 20s).output, "out\n");
}

TEST(RunShellToolTest, TheInputIsAtItsEnd)
{
    EXPECT_EQ(runShellTool("/bin/cat", {}).status, 0);
}

} // namespace
} // namespace morvane
