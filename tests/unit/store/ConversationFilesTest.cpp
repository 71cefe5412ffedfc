#include "store/ConversationFiles.h"

#include "base/Uuid.h"
#include "support/FileSizeLimit.h"
#include "support/FileSteps.h"
#include "support/LogRecorder.h"
#include "support/SampleConversation.h"
#include "support/TemporaryHome.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class ConversationFilesTest : public testing::Test {
protected:
    ConversationFilesTest() { files.prepareFolder(); }

    QByteArray pathBytes(const QString &name) const { return QFile::encodeName(folder + u'/' + name); }

    /// Puts a conversation there as another program would, and gives it.
    ConversationFile put(const QString &name, double updatedAt, const QString &title = "T")
    {
        ConversationFile file = sampleConversation(2);
        file.title = title;
        file.updatedAt = updatedAt;
        home.write("Conversations/" + name, encodeConversation(file));
        return file;
    }
    QStringList titles()
    {
        QStringList result;
        for (const ConversationMeta &meta : files.list())
            result.append(meta.title);
        return result;
    }
    QStringList entries() const
    {
        return QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    TemporaryHome home;
    const QString folder = home.path("Conversations");
    ConversationFiles files{folder};
    const QList<ChatMessage> messages = sampleConversation(3).messages;
};

TEST_F(ConversationFilesTest, SavedConversationIsLoadedAndListed)
{
    const QUuid id = newUuid();
    files.save(id, "Title", messages, 100.5);
    const auto file = files.load(id);
    ASSERT_TRUE(file.has_value());
    EXPECT_EQ(*file, (ConversationFile{id, "Title", 100.5, 100.5, messages}));
    EXPECT_EQ(files.list(), (QList<ConversationMeta>{{id, "Title", 100.5, 3}}));
    EXPECT_EQ(entries(), QStringList{uuidText(id) + ".json"});
    EXPECT_EQ(permissionBits(folder + u'/' + uuidText(id) + ".json"), 0600U);
}

TEST_F(ConversationFilesTest, SavingAgainKeepsTheCreationDateAndAdvancesTheOther)
{
    const QUuid id = newUuid();
    files.save(id, "One", messages, 100);
    files.save(id, "Two", {}, 200);
    EXPECT_EQ(files.load(id), (ConversationFile{id, "Two", 100, 200, {}}));
}

TEST_F(ConversationFilesTest, CreationDateIsReadFromAFileThatWasNotListed)
{
    const QUuid id = newUuid();
    files.save(id, "One", messages, 100);
    ConversationFiles restarted(folder);
    restarted.save(id, "Two", messages, 200);
    EXPECT_EQ(restarted.load(id)->createdAt, 100);
}

TEST_F(ConversationFilesTest, CreationDateIsReadFromAFileThatWasReplaced)
{
    const QUuid id = newUuid();
    files.save(id, "One", messages, 100);
    const ConversationFile other = put(uuidText(id) + ".json", 5);
    files.save(id, "Two", messages, 200);
    EXPECT_EQ(files.load(id)->createdAt, other.createdAt);
}

TEST_F(ConversationFilesTest, FileThatCannotBeDecodedIsOverwrittenWithANewCreationDate)
{
    const QUuid id = newUuid();
    home.write("Conversations/" + uuidText(id) + ".json", "{\"createdAt\":5}");
    files.save(id, "One", messages, 100);
    EXPECT_EQ(files.load(id)->createdAt, 100);
}

TEST_F(ConversationFilesTest, OnlyFilesWithExactlyThisEndingAreListed)
{
    for (const char *name : {"notes.txt", "x.JSON", "x.json.bak", "xjson", ".json", "x.json~"})
        put(name, 1, "no");
    put("x.json", 2, "yes");
    put(".hidden.json", 1, "hidden");
    put("ü ñ.json", 0, "umlaut");
    EXPECT_EQ(titles(), (QStringList{"yes", "hidden", "umlaut"}));
}

TEST_F(ConversationFilesTest, IsListedUnderTheIdentifierInsideTheFile)
{
    const ConversationFile file = put("x.json", 1);
    ASSERT_EQ(files.list().size(), 1);
    EXPECT_EQ(files.list().front().id, file.id);
}

