#include "integration/update/BundleFixture.h"
#include "support/RenameFaults.h"
#include "support/WaitUntil.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

using testing::AnyOf;
using testing::IsEmpty;

namespace morvane {
namespace {

/// Installations in processes of their own, which are killed.
class KilledInstallationTest : public BundleTest {
protected:
    /// Starts an installation in another process, which leads a group; it kills itself after so many steps.
    pid_t startInstallation(const QString &image, int steps)
    {
        const pid_t child = ::fork();
        if (child != 0)
            return child;
        ::setpgid(0, 0);
        BundleInstallation installation(bundle());
        const std::function<Result()> all[]{
            [&] { return installation.prepare(); }, [&] { return installation.stage(image); },
            [&] { return installation.swap(); }, [&] { return installation.scheduleRelaunch({}); }};
        for (int step = 0; step < steps; ++step)
            if (!all[step]())
                ::_exit(1);
        ::raise(SIGKILL);
        ::_exit(2);
    }

    static void expectKilled(pid_t child)
    {
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
    }

    /// The next start finds a whole program, and cleans up.
    void expectWhole(const QByteArray &expected)
    {
        EXPECT_EQ(version(), expected);
        removeUpdateRemains(bundle(), home.path());
        EXPECT_THAT(beside(), IsEmpty());
        EXPECT_EQ(version(), expected);
        ASSERT_TRUE(install(write(sampleBundleImage()))); // and what was left blocks nothing
        EXPECT_EQ(version(), "new");
    }
};

TEST_F(KilledInstallationTest, BeforeItBegins)
{
    expectKilled(startInstallation(write(sampleBundleImage()), 0));
    expectWhole("old");
}

TEST_F(KilledInstallationTest, AfterItsFolderWasMade)
{
    expectKilled(startInstallation(write(sampleBundleImage()), 1));
    expectWhole("old");
}

TEST_F(KilledInstallationTest, AfterTheNewBundleWasUnpacked)
{
    expectKilled(startInstallation(write(sampleBundleImage()), 2));
    expectWhole("old");
}

TEST_F(KilledInstallationTest, AfterTheBundlesWereExchanged)
{
    expectKilled(startInstallation(write(sampleBundleImage()), 3));
    expectWhole("new");
}

TEST_F(KilledInstallationTest, AfterTheRelaunchWasScheduled)
{
    expectKilled(startInstallation(write(sampleBundleImage()), 4));
    expectWhole("new");
}

TEST_F(KilledInstallationTest, BetweenTheTwoMovesWhereNothingCanBeExchanged)
{
    const QByteArray pipe = home.path(u"go on"_s).toUtf8();
    ASSERT_EQ(::mkfifo(pipe.constData(), 0600), 0);
    pid_t child = 0;
    {
        const RenameFaults faults({EINVAL, 0, RenameFaults::held}, pipe);
        child = startInstallation(write(sampleBundleImage()), 4);
    }
    ASSERT_TRUE(waitUntil([this] { return !QFileInfo::exists(app()); }));
    ::kill(-child, SIGKILL);
    expectKilled(child);
    EXPECT_FALSE(QFileInfo::exists(app()));
    const FileDescriptor goesOn(::open(pipe.constData(), O_RDWR | O_CLOEXEC)); // waits for no reader
    ASSERT_TRUE(waitUntil([this] { return version() == "new"; }));
    ::unlink(pipe.constData());
    ASSERT_TRUE(waitUntil([this] {
        removeUpdateRemains(bundle(), home.path()); // what makes the moves has the folder until it ends
        return beside().isEmpty();
    }));
    expectWhole("new");
}

/// The image comes through a pipe, so that the process is killed when it has read so much and no more.
class KilledWhileUnpackingTest : public KilledInstallationTest, public testing::WithParamInterface<int> {};

TEST_P(KilledWhileUnpackingTest, TheOldBundleIsWhole)
{
    const QByteArray image = sampleBundleImage().bytes(SampleArchive::Compression::none);
    const qsizetype size = image.size() * GetParam() / 6;
    const QByteArray pipe = home.path(u"image"_s).toUtf8();
    ASSERT_EQ(::mkfifo(pipe.constData(), 0600), 0);
    const pid_t child = startInstallation(QString::fromUtf8(pipe), 4);
    const FileDescriptor input(::open(pipe.constData(), O_WRONLY | O_CLOEXEC)); // waits for the reader
    ASSERT_EQ(::write(input.get(), image.constData(), static_cast<std::size_t>(size)), size);
    ASSERT_TRUE(waitUntil([&input] {
        int waiting = 1;
        return ::ioctl(input.get(), FIONREAD, &waiting) == 0 && waiting == 0;
    }));
    ::kill(child, SIGKILL);
    expectKilled(child);
    ::unlink(pipe.constData());
    expectWhole("old");
}

INSTANTIATE_TEST_SUITE_P(FiveMoments, KilledWhileUnpackingTest, testing::Range(1, 6));

} // namespace
} // namespace morvane
