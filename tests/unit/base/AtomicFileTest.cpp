#include "base/AtomicFile.h"

#include "support/FileSizeLimit.h"
#include "support/TemporaryHome.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/time.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class AtomicFileTest : public testing::TestWithParam<Durability> {
protected:
    QStringList entries(const QString &folder = {}) const
    {
        return QDir(home.path(folder)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    TemporaryHome home;
};

INSTANTIATE_TEST_SUITE_P(EveryDurability, AtomicFileTest,
                         testing::Values(Durability::processCrash, Durability::powerLoss),
                         [](const auto &info) {
                             return info.param == Durability::processCrash ? "ProcessCrash" : "PowerLoss";
                         });

TEST_P(AtomicFileTest, WritesANewFileForTheUserAlone)
{
    ASSERT_TRUE(writeFileAtomically(home.path("a.json"), "hello", GetParam()).has_value());
    EXPECT_EQ(home.read("a.json"), QByteArray("hello"));
    EXPECT_EQ(permissionBits(home.path("a.json")), 0600U);
    EXPECT_EQ(entries(), QStringList{"a.json"});
}

TEST_P(AtomicFileTest, ReplacesAFileAndNarrowsIt)
{
    const QString path = home.write("a.json", "a much longer old content");
    ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), 0644), 0);
    ASSERT_TRUE(writeFileAtomically(path, "new", GetParam()).has_value());
    EXPECT_EQ(home.read("a.json"), QByteArray("new"));
    EXPECT_EQ(permissionBits(path), 0600U);
}

TEST_P(AtomicFileTest, WritesNothingAndALot)
{
    ASSERT_TRUE(writeFileAtomically(home.path("empty"), QByteArrayView(), GetParam()).has_value());
    EXPECT_EQ(QFileInfo(home.path("empty")).size(), 0);
    const QByteArray large(5'000'000, 'x');
    ASSERT_TRUE(writeFileAtomically(home.path("large"), large, GetParam()).has_value());
    EXPECT_EQ(home.read("large"), large);
}

TEST_P(AtomicFileTest, FullDiskLeavesTheOldFileAndNothingElse)
{
    const QString path = home.write("a.json", "old");
    {
        const FileSizeLimit full(100);
        const auto result = writeFileAtomically(path, QByteArray(200, 'x'), GetParam());
        ASSERT_FALSE(result.has_value());
        EXPECT_EQ(result.error(), u"File too large"_s);
    }
    EXPECT_EQ(home.read("a.json"), QByteArray("old"));
    EXPECT_EQ(entries(), QStringList{"a.json"});
}

TEST_P(AtomicFileTest, MissingFolderFails)
{
    const auto result = writeFileAtomically(home.path("none/a.json"), "x", GetParam());
    ASSERT_FALSE(result.has_value());
    EXPECT_EQ(result.error(), u"No such file or directory"_s);
}

TEST_P(AtomicFileTest, FolderInTheFilesPlaceFailsAndStays)
{
    ASSERT_TRUE(QDir(home.path()).mkpath("a.json/inside"));
    EXPECT_FALSE(writeFileAtomically(home.path("a.json"), "x", GetParam()).has_value());
    EXPECT_TRUE(QFileInfo(home.path("a.json/inside")).isDir());
    EXPECT_EQ(entries(), QStringList{"a.json"});
}

TEST_P(AtomicFileTest, LinkIsFollowedAndStaysALink)
{
    home.write("elsewhere/real.conf", "old");
    ASSERT_TRUE(QFile::link("elsewhere/real.conf", home.path("link.conf")));
    ASSERT_TRUE(writeFileAtomically(home.path("link.conf"), "new", GetParam()).has_value());
    EXPECT_TRUE(QFileInfo(home.path("link.conf")).isSymLink());
    EXPECT_EQ(home.read("elsewhere/real.conf"), QByteArray("new"));
}

