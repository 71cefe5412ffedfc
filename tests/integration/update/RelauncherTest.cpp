#include "base/ChildProcess.h"
#include "base/InstalledFiles.h"
#include "support/TemporaryHome.h"
#include "support/WaitUntil.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <optional>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

#ifdef SYS_poll
constexpr long waitingCall = SYS_poll;
#else
constexpr long waitingCall = SYS_ppoll;
#endif

/// The real relauncher beside an old process that ends when the test says so.
class RelauncherTest : public testing::Test {
protected:
    RelauncherTest()
    {
        QDir().mkpath(folder() + u"/Morvane.app/Contents/MacOS"_s);
        home.write(u"it's a folder/remains/stage/Morvane.app/old"_s, "old");
    }

    QString folder() const { return home.path(u"it's a folder"_s); }
    QString program() const { return folder() + u"/Morvane.app/Contents/MacOS/Morvane"_s; }
    QString started() const { return program() + u".started"_s; }
    static QByteArray contentOf(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// What is started in the end: a program that writes down its environment and goes on.
    void layProgram(const QByteArray &script)
    {
        home.write(u"it's a folder/Morvane.app/Contents/MacOS/Morvane"_s, "#!/bin/sh\n" + script);
        ASSERT_TRUE(QFile::setPermissions(program(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
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

    /// Whether the relauncher rests in the call that it waits for a process with.
    bool waitsInPoll() const
    {
        const QByteArray notice = contentOf(u"/proc/self/fdinfo/%1"_s.arg(m_relauncher->endNotice().get()));
        const qint64 process =
            notice.mid(notice.indexOf("Pid:") + 4).split('\n').value(0).trimmed().toLongLong();
        const QByteArray call = contentOf(u"/proc/%1/syscall"_s.arg(process));
        return call.startsWith(QByteArray::number(waitingCall) + ' ');
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
    EXPECT_EQ(contentOf(started()), "Morvane.app\n");
}

TEST_F(RelauncherTest, NothingIsStartedWhileTheOldProcessIsThere)
{
    layProgram("echo x > \"$0.started\"\n");
    startOldProcess();
    startRelauncher();
    ASSERT_TRUE(waitUntil([this] { return waitsInPoll(); }));
    EXPECT_TRUE(QFileInfo::exists(folder() + u"/remains"_s));
    EXPECT_FALSE(QFileInfo::exists(started()));
    endOldProcess();
    EXPECT_EQ(m_relauncher->waitForStatus(), 0);
    EXPECT_TRUE(QFileInfo::exists(started()));
}

TEST_F(RelauncherTest, AProgramThatHandsOverIsStartedOnce)
{
    layProgram("echo x >> \"$0.started\"\nexit 0\n");
    startOldProcess();
    startRelauncher();
    endOldProcess();
    EXPECT_EQ(m_relauncher->waitForStatus(), 0);
    EXPECT_EQ(contentOf(started()), "x\n");
}

TEST_F(RelauncherTest, TheNewProgramHasASessionOfItsOwnAndNothingOfTheRelaunchers)
{
    // The session is the sixth word of what the system says of a process, if its name has no blank.
    layProgram("cut -d' ' -f1,6 /proc/$$/stat > \"$0.session\"\nls /proc/$$/fd > \"$0.started\"\n");
    startOldProcess();
    startRelauncher();
    endOldProcess();
    EXPECT_EQ(m_relauncher->waitForStatus(), 0);
    const QList<QByteArray> session = contentOf(program() + u".session"_s).trimmed().split(' ');
    ASSERT_EQ(session.size(), 2);
    EXPECT_EQ(session.at(0), session.at(1));
    EXPECT_FALSE(contentOf(started()).split('\n').contains("3"));
}

TEST_F(RelauncherTest, AProgramThatEndsAtOnceWithAnErrorIsStartedThreeTimes)
{
    layProgram("echo x >> \"$0.started\"\nexit 3\n");
    startOldProcess();
    startRelauncher();
    endOldProcess();
    EXPECT_EQ(m_relauncher->waitForStatus(), 0);
    EXPECT_TRUE(waitUntil([this] { return contentOf(started()) == "x\nx\nx\n"; }));
}

} // namespace
} // namespace morvane
