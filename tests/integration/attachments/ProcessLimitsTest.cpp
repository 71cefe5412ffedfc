#include "attachments/reader/ProcessLimits.h"
#include "support/TemporaryHome.h"

#include <QFile>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// What a reader that a file has taken over could try.
class ProcessLimitsTest : public testing::Test {
protected:
    /// Whether `attempt` succeeds in a process of its own that has given up what readers give up.
    static bool canStill(const std::function<bool()> &attempt)
    {
        const pid_t child = ::fork();
        if (child == 0) {
            limitThisProcess();
            ::_exit(attempt() ? 0 : 1);
        }
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status)) << status;
        return status == 0;
    }

    TemporaryHome home;
};

TEST_F(ProcessLimitsTest, FilesCanStillBeRead)
{
    const QByteArray path = QFile::encodeName(home.write(u"file"_s, "content"));
    EXPECT_TRUE(canStill([&] {
        char content[8]{};
        const int file = ::open(path.constData(), O_RDONLY);
        return file >= 0 && ::read(file, content, 7) == 7;
    }));
}

TEST_F(ProcessLimitsTest, FilesCanNoLongerBeChanged)
{
    const QByteArray path = QFile::encodeName(home.write(u"file"_s, "content"));
    const QByteArray other = path + "2";
    EXPECT_FALSE(canStill([&] { return ::open(path.constData(), O_WRONLY) >= 0; }));
    EXPECT_FALSE(canStill([&] { return ::open(path.constData(), O_RDWR) >= 0; }));
    EXPECT_FALSE(canStill([&] { return ::open(other.constData(), O_WRONLY | O_CREAT, 0600) >= 0; }));
    EXPECT_FALSE(canStill([&] { return ::unlink(path.constData()) == 0; }));
    EXPECT_FALSE(canStill([&] { return ::rename(path.constData(), other.constData()) == 0; }));
    EXPECT_FALSE(canStill([&] { return ::truncate(path.constData(), 0) == 0; }));
    EXPECT_FALSE(canStill([&] { return ::chmod(path.constData(), 0777) == 0; }));
    EXPECT_EQ(home.read(u"file"_s), "content");
}

TEST_F(ProcessLimitsTest, NetworkIsOutOfReach)
{
    EXPECT_FALSE(canStill([] { return ::socket(AF_INET, SOCK_STREAM, 0) >= 0; }));
    EXPECT_FALSE(canStill([] { return ::socket(AF_UNIX, SOCK_STREAM, 0) >= 0; }));
}

TEST_F(ProcessLimitsTest, OtherProgramsAreOutOfReach)
{
    EXPECT_FALSE(canStill([] {
        ::execl("/bin/true", "true", nullptr); // ends with 0 if it starts
        return false;
    }));
    EXPECT_FALSE(canStill([] { return ::kill(::getppid(), 0) == 0; }));
}

#if !__has_feature(address_sanitizer)
TEST_F(ProcessLimitsTest, MemoryHasItsLimit)
{
    const auto takes = [](std::size_t bytes) {
        return ::mmap(nullptr, bytes, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) != MAP_FAILED;
    };
    EXPECT_TRUE(canStill([&] { return takes(500'000'000); }));
    EXPECT_FALSE(canStill([&] { return takes(2'000'000'001); }));
}

TEST_F(ProcessLimitsTest, ThreadsCanStillBeStartedAndProcessesCannot)
{
    EXPECT_TRUE(canStill([] {
        bool ran = false;
        std::thread([&ran] { ran = true; }).join();
        return ran;
    }));
    EXPECT_FALSE(canStill([] {
        const pid_t child = ::fork();
        if (child == 0)
            ::_exit(0);
        return child > 0;
    }));
}
#endif

} // namespace
} // namespace morvane
