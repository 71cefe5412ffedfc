#include "browser/history/HistoryStore.h"

#include "base/Uuid.h"
#include "browser/history/BrowserRecordsJson.h"
#include "support/TemporaryHome.h"
#include "support/WaitUntil.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <gtest/gtest.h>
#include <memory>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class HistoryStoreTest : public testing::Test {
protected:
    static constexpr double day = 86'400;

    std::unique_ptr<HistoryStore> startedStore()
    {
        return std::make_unique<HistoryStore>(home.path(u"Morvane"_s), [this] { return now; });
    }

    /// One that has read its file.
    std::unique_ptr<HistoryStore> readStore()
    {
        auto store = startedStore();
        const QSignalSpy changes(store.get(), &HistoryStore::changed);
        EXPECT_TRUE(waitUntil([&changes] { return !changes.isEmpty(); }));
        return store;
    }

    QList<BrowserHistoryEntry> onDisk() const
    {
        return historyFromJson(home.read(file)).value_or(notReadable);
    }

    BrowserHistoryEntry entry(const QString &url, double visitedAt) const
    {
        return {newUuid(), u"Title"_s, url, u"a.test"_s, visitedAt, 1};
    }

    TemporaryHome home;
    const QString file = u"Morvane/browser-history.json"_s;
    const QList<BrowserHistoryEntry> notReadable{{newUuid(), u"the file cannot be read"_s, {}, {}, 0, 0}};
    double now = 8e8;
};

TEST_F(HistoryStoreTest, AVisitIsOnTheDiskForTheUserAlone)
{
    auto store = readStore();
    store->record(u"https://a.test/"_s, u"A"_s);
    const auto entries = store->entries();
    ASSERT_EQ(entries.size(), 1);
    store.reset();
    EXPECT_EQ(onDisk(), entries);
    EXPECT_EQ(permissionBits(home.path(file)), 0600U);
    EXPECT_EQ(permissionBits(home.path(u"Morvane"_s)), 0700U);
    EXPECT_EQ(QDir(home.path(u"Morvane"_s)).entryList(QDir::Files | QDir::Hidden),
              QStringList{u"browser-history.json"_s});
}

TEST_F(HistoryStoreTest, WhatWasWrittenIsReadAtTheNextStart)
{
    auto store = readStore();
    store->record(u"https://a.test/"_s, u"A"_s);
    store->record(u"https://b.test/"_s, u"B"_s);
    const auto entries = store->entries();
    store.reset();
    EXPECT_EQ(readStore()->entries(), entries);
}

TEST_F(HistoryStoreTest, VisitsWhileTheFileIsBeingReadAreAddedToWhatItHolds)
{
    home.write(file,
               historyToJson({entry(u"https://a.test/"_s, now - 5), entry(u"https://b.test/"_s, now - 60)}));
    const auto store = startedStore();
    store->record(u"https://a.test/"_s, u"A"_s);
    store->record(u"https://c.test/"_s, u"C"_s);
    EXPECT_TRUE(store->entries().isEmpty());
    ASSERT_TRUE(waitUntil([&] { return !store->entries().isEmpty(); }));
    ASSERT_EQ(store->entries().size(), 3);
    EXPECT_EQ(store->entries()[0].url, u"https://c.test/"_s);
    EXPECT_EQ(store->entries()[1].url, u"https://a.test/"_s);
    EXPECT_EQ(store->entries()[1].visitCount, 2);
    EXPECT_EQ(store->entries()[2].url, u"https://b.test/"_s);
}

TEST_F(HistoryStoreTest, AVisitIsWrittenThoughOneThatLeavesNoTraceFollowsIt)
{
    auto store = startedStore();
    store->record(u"https://a.test/"_s, u"A"_s);
    store->record(u"about:blank"_s, {});
    ASSERT_TRUE(waitUntil([&] { return !store->entries().isEmpty(); }));
    store.reset();
    ASSERT_EQ(onDisk().size(), 1);
    EXPECT_EQ(onDisk().first().url, u"https://a.test/"_s);
}

TEST_F(HistoryStoreTest, AProgramThatEndsBeforeTheFileIsReadLosesNothing)
{
    const QList<BrowserHistoryEntry> older{entry(u"https://b.test/"_s, now - 60)};
    home.write(file, historyToJson(older));
    startedStore()->record(u"https://a.test/"_s, u"A"_s);
    const auto entries = onDisk();
    ASSERT_EQ(entries.size(), 2);
    EXPECT_EQ(entries[0].url, u"https://a.test/"_s);
    EXPECT_EQ(entries[1], older[0]);
}

