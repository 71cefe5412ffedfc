#include "base/AtomicFile.h"

#include "base/TemporaryFile.h"
#include "support/FileSizeLimit.h"
#include "support/TemporaryHome.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <atomic>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class AtomicFileTest : public testing::TestWithParam<Durability> {
protected:
    QStringList entries(const QString &folder = {}) const
    {
        return QDir(home.path(folder))
            .entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    std::expected<void, QString> follow(const QString &path, QByteArrayView bytes) const
    {
        return writeFileAtomically(path, bytes, GetParam(), privateFile, LinkRule::follow);
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

TEST_P(AtomicFileTest, LinkIsReplacedAndWhatItLedToStays)
{
    home.write("elsewhere/real.conf", "old");
    ASSERT_TRUE(QFile::link("elsewhere/real.conf", home.path("link.conf")));
    ASSERT_TRUE(writeFileAtomically(home.path("link.conf"), "new", GetParam()).has_value());
    EXPECT_FALSE(QFileInfo(home.path("link.conf")).isSymLink());
    EXPECT_EQ(home.read("link.conf"), QByteArray("new"));
    EXPECT_EQ(home.read("elsewhere/real.conf"), QByteArray("old"));
}

TEST_P(AtomicFileTest, LinkIsFollowedOnDemandAndStaysALink)
{
    home.write("elsewhere/real.conf", "old");
    ASSERT_TRUE(QFile::link("elsewhere/real.conf", home.path("link.conf")));
    ASSERT_TRUE(follow(home.path("link.conf"), "new").has_value());
    EXPECT_TRUE(QFileInfo(home.path("link.conf")).isSymLink());
    EXPECT_EQ(home.read("elsewhere/real.conf"), QByteArray("new"));
}

TEST_P(AtomicFileTest, FollowedLinkToAFileThatDoesNotExistYetCreatesIt)
{
    ASSERT_TRUE(QFile::link(home.path("real.conf"), home.path("link.conf")));
    ASSERT_TRUE(follow(home.path("link.conf"), "new").has_value());
    EXPECT_EQ(home.read("real.conf"), QByteArray("new"));
}

TEST_P(AtomicFileTest, LinkToItselfIsReplacedAndCannotBeFollowed)
{
    ASSERT_TRUE(QFile::link(home.path("loop"), home.path("loop")));
    EXPECT_FALSE(follow(home.path("loop"), "new").has_value());
    EXPECT_TRUE(QFileInfo(home.path("loop")).isSymLink());
    ASSERT_TRUE(writeFileAtomically(home.path("loop"), "new", GetParam()).has_value());
    EXPECT_EQ(home.read("loop"), QByteArray("new"));
}

TEST_P(AtomicFileTest, WhatIsNoFileIsNeverReplaced)
{
    const auto typeOf = [this](const QString &name) {
        struct stat status{};
        return ::lstat(QFile::encodeName(home.path(name)).constData(), &status) == 0 ? status.st_mode & S_IFMT
                                                                                     : 0;
    };
    ASSERT_EQ(::mkfifo(QFile::encodeName(home.path("pipe")).constData(), 0600), 0);
    const bool isRoot =
        ::mknod(QFile::encodeName(home.path("null")).constData(), S_IFCHR | 0600, ::makedev(1, 3)) == 0;
    const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    qstrncpy(address.sun_path, QFile::encodeName(home.path("socket")).constData(), sizeof address.sun_path);
    ASSERT_EQ(::bind(listener, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    const QStringList before = entries();
    for (const QString &name : before) {
        const auto type = typeOf(name);
        for (const LinkRule links : {LinkRule::replace, LinkRule::follow}) {
            const auto result = writeFileAtomically(home.path(name), "x", GetParam(), privateFile, links);
            ASSERT_FALSE(result.has_value()) << qPrintable(name);
            EXPECT_EQ(result.error(), u"Not a regular file"_s);
        }
        ASSERT_TRUE(QFile::link(home.path(name), home.path("link")));
        EXPECT_FALSE(follow(home.path("link"), "x").has_value());
        ASSERT_TRUE(QFile::remove(home.path("link")));
        EXPECT_EQ(typeOf(name), type) << qPrintable(name);
    }
    EXPECT_EQ(before.size(), isRoot ? 3 : 2);
    EXPECT_EQ(entries(), before);
    ::close(listener);
}

TEST_P(AtomicFileTest, NamesOfTheGreatestLengthAreWritten)
{
    const QString name(255, u'n');
    ASSERT_TRUE(writeFileAtomically(home.path(name), "x", GetParam()).has_value());
    EXPECT_EQ(home.read(name), QByteArray("x"));
}

using AbandonedFilesTest = AtomicFileTest;
INSTANTIATE_TEST_SUITE_P(Once, AbandonedFilesTest, testing::Values(Durability::powerLoss));

TEST_P(AbandonedFilesTest, OnlyTemporaryFilesWithoutAWriterAreRemoved)
{
    TemporaryFile underWay(home.path().toStdString());
    ASSERT_TRUE(underWay.write("under way"));
    // A write may take longer than is waited for where there are no locks.
    for (const QString &name : entries()) {
        const timespec longAgo[2]{{.tv_sec = 1, .tv_nsec = 0}, {.tv_sec = 1, .tv_nsec = 0}};
        ASSERT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(home.path(name)).constData(), longAgo, 0), 0);
    }
    home.write(".morvane-write-abcdef", "a key");
    home.write("a.json", "other");
    ASSERT_TRUE(QDir(home.path()).mkdir(".morvane-write-folder"));
    ASSERT_TRUE(QFile::link("a.json", home.path(".morvane-write-link")));
    ASSERT_EQ(::mkfifo(QFile::encodeName(home.path(".morvane-write-pipe")).constData(), 0600), 0);
    ASSERT_EQ(entries().size(), 6);
    removeAbandonedTemporaryFiles(home.path());
    EXPECT_EQ(entries().size(), 5);
    EXPECT_FALSE(QFileInfo::exists(home.path(".morvane-write-abcdef")));
    EXPECT_TRUE(underWay.renameTo(home.path("written").toStdString()));
    EXPECT_EQ(home.read("written"), QByteArray("under way"));
    removeAbandonedTemporaryFiles(home.path("none"));
}

TEST_P(AbandonedFilesTest, ClearingBesideAWriterHurtsNoWrite)
{
    std::atomic<bool> ends = false;
    std::thread clearing([this, &ends] {
        while (!ends)
            removeAbandonedTemporaryFiles(home.path());
    });
    for (int i = 0; i < 300; ++i)
        ASSERT_TRUE(
            writeFileAtomically(home.path("a"), QByteArray::number(i), Durability::processCrash).has_value());
    ends = true;
    clearing.join();
    EXPECT_EQ(entries(), QStringList{"a"});
}

TEST(SyncFileTest, SyncsWhatIsThereAndFailsForWhatIsNot)
{
    const TemporaryHome home;
    EXPECT_TRUE(syncFile(home.write("a", "x")).has_value());
    EXPECT_FALSE(syncFile(home.path("none")).has_value());
    ASSERT_TRUE(QFile::link("a", home.path("link")));
    EXPECT_TRUE(syncFile(home.path("link")).has_value());
    ASSERT_EQ(::mkfifo(QFile::encodeName(home.path("pipe")).constData(), 0600), 0);
    EXPECT_FALSE(syncFile(home.path("pipe")).has_value());
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

TEST(PrivateFolderTest, WhatALinkLeadsToIsLeft)
{
    const TemporaryHome home;
    ASSERT_TRUE(QDir(home.path()).mkpath("shared"));
    ASSERT_EQ(::chmod(QFile::encodeName(home.path("shared")).constData(), 0755), 0);
    ASSERT_TRUE(QFile::link(home.path("shared"), home.path("link")));
    EXPECT_TRUE(ensurePrivateFolder(home.path("link")).has_value());
    EXPECT_TRUE(ensurePrivateFolder(home.path("link/")).has_value());
    EXPECT_EQ(permissionBits(home.path("shared")), 0755U);
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
