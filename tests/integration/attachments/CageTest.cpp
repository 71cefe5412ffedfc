#include "CageAttacks.h"

#include "attachments/reader/Cage.h"
#include "attachments/reader/PathRestriction.h"
#include "attachments/reader/ProcessLimits.h"
#include "attachments/reader/SystemCallFilter.h"
#include "attachments/reader/TrappedCalls.h"

#include <QFile>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <set>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>

namespace morvane {
namespace {

using Attempt = std::function<bool()>;

enum class Layers { none, whole, callsOnly, pathsOnly };

/// Gives up what a reader gives up, with both layers of its cage or with one.
bool enter(Layers layers, const DataFiles &data)
{
    if (layers != Layers::none)
        limitThisProcess();
    switch (layers) {
    case Layers::none:
        return true;
    case Layers::whole:
        return closeCage(data);
    case Layers::callsOnly:
        return answerTrappedCalls(data) && filterSystemCalls();
    case Layers::pathsOnly:
        return restrictPaths() == PathRestriction::enforced;
    }
    return false;
}

class CageTest : public testing::Test {
protected:
    CageTest() : m_victim(::fork())
    {
        if (m_victim == 0) {
            ::pause();
            ::_exit(0);
        }
    }
    ~CageTest() override
    {
        ::kill(m_victim, SIGKILL);
        ::waitpid(m_victim, nullptr, 0);
    }

    /// Whether `attempt` succeeds in a process of its own behind these layers.
    static bool canStill(const Attempt &attempt, Layers layers = Layers::whole, const DataFiles &data = {})
    {
        constexpr int noCage = 2;
        const pid_t child = ::fork();
        if (child == 0) {
            ::setsid(); // signals of the group are its own
            if (!enter(layers, data))
                ::_exit(noCage);
            ::_exit(attempt() ? 0 : 1);
        }
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status)) << "signal " << WTERMSIG(status);
        EXPECT_NE(WEXITSTATUS(status), noCage);
        return status == 0;
    }
    static void expectRefused(const std::vector<CageAttack> &attacks, Layers layers)
    {
        for (const CageAttack &attack : attacks)
            EXPECT_FALSE(canStill(attack.succeeds, layers)) << attack.name;
    }
    std::vector<CageAttack> allAttacks() const
    {
        std::vector<CageAttack> attacks = attacksOnFiles(m_home);
        for (auto more : {attacksOnProcesses(m_victim), attacksOnTheSystem()})
            attacks.insert(attacks.end(), more.begin(), more.end());
        return attacks;
    }

    AttackedHome m_home;
    pid_t m_victim;
};

TEST_F(CageTest, WithoutItEveryAttackSucceeds)
{
    for (const auto &list : {attacksOnProcesses(m_victim), attacksOnTheSystem()}) {
        for (const CageAttack &attack : list)
            if (attack.outside == CageAttack::Outside::works)
                EXPECT_TRUE(canStill(attack.succeeds, Layers::none)) << attack.name;
    }
    for (std::size_t index = 0; index < attacksOnFiles(m_home).size(); ++index) {
        const AttackedHome fresh;
        const CageAttack attack = attacksOnFiles(fresh).at(index);
        if (attack.outside == CageAttack::Outside::works)
            EXPECT_TRUE(canStill(attack.succeeds, Layers::none)) << attack.name;
    }
}

TEST_F(CageTest, EveryAttackIsRefused)
{
    expectRefused(allAttacks(), Layers::whole);
    EXPECT_TRUE(m_home.isUntouched());
}

TEST_F(CageTest, EveryAttackIsRefusedOnAKernelWithoutLandlock)
{
    expectRefused(allAttacks(), Layers::callsOnly);
    EXPECT_TRUE(m_home.isUntouched());
}

TEST_F(CageTest, LandlockAloneRefusesToOpenMakeRemoveAndRun)
{
    // Landlock does not hide whether something is there, nor does it guard what belongs to a file beside its
    // content: that is the filter's.
    const std::set<std::string> others{
        "takes hold of a path", "asks whether a file is there", "asks whether a file is there by other calls",
        "follows a link",       "lets others read a file",      "changes a file's times",
        "changes its folder"};
    const bool isKnown = ::syscall(SYS_landlock_create_ruleset, nullptr, 0, 1) > 0; // asks for the version
    if (!isKnown) {
        EXPECT_EQ(restrictPaths(), PathRestriction::unknownToKernel);
        return;
    }
    for (const CageAttack &attack : attacksOnFiles(m_home))
        if (!others.contains(attack.name))
            EXPECT_FALSE(canStill(attack.succeeds, Layers::pathsOnly)) << attack.name;
    EXPECT_TRUE(m_home.isUntouched());
}

