#include "base/AtomicFile.h"
#include "support/FileSteps.h"
#include "support/TemporaryHome.h"

#include <QFile>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace morvane {
namespace {

class AtomicFileOrderTest : public testing::Test {
protected:
    ino_t inode(const QString &name = {}) const
    {
        struct stat status{};
        return ::stat(QFile::encodeName(home.path(name)).constData(), &status) == 0 ? status.st_ino : 0;
    }

    TemporaryHome home;
    using Kind = FileSteps::Step::Kind;
};

TEST_F(AtomicFileOrderTest, TheWholeContentIsOnTheDiskBeforeItHasTheNameAndTheNameAfterwards)
{
    home.write("a", "old");
    const FileSteps steps;
    ASSERT_TRUE(writeFileAtomically(home.path("a"), QByteArray(300'000, 'x')).has_value());
    ASSERT_EQ(steps.all().size(), 3);
    EXPECT_EQ(steps.all().at(0).kind, Kind::synced);
    EXPECT_EQ(steps.all().at(0).inode, inode("a"));
    EXPECT_EQ(steps.all().at(0).size, 300'000);
    EXPECT_EQ(steps.all().at(1).kind, Kind::renamed);
    EXPECT_EQ(steps.all().at(1).inode, inode("a"));
    EXPECT_EQ(steps.all().at(2).kind, Kind::synced);
    EXPECT_EQ(steps.all().at(2).inode, inode());
}

TEST_F(AtomicFileOrderTest, WhatIsToSurviveTheProgramAloneWaitsForNoDisk)
{
    const FileSteps steps;
    ASSERT_TRUE(writeFileAtomically(home.path("a"), "x", Durability::processCrash).has_value());
    ASSERT_EQ(steps.all().size(), 1);
    EXPECT_EQ(steps.all().at(0).kind, Kind::renamed);
    ASSERT_TRUE(syncFile(home.path("a")).has_value());
    ASSERT_EQ(steps.all().size(), 3);
    EXPECT_EQ(steps.all().at(1).inode, inode("a"));
    EXPECT_EQ(steps.all().at(2).inode, inode());
}

} // namespace
} // namespace morvane
