#include "tools/ShellEnvironment.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

QList<QByteArray> withPath(const QByteArray &path)
{
    return {"HOME=/home/user", "PATH=" + path, "LANG=C"};
}

TEST(ShellEnvironmentTest, FoldersThatAreMissingFromThePathComeInFront)
{
    EXPECT_EQ(shellEnvironment(withPath("/usr/bin:/bin")),
              withPath("/usr/local/bin:/opt/homebrew/bin:/usr/bin:/bin"));
}

TEST(ShellEnvironmentTest, FoldersThatAreThereStayWhereTheyAre)
{
    EXPECT_EQ(shellEnvironment(withPath("/bin:/usr/local/bin:/usr/bin")),
              withPath("/opt/homebrew/bin:/bin:/usr/local/bin:/usr/bin"));
    EXPECT_EQ(shellEnvironment(withPath("/usr/local/bin:/opt/homebrew/bin:/bin")),
              withPath("/usr/local/bin:/opt/homebrew/bin:/bin"));
}

TEST(ShellEnvironmentTest, AFolderAtTheVeryEndIsNotSeen)
{
    EXPECT_EQ(shellEnvironment(withPath("/opt/homebrew/bin:/usr/local/bin")),
              withPath("/usr/local/bin:/opt/homebrew/bin:/usr/local/bin"));
}

TEST(ShellEnvironmentTest, WithoutAPathTheSystemsFoldersAreTaken)
{
    EXPECT_EQ(shellEnvironment({"HOME=/home/user"}),
              QList<QByteArray>({"HOME=/home/user",
                                 "PATH=/usr/local/bin:/opt/homebrew/bin:/usr/bin:/bin:/usr/sbin:/sbin"}));
}

TEST(ShellEnvironmentTest, OtherVariablesStayAsTheyAre)
{
    EXPECT_EQ(
        shellEnvironment({"MANPATH=/m", "PATHS=/p", "PATH=", "X=1\n2"}),
        QList<QByteArray>({"MANPATH=/m", "PATHS=/p", "PATH=/usr/local/bin:/opt/homebrew/bin:", "X=1\n2"}));
}

} // namespace
} // namespace morvane
