#include "browser/history/BrowserRecordsJson.h"

#include "base/Uuid.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

const QUuid someID = *uuidFromText(u"0a1b2c3d-4e5f-6071-8293-a4b5c6d7e8f9");

QByteArray withoutKey(QByteArray object, const QByteArray &key)
{
    const auto from = object.indexOf('"' + key + '"');
    auto to = object.indexOf(',', from);
    if (to < 0)
        return object.first(from - 1) + object.sliced(object.indexOf('}'));
    return object.remove(from, to - from + 1);
}

const QByteArray entryText =
    R"({"id":"0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9","title":"T","url":"https://h.test/",)"
    R"("host":"h.test","visitedAt":8.1E8,"visitCount":3})";
const QByteArray bookmarkText =
    R"({"id":"0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9","title":"T","url":"https://h.test/"})";

TEST(BrowserRecordsJsonTest, AnEntryIsWrittenCompactWithItsKeysInOrder)
{
    const QList<BrowserHistoryEntry> history{{someID, u"T"_s, u"https://h.test/"_s, u"h.test"_s, 8.1e8, 3}};
    EXPECT_EQ(historyToJson(history), '[' + entryText + ']');
    EXPECT_EQ(historyFromJson('[' + entryText + ']'), history);
}

TEST(BrowserRecordsJsonTest, ABookmarkIsWrittenCompactWithItsKeysInOrder)
{
    const QList<BrowserBookmark> bookmarks{{someID, u"T"_s, u"https://h.test/"_s}};
    EXPECT_EQ(bookmarksToJson(bookmarks), '[' + bookmarkText + ']');
    EXPECT_EQ(bookmarksFromJson('[' + bookmarkText + ']'), bookmarks);
}

TEST(BrowserRecordsJsonTest, FractionsOfSecondsAndAnyTextSurvive)
{
    const QList<BrowserHistoryEntry> history{{newUuid(), u"\"Grüße\" \\ \n👩‍👩‍👧"_s,
                                              u"https://h.test/?q=%22"_s, u"h.test"_s, 812345678.123456, 1},
                                             {newUuid(), QString(), u"http://[::1]/"_s, u"::1"_s, -0.5, -7}};
    EXPECT_EQ(historyFromJson(historyToJson(history)), history);
}

TEST(BrowserRecordsJsonTest, NoRecordsAreAnEmptyArray)
{
    EXPECT_EQ(historyToJson({}), "[]");
    EXPECT_EQ(historyFromJson("[]"), QList<BrowserHistoryEntry>());
    EXPECT_EQ(bookmarksFromJson("[]"), QList<BrowserBookmark>());
}

TEST(BrowserRecordsJsonTest, EveryKeyIsRequired)
{
    for (const char *key : {"id", "title", "url", "host", "visitedAt", "visitCount"})
        EXPECT_EQ(historyFromJson('[' + withoutKey(entryText, key) + ']'), std::nullopt) << key;
    for (const char *key : {"id", "title", "url"})
        EXPECT_EQ(bookmarksFromJson('[' + withoutKey(bookmarkText, key) + ']'), std::nullopt) << key;
}

TEST(BrowserRecordsJsonTest, OneWrongRecordSpoilsTheWholeFile)
{
    EXPECT_EQ(historyFromJson('[' + entryText + ",5]"), std::nullopt);
    EXPECT_EQ(bookmarksFromJson('[' + bookmarkText + R"(,{"id":"x","title":"","url":""}])"), std::nullopt);
}

TEST(BrowserRecordsJsonTest, UnknownKeysArePassedOver)
{
    QByteArray text = '[' + bookmarkText + ']';
    text.insert(text.indexOf("\"title\""), R"("color":"red",)");
    EXPECT_EQ(bookmarksFromJson(text)->size(), 1);
}

TEST(BrowserRecordsJsonTest, WhatIsNoArrayIsUnreadable)
{
    for (const QByteArray &text : {QByteArray(), QByteArray("null"), QByteArray("{}"), entryText,
                                   QByteArray('[' + entryText), QByteArray("\xff\xfe[]")}) {
        EXPECT_EQ(historyFromJson(text), std::nullopt) << text.toStdString();
        EXPECT_EQ(bookmarksFromJson(text), std::nullopt) << text.toStdString();
    }
}

} // namespace
} // namespace morvane
