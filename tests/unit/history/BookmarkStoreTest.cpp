#include "browser/history/BookmarkStore.h"

#include "base/Uuid.h"
#include "browser/history/BrowserRecordsJson.h"
#include "support/TemporaryHome.h"
#include "support/WaitUntil.h"

#include <QFileInfo>
#include <gtest/gtest.h>
#include <memory>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class BookmarkStoreTest : public testing::Test {
protected:
    std::unique_ptr<BookmarkStore> startedStore()
    {
        auto store = std::make_unique<BookmarkStore>(home.path(u"Morvane"_s));
        QObject::connect(store.get(), &BookmarkStore::added, store.get(),
                         [this](const BrowserBookmark &bookmark) { told += u"added "_s + bookmark.title; });
        QObject::connect(store.get(), &BookmarkStore::removed, store.get(),
                         [this](const BrowserBookmark &bookmark) { told += u"removed "_s + bookmark.title; });
        QObject::connect(store.get(), &BookmarkStore::changed, store.get(), [this] { told += u"changed"_s; });
        return store;
    }

    /// One that has read its file.
    std::unique_ptr<BookmarkStore> readStore()
    {
        auto store = startedStore();
        EXPECT_TRUE(waitUntil([this] { return told == QStringList{u"changed"_s}; }));
        told.clear();
        return store;
    }

    TemporaryHome home;
    const QString file = u"Morvane/browser-bookmarks.json"_s;
    QStringList told;
};

TEST_F(BookmarkStoreTest, ABookmarkIsAddedAtTheEndAndWritten)
{
    auto store = readStore();
    store->add(u"https://a.test/"_s, u"A"_s);
    store->add(u"https://b.test/"_s, u"B"_s);
    const auto bookmarks = store->bookmarks();
    ASSERT_EQ(bookmarks.size(), 2);
    EXPECT_EQ(bookmarks[1].url, u"https://b.test/"_s);
    EXPECT_EQ(bookmarks[1].title, u"B"_s);
    EXPECT_EQ(told, (QStringList{u"added A"_s, u"changed"_s, u"added B"_s, u"changed"_s}));
    store.reset();
    EXPECT_EQ(bookmarksFromJson(home.read(file)), bookmarks);
    EXPECT_EQ(permissionBits(home.path(file)), 0600U);
    told.clear();
    EXPECT_EQ(readStore()->bookmarks(), bookmarks);
}

TEST_F(BookmarkStoreTest, TheSamePageTwiceIsOneBookmark)
{
    const auto store = readStore();
    store->add(u"https://a.test/"_s, u"A"_s);
    told.clear();
    store->add(u"https://a.test/"_s, u"Another title"_s);
    EXPECT_EQ(store->bookmarks().size(), 1);
    EXPECT_EQ(store->bookmarks()[0].title, u"A"_s);
    EXPECT_TRUE(told.isEmpty());
}

TEST_F(BookmarkStoreTest, AnEmptyAddressIsNoBookmark)
{
    auto store = readStore();
    store->add(QString(), u"A"_s);
    EXPECT_TRUE(store->bookmarks().isEmpty());
    store.reset();
    EXPECT_FALSE(QFileInfo::exists(home.path(file)));
}

TEST_F(BookmarkStoreTest, ATitleOfAnyLengthIsCut)
{
    const auto store = readStore();
    store->add(u"https://a.test/"_s, QString(1'000'000, u'x'));
    EXPECT_EQ(store->bookmarks()[0].title, QString(1'000, u'x'));
}

TEST_F(BookmarkStoreTest, RemovingIsToldAndWritten)
{
    auto store = readStore();
    store->add(u"https://a.test/"_s, u"A"_s);
    store->add(u"https://b.test/"_s, u"B"_s);
    told.clear();
    store->remove(store->bookmarks()[0].id);
    EXPECT_EQ(told, (QStringList{u"removed A"_s, u"changed"_s}));
    const auto bookmarks = store->bookmarks();
    ASSERT_EQ(bookmarks.size(), 1);
    store->remove(newUuid());
    EXPECT_EQ(told.size(), 2);
    store.reset();
    EXPECT_EQ(bookmarksFromJson(home.read(file)), bookmarks);
}

TEST_F(BookmarkStoreTest, WhatIsAskedForWhileTheFileIsBeingReadIsDoneWithWhatItHolds)
{
    const QList<BrowserBookmark> older{{newUuid(), u"A"_s, u"https://a.test/"_s},
                                       {newUuid(), u"B"_s, u"https://b.test/"_s}};
    home.write(file, bookmarksToJson(older));
    const auto store = startedStore();
    store->add(u"https://b.test/"_s, u"Again"_s);
    store->add(u"https://c.test/"_s, u"C"_s);
    store->remove(older[0].id);
    EXPECT_TRUE(told.isEmpty());
    ASSERT_TRUE(waitUntil([&] { return !told.isEmpty(); }));
    EXPECT_EQ(told, (QStringList{u"added C"_s, u"removed A"_s, u"changed"_s}));
    ASSERT_EQ(store->bookmarks().size(), 2);
    EXPECT_EQ(store->bookmarks()[0], older[1]);
    EXPECT_EQ(store->bookmarks()[1].title, u"C"_s);
}

TEST_F(BookmarkStoreTest, AProgramThatEndsBeforeTheFileIsReadLosesNothingAndTellsNobody)
{
    const QList<BrowserBookmark> older{{newUuid(), u"A"_s, u"https://a.test/"_s}};
    home.write(file, bookmarksToJson(older));
    startedStore()->add(u"https://b.test/"_s, u"B"_s);
    EXPECT_EQ(bookmarksFromJson(home.read(file)).value_or(older).size(), 2);
    EXPECT_TRUE(told.isEmpty());
}

TEST_F(BookmarkStoreTest, ADamagedFileCountsAsEmptyAndStaysUntilTheNextChange)
{
    home.write(file, "{}");
    auto store = readStore();
    EXPECT_TRUE(store->bookmarks().isEmpty());
    store.reset();
    EXPECT_EQ(home.read(file), "{}");
}

TEST_F(BookmarkStoreTest, ClearingRemovesTheFileAndTheNextBookmarkBringsItBack)
{
    auto store = readStore();
    store->add(u"https://a.test/"_s, u"A"_s);
    store->clear();
    EXPECT_TRUE(store->bookmarks().isEmpty());
    store.reset();
    EXPECT_FALSE(QFileInfo::exists(home.path(file)));
    told.clear();
    store = readStore();
    store->add(u"https://b.test/"_s, u"B"_s);
    store.reset();
    EXPECT_TRUE(QFileInfo::exists(home.path(file)));
}

} // namespace
} // namespace morvane
