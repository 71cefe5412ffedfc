#include "base/ChildProcess.h"
#include "base/InstalledFiles.h"
#include "support/TemporaryHome.h"
#include "support/WaitUntil.h"

#include <QDir>
#include <QFile>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <optional>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// The real relauncher beside an old process that ends when the test says so.
class RelauncherTest : public testing::Test {
protected:
    RelauncherTest()
    {
        QDir().mkpath(folder() + u"/Morvane.app/Contents/MacOS"_s);
        home.write(u"it's a folder/remains/stage/Morvane.app/old"_s, "old");
    }

    QString folder() const { return home.path(u"it's a folder"_s); }

    /// What is started in the end: a program that writes down its environment and goes on.
    void layProgram(const QByteArray &script)
    {
        const QString path = folder() + u"/Morvane.app/Contents/MacOS/Morvane"_s;
        home.write(u"it's a folder/Morvane.app/Contents/MacOS/Morvane"_s, "#!/bin/sh\n" + script);
        ASSERT_TRUE(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    }

    void startOldProcess()
    {
        int ends[2];
        ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        const FileDescriptor input(ends[0]);
        m_oldInput = FileDescriptor(ends[1]);
        ChildProcess::Options options;
        options.program = "/bin/cat";
        options.input = input.get();
        options.output = ChildProcess::Output::discarded;
        options.errors = ChildProcess::Errors::discarded;
        auto process = ChildProcess::start(options);
        ASSERT_TRUE(process);
        m_old.emplace(std::move(*process));
    }
    void endOldProcess() { m_oldInput.close(); }

    void startRelauncher()
    {
        ChildProcess::Options options;
        options.program = InstalledFiles::aroundProgram().helper(u"morvane-relauncher"_s).toUtf8();
        options.arguments = {(folder() + u"/Morvane.app"_s).toUtf8(), (folder() + u"/remains"_s).toUtf8()};
        options.environment = {"PATH=/usr/bin:/bin"};
        options.output = ChildProcess::Output::discarded;
        options.errors = ChildProcess::Errors::discarded;
        options.control = m_old->endNotice().get();
        auto process = ChildProcess::start(options);
        ASSERT_TRUE(process);
        m_relauncher.emplace(std::move(*process));
    }

    TemporaryHome home;
    FileDescriptor m_oldInput;
    std::optional<ChildProcess> m_old;
    std::optional<ChildProcess> m_relauncher;
};

TEST_F(RelauncherTest, TheNewProgramIsStartedWhenTheOldOneHasEnded)
{
    layProgram("ls '" + folder().toUtf8().replace("'", "'\\''") + "' > \"$0.started\"\n");
    startOldProcess();
    ASSERT_TRUE(m_old->endNotice().isOpen());
    startRelauncher();
    endOldProcess();
    EXPECT_EQ(m_relauncher->waitForStatus(), 0);
    // By then the old bundle was gone.
    EXPECT_EQ(home.read(u"it's a folder/Morvane.app/Contents/MacOS/Morvane.started"_s), "Morvane.app\n");
}

TEST_F(RelauncherTest, AProgramThatEndsAtOnceWithAnErrorIsStartedThreeTimes)
{
    layProgram("echo x >> \"$0.started\"\nexit 3\n");
    startOldProcess();
    startRelauncher();
    endOldProcess();
    EXPECT_EQ(m_relauncher->waitForStatus(), 0);
    EXPECT_TRUE(waitUntil([this] {
        return home.read(u"it's a folder/Morvane.app/Contents/MacOS/Morvane.started"_s) == "x\nx\nx\n";
    }));
}

} // namespace
} // namespace morvane