TEST_F(HistoryStoreTest, ADamagedFileCountsAsEmptyAndIsReplacedByTheNextVisit)
{
    home.write(file, "[{\"id\":");
    auto store = readStore();
    EXPECT_TRUE(store->entries().isEmpty());
    EXPECT_EQ(home.read(file), "[{\"id\":");
    store->record(u"https://a.test/"_s, u"A"_s);
    store.reset();
    EXPECT_EQ(onDisk().size(), 1);
    EXPECT_EQ(onDisk()[0].url, u"https://a.test/"_s);
}

TEST_F(HistoryStoreTest, AFolderInTheFilesPlaceIsPassedOver)
{
    ASSERT_TRUE(QDir().mkpath(home.path(file)));
    auto store = readStore();
    store->record(u"https://a.test/"_s, u"A"_s);
    EXPECT_EQ(store->entries().size(), 1);
    store.reset();
    EXPECT_TRUE(QFileInfo(home.path(file)).isDir());
}

TEST_F(HistoryStoreTest, AFileThatIsTooLargeIsNotRead)
{
    QFile large(home.write(file, "[]"));
    ASSERT_TRUE(large.open(QFile::ReadWrite));
    ASSERT_TRUE(large.seek(2));
    large.write(QByteArray(RecordsFile::maximumBytes, ' ')); // an array followed by blanks is well-formed
    large.close();
    home.write(u"Morvane/small"_s, "x");
    const auto store = readStore();
    EXPECT_TRUE(store->entries().isEmpty());
}

TEST_F(HistoryStoreTest, AnEntryOfNinetyOneDaysAgoDisappearsAtTheStartAndStaysInTheFile)
{
    const QList<BrowserHistoryEntry> entries{entry(u"https://new.test/"_s, now - day),
                                             entry(u"https://old.test/"_s, now - 91 * day)};
    home.write(file, historyToJson(entries));
    auto store = readStore();
    EXPECT_EQ(store->entries(), entries.first(1));
    store.reset();
    EXPECT_EQ(onDisk(), entries);
}

TEST_F(HistoryStoreTest, WhatIsNotRecordedIsNotWritten)
{
    auto store = readStore();
    QSignalSpy changes(store.get(), &HistoryStore::changed);
    store->record(u"about:blank"_s, u"A"_s);
    EXPECT_EQ(changes.count(), 0);
    store.reset();
    EXPECT_FALSE(QFileInfo::exists(home.path(file)));
}

TEST_F(HistoryStoreTest, RemovingAnEntryIsWritten)
{
    auto store = readStore();
    store->record(u"https://a.test/"_s, u"A"_s);
    store->record(u"https://b.test/"_s, u"B"_s);
    store->remove(store->entries()[0].id);
    store->remove(newUuid());
    ASSERT_EQ(store->entries().size(), 1);
    const auto entries = store->entries();
    EXPECT_EQ(entries[0].url, u"https://a.test/"_s);
    store.reset();
    EXPECT_EQ(onDisk(), entries);
}

TEST_F(HistoryStoreTest, ClearingRemovesTheFileAndTheNextVisitBringsItBack)
{
    auto store = readStore();
    store->record(u"https://a.test/"_s, u"A"_s);
    store->clear();
    EXPECT_TRUE(store->entries().isEmpty());
    store.reset();
    EXPECT_FALSE(QFileInfo::exists(home.path(file)));

    store = readStore();
    store->clear();
    store->record(u"https://b.test/"_s, u"B"_s);
    store.reset();
    EXPECT_EQ(onDisk()[0].url, u"https://b.test/"_s);
}

TEST_F(HistoryStoreTest, ClearingWhileTheFileIsBeingReadForgetsWhatItHolds)
{
    home.write(file, historyToJson({entry(u"https://b.test/"_s, now - 60)}));
    auto store = startedStore();
    store->record(u"https://a.test/"_s, u"A"_s);
    store->clear();
    store->record(u"https://c.test/"_s, u"C"_s);
    QCoreApplication::processEvents();
    ASSERT_EQ(store->entries().size(), 1);
    const auto entries = store->entries();
    EXPECT_EQ(entries[0].url, u"https://c.test/"_s);
    store.reset();
    EXPECT_EQ(onDisk(), entries);
}

TEST_F(HistoryStoreTest, TheLastOfManyVisitsIsWhatIsWritten)
{
    auto store = readStore();
    for (int i = 0; i < 300; ++i)
        store->record(u"https://a.test/%1"_s.arg(i), u"A"_s);
    const auto entries = store->entries();
    store.reset();
    EXPECT_EQ(onDisk(), entries);
}

TEST_F(HistoryStoreTest, TheQueryIsTakenAsItIsTyped)
{
    const auto store = readStore();
    store->record(u"https://host.test/"_s, u"A"_s);
    EXPECT_EQ(store->search(u"HOST"_s), store->entries());
    EXPECT_TRUE(store->search(u"host "_s).isEmpty());
}

} // namespace
} // namespace morvane
