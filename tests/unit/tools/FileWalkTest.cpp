#include "tools/FileWalk.h"

#include "support/TemporaryHome.h"

#include <QDir>
#include <QFile>
#include <QStringList>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace morvane {
namespace {

class FileWalkTest : public testing::Test {
protected:
    QStringList walked(const QString &root) const
    {
        QStringList entries;
        FileWalk walk(root.toStdString());
        while (walk.next()) {
            const FileWalk::Entry entry = walk.entry();
            const char *const kind = entry.kind == FileWalk::Kind::folder        ? "/"
                                     : entry.kind == FileWalk::Kind::regularFile ? ""
                                                                                 : "*";
            entries.append(QString::fromStdString(std::string(entry.relativePath)) + kind);
        }
        return entries;
    }
    QStringList sorted(const QString &root) const
    {
        QStringList entries = walked(root);
        entries.sort();
        return entries;
    }

    TemporaryHome home;
};

TEST_F(FileWalkTest, FindsFilesAndFoldersOfAllLevels)
{
    for (const char *const name : {"r/a", "r/b/c", "r/b/d/e", "r/z"})
        home.write(name, "");
    EXPECT_EQ(sorted(home.path("r")), QStringList({"a", "b/", "b/c", "b/d/", "b/d/e", "z"}));
}

TEST_F(FileWalkTest, AFolderComesBeforeItsEntriesAndTheseBeforeItsSiblings)
{
    for (const char *const name : {"r/a/1", "r/a/2", "r/b/1", "r/b/2"})
        home.write(name, "");
    const QStringList entries = walked(home.path("r"));
    ASSERT_EQ(entries.size(), 6);
    EXPECT_TRUE(entries[0].endsWith('/'));
    EXPECT_TRUE(entries[1].startsWith(entries[0]));
    EXPECT_TRUE(entries[2].startsWith(entries[0]));
    EXPECT_TRUE(entries[3].endsWith('/'));
}

TEST_F(FileWalkTest, HiddenFilesAndAllBelowHiddenFoldersArePassedOver)
{
    for (const char *const name : {"r/.a", "r/.git/b", "r/c/.d", "r/c/..e", "r/c/f", "r/g."})
        home.write(name, "");
    EXPECT_EQ(sorted(home.path("r")), QStringList({"c/", "c/f", "g."}));
}

TEST_F(FileWalkTest, AHiddenRootIsWalked)
{
    home.write(".r/a", "");
    EXPECT_EQ(walked(home.path(".r")), QStringList("a"));
}

TEST_F(FileWalkTest, LinksAreEntriesThatAreNotFollowed)
{
    home.write("r/a/b", "");
    ASSERT_TRUE(QFile::link(home.path("r"), home.path("r/a/loop")));
    ASSERT_TRUE(QFile::link(home.path("r/a/b"), home.path("r/file-link")));
    EXPECT_EQ(sorted(home.path("r")), QStringList({"a/", "a/b", "a/loop*", "file-link*"}));
}

TEST_F(FileWalkTest, TheRootMayBeALink)
{
    home.write("r/a", "");
    ASSERT_TRUE(QFile::link(home.path("r"), home.path("link")));
    EXPECT_EQ(walked(home.path("link")), QStringList("a"));
}

TEST_F(FileWalkTest, PathsBeginWithTheRoot)
{
    home.write("r/a", "");
    for (const QString &root : {home.path("r"), home.path("r/")}) {
        FileWalk walk(root.toStdString());
        ASSERT_TRUE(walk.next());
        EXPECT_EQ(walk.entry().path, home.path("r/a").toStdString());
        EXPECT_EQ(walk.entry().relativePath, "a");
    }
}

TEST_F(FileWalkTest, PipesAreNeitherFilesNorFolders)
{
    QDir().mkpath(home.path("r"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(home.path("r/pipe")).constData(), 0600), 0);
    EXPECT_EQ(walked(home.path("r")), QStringList("pipe*"));
}

TEST_F(FileWalkTest, WhatIsNoFolderHasNoEntries)
{
    home.write("file", "");
    EXPECT_TRUE(walked(home.path("none")).isEmpty());
    EXPECT_TRUE(walked(home.path("file")).isEmpty());
}

TEST_F(FileWalkTest, ATreeDeeperThanPathsCanBeLongEnds)
{
    const QByteArray name(200, 'd');
    const int before = ::open(".", O_RDONLY);
    ASSERT_EQ(::chdir(QFile::encodeName(home.path()).constData()), 0);
    for (int i = 0; i < 30; ++i) { // 6,000 bytes; the longest path is 4,096
        ASSERT_EQ(::mkdir(name.constData(), 0700), 0);
        ASSERT_EQ(::chdir(name.constData()), 0);
    }
    const qsizetype levels = walked(home.path()).size();
    for (int i = 0; i < 30; ++i) { // what removes temporary folders goes by paths and cannot reach these
        ASSERT_EQ(::chdir(".."), 0);
        ASSERT_EQ(::rmdir(name.constData()), 0);
    }
    ASSERT_EQ(::fchdir(before), 0);
    ::close(before);
    EXPECT_GT(levels, 15);
    EXPECT_LT(levels, 30);
}

} // namespace
} // namespace morvane
