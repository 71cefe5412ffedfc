#include "platform/linux/LinuxSingleInstance.h"

#include "support/WaitUntil.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <atomic>
#include <csignal>
#include <future>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using Claim = SingleInstance::Claim;

class LinuxSingleInstanceTest : public testing::Test {
protected:
    QString folder() const { return m_folder.filePath(u"Morvane"_s); }

    /// What a later start gets, while the event loop of the first is served.
    Claim startAgain(const ActivationToken &token)
    {
        auto start = std::async(std::launch::async,
                                [this, token] { return LinuxSingleInstance(folder()).claim(token); });
        EXPECT_TRUE(
            waitUntil([&] { return start.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
        return start.get();
    }

    QTemporaryDir m_folder;
};

TEST_F(LinuxSingleInstanceTest, TheFirstStartIsTheInstance)
{
    LinuxSingleInstance first(folder());
    EXPECT_EQ(first.claim({}), Claim::first);
    EXPECT_EQ(QFileInfo(folder()).permissions() & 0x0077, QFile::Permissions());
}

TEST_F(LinuxSingleInstanceTest, ALaterStartHandsItsActivationOver)
{
    LinuxSingleInstance first(folder());
    ASSERT_EQ(first.claim({}), Claim::first);
    QList<ActivationToken> activations;
    first.listen([&](const ActivationToken &token) { activations.append(token); });
    const ActivationToken token{"launcher-1_TIME4711", "wayland token"};
    EXPECT_EQ(startAgain(token), Claim::handedOver);
    EXPECT_EQ(startAgain({}), Claim::handedOver);
    EXPECT_EQ(activations, (QList<ActivationToken>{token, {}}));
}

TEST_F(LinuxSingleInstanceTest, AStartBeforeTheFirstListensIsNotLost)
{
    LinuxSingleInstance first(folder());
    ASSERT_EQ(first.claim({}), Claim::first);
    auto later =
        std::async(std::launch::async, [this] { return LinuxSingleInstance(folder()).claim({"early", {}}); });
    EXPECT_EQ(later.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    QByteArray startupID;
    first.listen([&](const ActivationToken &token) { startupID = token.startupID; });
    EXPECT_TRUE(waitUntil([&] { return !startupID.isEmpty(); }));
    EXPECT_EQ(later.get(), Claim::handedOver);
    EXPECT_EQ(startupID, "early");
}

TEST_F(LinuxSingleInstanceTest, TheEndOfTheFirstFreesThePlace)
{
    {
        LinuxSingleInstance first(folder());
        ASSERT_EQ(first.claim({}), Claim::first);
    }
    EXPECT_EQ(LinuxSingleInstance(folder()).claim({}), Claim::first);
}

TEST_F(LinuxSingleInstanceTest, ACrashLeavesNothingThatStandsInTheWay)
{
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        LinuxSingleInstance crashing(folder());
        const char result = crashing.claim({}) == Claim::first ? '1' : '0';
        ::write(ready[1], &result, 1);
        ::pause();
        ::_exit(0);
    }
    char result = 0;
    ASSERT_EQ(::read(ready[0], &result, 1), 1);
    EXPECT_EQ(result, '1');
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    ::close(ready[0]);
    ::close(ready[1]);
    ASSERT_TRUE(QFileInfo::exists(folder() + u"/instance.socket"_s));

    LinuxSingleInstance next(folder());
    ASSERT_EQ(next.claim({}), Claim::first);
    int activations = 0;
    next.listen([&](const ActivationToken &) { ++activations; });
    EXPECT_EQ(startAgain({}), Claim::handedOver);
    EXPECT_EQ(activations, 1);
}

TEST_F(LinuxSingleInstanceTest, OfManySimultaneousStartsExactlyOneIsFirst)
{
    constexpr int starts = 12;
    std::vector<std::unique_ptr<LinuxSingleInstance>> instances;
    for (int i = 0; i < starts; ++i)
        instances.push_back(std::make_unique<LinuxSingleInstance>(folder()));
    std::atomic<int> winner = -1;
    std::atomic<int> firsts = 0;
    std::atomic<int> handedOver = 0;
    std::vector<std::jthread> threads;
    for (int i = 0; i < starts; ++i) {
        threads.emplace_back([&, i] {
            const Claim claim = instances[size_t(i)]->claim({});
            if (claim == Claim::first) {
                ++firsts;
                winner = i;
            } else if (claim == Claim::handedOver) {
                ++handedOver;
            }
        });
    }
    ASSERT_TRUE(waitUntil([&] { return winner >= 0; }));
    int activations = 0;
    instances[size_t(winner.load())]->listen([&](const ActivationToken &) { ++activations; });
    EXPECT_TRUE(waitUntil([&] { return handedOver == starts - 1; }));
    EXPECT_EQ(firsts, 1);
    EXPECT_EQ(activations, starts - 1);
}

TEST_F(LinuxSingleInstanceTest, AFolderPathLongerThanASocketAddressWorks)
{
    const QString deep = folder() + (u"/"_s + QString(60, u'x')).repeated(4);
    LinuxSingleInstance first(deep);
    ASSERT_EQ(first.claim({}), Claim::first);
    int activations = 0;
    first.listen([&](const ActivationToken &) { ++activations; });
    auto later = std::async(std::launch::async, [&] { return LinuxSingleInstance(deep).claim({}); });
    EXPECT_TRUE(waitUntil([&] { return activations == 1; }));
    EXPECT_EQ(later.get(), Claim::handedOver);
}

TEST_F(LinuxSingleInstanceTest, AFolderThatCannotBeUsedLetsEveryStartThrough)
{
    QFile file(folder());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(LinuxSingleInstance(folder()).claim({}), Claim::first);
    EXPECT_EQ(LinuxSingleInstance(folder()).claim({}), Claim::first);
}

TEST_F(LinuxSingleInstanceTest, AnActivationTooLongForOneMessageStillRaises)
{
    LinuxSingleInstance first(folder());
    ASSERT_EQ(first.claim({}), Claim::first);
    QList<ActivationToken> activations;
    first.listen([&](const ActivationToken &token) { activations.append(token); });
    EXPECT_EQ(startAgain({QByteArray(1'000'000, 'x'), {}}), Claim::handedOver);
    EXPECT_EQ(activations, QList<ActivationToken>{{}});
}

TEST_F(LinuxSingleInstanceTest, ConnectionsThatSayNothingDoNotKeepOthersOut)
{
    LinuxSingleInstance first(folder());
    ASSERT_EQ(first.claim({}), Claim::first);
    int activations = 0;
    first.listen([&](const ActivationToken &) { ++activations; });
    std::vector<FileDescriptor> silent;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray path = QFile::encodeName(folder() + u"/instance.socket"_s);
    ASSERT_LT(size_t(path.size()), sizeof address.sun_path);
    std::copy(path.begin(), path.end(), address.sun_path);
    for (int i = 0; i < 8; ++i) {
        silent.emplace_back(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
        ASSERT_EQ(::connect(silent.back().get(), reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    }
    EXPECT_EQ(startAgain({}), Claim::handedOver);
    silent.clear();
    EXPECT_EQ(startAgain({}), Claim::handedOver);
    EXPECT_EQ(activations, 2);
}

TEST_F(LinuxSingleInstanceTest, AnInstanceThatDoesNotAnswerIsTold)
{
    LinuxSingleInstance frozen(folder());
    ASSERT_EQ(frozen.claim({}), Claim::first);
    EXPECT_EQ(LinuxSingleInstance(folder(), std::chrono::milliseconds(50)).claim({}), Claim::unanswered);
}

} // namespace
} // namespace morvane