TEST_F(ConversationFilesTest, EmptyTitleIsListedAsUntitledAndStaysEmpty)
{
    const QUuid id = newUuid();
    files.save(id, QString(), messages, 100);
    EXPECT_EQ(titles(), QStringList{"Untitled"});
    EXPECT_EQ(ConversationFiles(folder).list().front().title, u"Untitled"_s);
    EXPECT_EQ(files.load(id)->title, QString());
}

TEST_F(ConversationFilesTest, NewestIsFirst)
{
    put("a.json", 1.5, "older");
    put("b.json", 300, "newest");
    put("c.json", -10, "oldest");
    EXPECT_EQ(titles(), (QStringList{"newest", "older", "oldest"}));
}

TEST_F(ConversationFilesTest, EqualDatesKeepTheFoldersOrder)
{
    for (int i = 0; i < 30; ++i)
        put(u"%1.json"_s.arg(i), 7, QString::number(i));
    QStringList expected;
    for (const auto &entry : std::filesystem::directory_iterator(folder.toStdString()))
        expected.append(QString::fromStdString(entry.path().stem().string()));
    EXPECT_EQ(titles(), expected);
}

TEST_F(ConversationFilesTest, WhatDoesNotDecodeHidesNothingAndStays)
{
    put("good.json", 1, "good");
    const QByteArray whole = home.read("Conversations/good.json");
    home.write("Conversations/empty.json", "");
    home.write("Conversations/truncated.json", whole.chopped(whole.size() / 2));
    home.write("Conversations/foreign.json", "{\"mcpServers\":{}}");
    home.write("Conversations/binary.json", QByteArray(5000, '\0'));
    home.write("Conversations/old.json", QByteArray(whole).replace("\"messages\"", "\"texts\""));
    EXPECT_EQ(titles(), QStringList{"good"});
    EXPECT_EQ(titles(), QStringList{"good"});
    EXPECT_EQ(entries().size(), 6);
}

TEST_F(ConversationFilesTest, WhatIsNoFileNeitherHangsNorStopsTheList)
{
    put("good.json", 1, "good");
    ASSERT_TRUE(QDir(folder).mkdir("folder.json"));
    ASSERT_EQ(::mkfifo(pathBytes("pipe.json").constData(), 0600), 0);
    ASSERT_EQ(::symlink("/dev/zero", pathBytes("zero.json").constData()), 0);
    ASSERT_EQ(::symlink("/proc/self/mem", pathBytes("unreadable.json").constData()), 0);
    ASSERT_EQ(::symlink("nowhere", pathBytes("dangling.json").constData()), 0);
    ASSERT_EQ(::symlink("loop.json", pathBytes("loop.json").constData()), 0);
    EXPECT_EQ(titles(), QStringList{"good"});
    EXPECT_EQ(entries().size(), 7);
}

TEST_F(ConversationFilesTest, PipeInAConversationsPlaceNeitherHangsLoadingNorSaving)
{
    const QUuid id = newUuid();
    ASSERT_EQ(::mkfifo(pathBytes(uuidText(id) + ".json").constData(), 0600), 0);
    EXPECT_EQ(files.load(id), std::nullopt);
    files.save(id, "T", messages, 1);
    EXPECT_EQ(files.load(id), std::nullopt);
    EXPECT_TRUE(std::filesystem::is_fifo(pathBytes(uuidText(id) + ".json").toStdString()));
}

TEST_F(ConversationFilesTest, LinkedConversationIsListed)
{
    put("real.txt", 1, "linked");
    ASSERT_EQ(::symlink("real.txt", pathBytes("link.json").constData()), 0);
    EXPECT_EQ(titles(), QStringList{"linked"});
}

