#include "base/AtomicFile.h"
#include "support/TemporaryHome.h"

#include <QFile>
#include <cstdio>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

/// What was asked of the kernel for a file or a folder, and how large it was then.
struct Step {
    enum class Kind { synced, renamed };

    Kind kind;
    ino_t inode;
    off_t size;
};

std::optional<std::vector<Step>> steps; ///< Nothing while nobody looks.

void note(Step::Kind kind, const struct stat &status)
{
    if (steps)
        steps->push_back({kind, status.st_ino, status.st_size});
}

template <class Function> Function systemFunction(const char *name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace

// These take the place of the system's functions for the whole test program.

extern "C" int fsync(int descriptor)
{
    struct stat status{};
    if (::fstat(descriptor, &status) == 0)
        note(Step::Kind::synced, status);
    static const auto system = systemFunction<int (*)(int)>("fsync");
    return system(descriptor);
}

extern "C" int rename(const char *from, const char *to) noexcept
{
    struct stat status{};
    if (::lstat(from, &status) == 0)
        note(Step::Kind::renamed, status);
    static const auto system = systemFunction<int (*)(const char *, const char *)>("rename");
    return system(from, to);
}

namespace morvane {
namespace {

class AtomicFileOrderTest : public testing::Test {
protected:
    ~AtomicFileOrderTest() override { steps.reset(); }

    ino_t inode(const QString &name = {}) const
    {
        struct stat status{};
        return ::stat(QFile::encodeName(home.path(name)).constData(), &status) == 0 ? status.st_ino : 0;
    }

    TemporaryHome home;
};

TEST_F(AtomicFileOrderTest, TheWholeContentIsOnTheDiskBeforeItHasTheNameAndTheNameAfterwards)
{
    home.write("a", "old");
    steps.emplace();
    ASSERT_TRUE(writeFileAtomically(home.path("a"), QByteArray(300'000, 'x')).has_value());
    ASSERT_EQ(steps->size(), 3U);
    EXPECT_EQ(steps->at(0).kind, Step::Kind::synced);
    EXPECT_EQ(steps->at(0).inode, inode("a"));
    EXPECT_EQ(steps->at(0).size, 300'000);
    EXPECT_EQ(steps->at(1).kind, Step::Kind::renamed);
    EXPECT_EQ(steps->at(1).inode, inode("a"));
    EXPECT_EQ(steps->at(2).kind, Step::Kind::synced);
    EXPECT_EQ(steps->at(2).inode, inode());
}

TEST_F(AtomicFileOrderTest, WhatIsToSurviveTheProgramAloneWaitsForNoDisk)
{
    steps.emplace();
    ASSERT_TRUE(writeFileAtomically(home.path("a"), "x", Durability::processCrash).has_value());
    ASSERT_EQ(steps->size(), 1U);
    EXPECT_EQ(steps->at(0).kind, Step::Kind::renamed);
    ASSERT_TRUE(syncFile(home.path("a")).has_value());
    ASSERT_EQ(steps->size(), 3U);
    EXPECT_EQ(steps->at(1).inode, inode("a"));
    EXPECT_EQ(steps->at(2).inode, inode());
}

} // namespace
} // namespace morvane