TEST_F(CageTest, KeyDoesNotComeOutWithTheAnswer)
{
    std::array<int, 2> answer{};
    ASSERT_EQ(::pipe(answer.data()), 0);
    const QByteArray key = m_home.key();
    const QByteArray roundabout = "/proc/self/root" + key;
    const auto sends = [&](int output) {
        for (const QByteArray &path : {key, roundabout}) {
            std::array<char, 64> content{};
            const int file = ::open(path.constData(), O_RDONLY);
            const ssize_t count = file < 0 ? 0 : ::read(file, content.data(), content.size());
            if (count > 0)
                ::write(output, content.data(), static_cast<std::size_t>(count));
        }
        return true;
    };
    const auto sent = [&](Layers layers) {
        canStill(
            [&] {
                ::write(STDOUT_FILENO, "", 0);
                return sends(STDOUT_FILENO);
            },
            layers);
    };
    const int output = ::dup(STDOUT_FILENO);
    ::dup2(answer[1], STDOUT_FILENO);
    sent(Layers::whole);
    sent(Layers::callsOnly);
    ::write(STDOUT_FILENO, "|", 1);
    sent(Layers::none);
    ::dup2(output, STDOUT_FILENO);
    ::close(answer[1]);
    std::string all(256, '\0');
    all.resize(static_cast<std::size_t>(::read(answer[0], all.data(), all.size())));
    // In front of the mark stands what came out of the cage.
    EXPECT_EQ(all, std::string("|") + secretKey + secretKey);
}

TEST_F(CageTest, WhatReadingTakesIsLeft)
{
    const QByteArray path = m_home.key();
    const int file = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
    std::array<int, 2> output{};
    ASSERT_EQ(::pipe(output.data()), 0);
    EXPECT_TRUE(canStill([&] {
        char content[8]{};
        struct stat state{};
        return ::fstat(file, &state) == 0 && state.st_size > 8 && ::read(file, content, 8) == 8 &&
               ::pread(file, content, 8, 2) == 8;
    }));
    EXPECT_TRUE(canStill([] { return ::write(STDOUT_FILENO, "", 0) == 0; }));
    EXPECT_TRUE(canStill([] {
        bool ran = false;
        std::thread([&ran] { ran = true; }).join();
        return ran;
    }));
    ::close(file);
}

TEST_F(CageTest, AbortedReaderEndsByItsSignal)
{
    const pid_t child = ::fork();
    if (child == 0) {
        limitThisProcess();
        static_cast<void>(closeCage({}));
        std::signal(SIGABRT, SIG_DFL);
        std::abort();
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGABRT);
}

TEST_F(CageTest, ADataFileIsReadByThePathThatItStandsFor)
{
    DataFiles data;
    data.addAs("/usr/share/nothing/letter", m_home.path("folder/letter"));
    data.sort();
    EXPECT_TRUE(
        canStill([] { return ::open("/usr/share/nothing/letter", O_RDONLY) >= 0; }, Layers::whole, data));
    const QByteArray letter = m_home.path("folder/letter");
    EXPECT_FALSE(canStill([&] { return ::open(letter.constData(), O_RDONLY) >= 0; }, Layers::whole, data));
}

TEST_F(CageTest, DataFilesAreReadByTheirPathsAndNothingElse)
{
    DataFiles data;
    const QByteArray letter = m_home.path("folder/letter");
    data.addFolder(m_home.path("folder"));
    data.add(m_home.path("missing"));
    data.sort();
    for (const Layers layers : {Layers::whole, Layers::callsOnly}) {
        EXPECT_TRUE(canStill(
            [&] {
                // Twice, from the beginning each time, by the C library's own way.
                for (int turn = 0; turn < 2; ++turn) {
                    FILE *file = std::fopen(letter.constData(), "rb");
                    char content[9]{};
                    if (!file || std::fread(content, 1, 8, file) != 8 || content != std::string("Dear Sir"))
                        return false;
                    std::fclose(file);
                }
                return true;
            },
            layers, data));
        EXPECT_FALSE(canStill([&] { return ::open(letter.constData(), O_WRONLY) >= 0; }, layers, data));
        EXPECT_FALSE(canStill([&] { return ::open(letter.constData(), O_RDWR) >= 0; }, layers, data));
        EXPECT_FALSE(canStill([&] { return ::open(m_home.key().constData(), O_RDONLY) >= 0; }, layers, data));
        // A path that would stand before those of all files.
        EXPECT_FALSE(canStill([] { return ::open("/", O_RDONLY) >= 0; }, layers, data));
        EXPECT_TRUE(canStill([&] { return ::open(letter.constData(), O_RDONLY | O_TRUNC) >= 0; }, layers,
                             data)); // only opens
    }
    struct stat state{};
    ASSERT_EQ(::stat(letter.constData(), &state), 0);
    EXPECT_EQ(state.st_size, 8);
}

TEST_F(CageTest, LimitsHold)
{
    const auto isLimited = [](__rlimit_resource resource, rlim_t most) {
        rlimit limit{};
        return ::getrlimit(resource, &limit) == 0 && limit.rlim_cur <= most;
    };
    EXPECT_TRUE(canStill([&] {
        return isLimited(RLIMIT_CPU, 900) && isLimited(RLIMIT_CORE, 0) && isLimited(RLIMIT_FSIZE, 0);
    }));
#if !__has_feature(address_sanitizer)
    const auto takes = [](std::size_t bytes) {
        return ::mmap(nullptr, bytes, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) != MAP_FAILED;
    };
    EXPECT_TRUE(canStill([&] { return takes(500'000'000); }));
    EXPECT_FALSE(canStill([&] { return takes(2'000'000'001); }));
#endif
}

} // namespace
} // namespace morvane