TEST_F(ConversationFilesTest, ForeignFilesBehindLinksKeepTheirModeAndContent)
{
    const ConversationFile file = put("real.txt", 1, "linked");
    const QString linked = folder + "/real.txt";
    ASSERT_EQ(::chmod(pathBytes("real.txt").constData(), 0644), 0);
    ASSERT_EQ(::symlink("real.txt", pathBytes(uuidText(file.id) + ".json").constData()), 0);
    ASSERT_EQ(::link(pathBytes("real.txt").constData(), pathBytes("second.json").constData()), 0);
    const QByteArray before = home.read("Conversations/real.txt");
    EXPECT_EQ(titles(), (QStringList{"linked", "linked"}));
    EXPECT_TRUE(files.load(file.id).has_value());
    files.save(file.id, "saved", messages, 2);
    EXPECT_EQ(permissionBits(linked), 0644U);
    EXPECT_EQ(home.read("Conversations/real.txt"), before);
    EXPECT_EQ(titles(), (QStringList{"saved", "linked"}));
}

TEST_F(ConversationFilesTest, FilesTooLargeForMemoryAreNotTouched)
{
    const QUuid id = newUuid();
    const QByteArray path = pathBytes(uuidText(id) + ".json");
    home.write("Conversations/" + uuidText(id) + ".json", "{");
    ASSERT_EQ(::truncate(path.constData(), ConversationFiles::maximumFileBytes + 1), 0);
    EXPECT_TRUE(files.list().isEmpty());
    EXPECT_EQ(files.load(id), std::nullopt);
    EXPECT_EQ(QFileInfo(QFile::decodeName(path)).size(), ConversationFiles::maximumFileBytes + 1);
}