TEST_P(AtomicFileTest, LinkToAFileThatDoesNotExistYetCreatesIt)
{
    ASSERT_TRUE(QFile::link(home.path("real.conf"), home.path("link.conf")));
    ASSERT_TRUE(writeFileAtomically(home.path("link.conf"), "new", GetParam()).has_value());
    EXPECT_EQ(home.read("real.conf"), QByteArray("new"));
}

TEST_P(AtomicFileTest, LinkToItselfIsReplaced)
{
    ASSERT_TRUE(QFile::link(home.path("loop"), home.path("loop")));
    ASSERT_TRUE(writeFileAtomically(home.path("loop"), "new", GetParam()).has_value());
    EXPECT_EQ(home.read("loop"), QByteArray("new"));
}

TEST_P(AtomicFileTest, NamesOfTheGreatestLengthAreWritten)
{
    const QString name(255, u'n');
    ASSERT_TRUE(writeFileAtomically(home.path(name), "x", GetParam()).has_value());
    EXPECT_EQ(home.read(name), QByteArray("x"));
}

using AbandonedFilesTest = AtomicFileTest;
INSTANTIATE_TEST_SUITE_P(Once, AbandonedFilesTest, testing::Values(Durability::powerLoss));

TEST_P(AbandonedFilesTest, OnlyOldTemporaryFilesAreRemoved)
{
    const auto age = [this](const QString &name, time_t seconds) {
        const timeval then{::time(nullptr) - seconds, 0};
        const timeval times[]{then, then};
        ASSERT_EQ(::utimes(QFile::encodeName(home.path(name)).constData(), times), 0);
    };
    home.write(".morvane-write-abcdef", "old");
    home.write(".morvane-write-ghijkl", "under way");
    home.write("a.json", "other");
    ASSERT_TRUE(QDir(home.path()).mkdir(".morvane-write-folder"));
    age(".morvane-write-abcdef", 7200);
    age("a.json", 7200);
    age(".morvane-write-folder", 7200);
    removeAbandonedTemporaryFiles(home.path());
    EXPECT_EQ(entries(), (QStringList{".morvane-write-folder", ".morvane-write-ghijkl", "a.json"}));
    removeAbandonedTemporaryFiles(home.path("none"));
}

TEST(SyncFileTest, SyncsWhatIsThereAndFailsForWhatIsNot)
{
    const TemporaryHome home;
    EXPECT_TRUE(syncFile(home.write("a", "x")).has_value());
    EXPECT_FALSE(syncFile(home.path("none")).has_value());
}

TEST(PrivateFolderTest, IsCreatedWithWhatIsMissingAboveIt)
{
    const TemporaryHome home;
    ASSERT_TRUE(ensurePrivateFolder(home.path("a/b/c")).has_value());
    for (const char *folder : {"a", "a/b", "a/b/c"})
        EXPECT_EQ(permissionBits(home.path(folder)), 0700U) << folder;
}

TEST(PrivateFolderTest, ExistingFolderIsNarrowedAndThoseAboveItAreLeft)
{
    const TemporaryHome home;
    ASSERT_TRUE(QDir(home.path()).mkpath("a/b"));
    ASSERT_EQ(::chmod(QFile::encodeName(home.path("a")).constData(), 0755), 0);
    ASSERT_EQ(::chmod(QFile::encodeName(home.path("a/b")).constData(), 0775), 0);
    ASSERT_TRUE(ensurePrivateFolder(home.path("a/b/")).has_value());
    EXPECT_EQ(permissionBits(home.path("a")), 0755U);
    EXPECT_EQ(permissionBits(home.path("a/b")), 0700U);
}

TEST(PrivateFolderTest, FileInItsPlaceFails)
{
    const TemporaryHome home;
    home.write("a", "file");
    EXPECT_FALSE(ensurePrivateFolder(home.path("a")).has_value());
    EXPECT_FALSE(ensurePrivateFolder(home.path("a/b")).has_value());
    EXPECT_FALSE(ensurePrivateFolder(QString()).has_value());
    EXPECT_EQ(home.read("a"), QByteArray("file"));
}

} // namespace
} // namespace morvane