TEST_F(ConversationFilesTest, LargeConversationIsListed)
{
    const QUuid id = newUuid();
    const QList<ChatMessage> large = sampleConversation(10, 100'000, 3'000'000).messages;
    files.save(id, "Large", large, 1);
    EXPECT_EQ(ConversationFiles(folder).list().front().messageCount, 10);
    EXPECT_EQ(files.load(id)->messages, large);
}

TEST_F(ConversationFilesTest, ManyConversationsAreListed)
{
    for (int i = 0; i < 100; ++i)
        put(u"%1.json"_s.arg(i), i, QString::number(i));
    const QStringList listed = titles();
    ASSERT_EQ(listed.size(), 100);
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(listed.at(i), QString::number(99 - i));
}

TEST_F(ConversationFilesTest, ChangesOfOtherProgramsAreSeenByTheNextList)
{
    put("a.json", 1, "a");
    put("b.json", 2, "b");
    EXPECT_EQ(titles(), (QStringList{"b", "a"}));
    put("a.json", 3, "longer");
    ASSERT_TRUE(QFile::remove(folder + "/b.json"));
    put("c.json", 0, "c");
    EXPECT_EQ(titles(), (QStringList{"longer", "c"}));
    home.write("Conversations/a.json", "{");
    EXPECT_EQ(titles(), QStringList{"c"});
}

TEST_F(ConversationFilesTest, WiderPermissionsOfOldAreNarrowed)
{
    put("a.json", 1);
    ASSERT_EQ(::chmod(pathBytes("a.json").constData(), 0644), 0);
    ASSERT_EQ(::chmod(QFile::encodeName(folder).constData(), 0755), 0);
    files.prepareFolder();
    EXPECT_EQ(files.list().size(), 1);
    EXPECT_EQ(permissionBits(folder), 0700U);
    EXPECT_EQ(permissionBits(folder + "/a.json"), 0600U);
}

TEST_F(ConversationFilesTest, MissingFolderIsAnEmptyList)
{
    ASSERT_TRUE(QDir(folder).removeRecursively());
    EXPECT_TRUE(files.list().isEmpty());
    const LogRecorder log;
    EXPECT_EQ(files.load(newUuid()), std::nullopt);
    EXPECT_EQ(log.lines().join(u'\n'),
              "morvane.store: a conversation was not opened: \"No such file or directory\"");
    files.remove(newUuid());
    EXPECT_EQ(log.lines().size(), 1);
}

TEST_F(ConversationFilesTest, FolderThatVanishedIsCreatedBySaving)
{
    ASSERT_TRUE(QDir(folder).removeRecursively());
    files.save(newUuid(), "T", messages, 1);
    EXPECT_EQ(titles(), QStringList{"T"});
}

TEST_F(ConversationFilesTest, FolderThatCannotBeMadeMakesSavesWithoutEffect)
{
    home.write("file", "x");
    ConversationFiles blocked(home.path("file/Conversations"));
    blocked.prepareFolder();
    const LogRecorder log;
    blocked.save(newUuid(), "T", messages, 1);
    EXPECT_TRUE(blocked.list().isEmpty());
    EXPECT_EQ(log.lines().join(u'\n'),
              "morvane.store: a conversation could not be saved: \"Not a directory\"");
}

TEST_F(ConversationFilesTest, FullDiskLeavesTheOldFile)
{
    const QUuid id = newUuid();
    files.save(id, "Old", messages, 1);
    const QByteArray before = home.read("Conversations/" + uuidText(id) + ".json");
    {
        const FileSizeLimit full(500);
        files.save(id, "New", messages, 2);
    }
    EXPECT_EQ(home.read("Conversations/" + uuidText(id) + ".json"), before);
    EXPECT_EQ(entries().size(), 1);
    EXPECT_EQ(titles(), QStringList{"Old"});
}

TEST_F(ConversationFilesTest, FolderInAFilesPlaceIsNotReplaced)
{
    const QUuid id = newUuid();
    ASSERT_TRUE(QDir(folder).mkpath(uuidText(id) + ".json/inside"));
    files.save(id, "T", messages, 1);
    EXPECT_TRUE(QFileInfo(folder + u'/' + uuidText(id) + ".json/inside").isDir());
    const LogRecorder log;
    files.remove(id);
    EXPECT_EQ(log.lines().join(u'\n'),
              "morvane.store: a conversation could not be removed: \"Is a directory\"");
    EXPECT_TRUE(QFileInfo(folder + u'/' + uuidText(id) + ".json/inside").isDir());
    EXPECT_EQ(entries().size(), 1);
}

TEST_F(ConversationFilesTest, RemovingTwiceDoesNothingTheSecondTime)
{
    const QUuid id = newUuid();
    files.save(id, "T", messages, 1);
    files.save(newUuid(), "Other", messages, 2);
    files.remove(id);
    EXPECT_EQ(titles(), QStringList{"Other"});
    files.remove(id);
    EXPECT_EQ(titles(), QStringList{"Other"});
}

TEST_F(ConversationFilesTest, WhatACrashedWriteLeftIsRemovedAtTheStart)
{
    home.write("Conversations/.morvane-write-abcdef", "a secret");
    files.prepareFolder();
    EXPECT_TRUE(entries().isEmpty());
}

TEST_F(ConversationFilesTest, SavedConversationIsOnTheDiskBeforeItReplacesTheOlderOne)
{
    const FileSteps steps;
    const QUuid id = newUuid();
    files.save(id, "Title", messages, 1);
    struct stat status{};
    ASSERT_EQ(::stat(pathBytes(uuidText(id) + ".json").constData(), &status), 0);
    ASSERT_EQ(steps.all().size(), 3);
    EXPECT_EQ(steps.all().at(0).kind, FileSteps::Step::Kind::synced);
    EXPECT_EQ(steps.all().at(0).inode, status.st_ino);
    EXPECT_EQ(steps.all().at(0).size, status.st_size);
    EXPECT_EQ(steps.all().at(1).kind, FileSteps::Step::Kind::renamed);
    EXPECT_EQ(steps.all().at(2).kind, FileSteps::Step::Kind::synced);
}

TEST_F(ConversationFilesTest, FileThatHasAnotherNameElsewhereKeepsItsMode)
{
    put("a.json", 1);
    put("b.json", 2);
    ASSERT_EQ(::link(pathBytes("a.json").constData(), QFile::encodeName(home.path("shared")).constData()), 0);
    for (const char *name : {"a.json", "b.json"})
        ASSERT_EQ(::chmod(pathBytes(name).constData(), 0644), 0);
    EXPECT_EQ(titles().size(), 2);
    EXPECT_EQ(permissionBits(home.path("shared")), 0644U);
    EXPECT_EQ(permissionBits(folder + "/b.json"), 0600U);
}

} // namespace
} // namespace morvane
