#include "ui/find/MessageSearch.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

ChatMessage message(Role role, const QString &text)
{
    ChatMessage result;
    result.role = role;
    result.text = text;
    return result;
}

MessageSearch search(const QList<ChatMessage> &messages, const QString &words)
{
    return MessageSearch::run(messages, words, false);
}

TEST(MessageSearchTest, CountsEveryPlaceWhateverTheCase)
{
    const auto found =
        search({message(Role::user, u"Rain, rain and RAIN"_s), message(Role::user, u"sun"_s)}, u"rain"_s);
    ASSERT_EQ(found.count(), 3);
    EXPECT_EQ(found.at(2), (FoundText{.message = 0, .part = RowPart::body, .from = 0, .occurrence = 2}));
}

TEST(MessageSearchTest, ReadsWhatIsShownAndNotItsMarks)
{
    const QList<ChatMessage> messages{
        message(Role::assistant, u"A **bold** word\n\n```python\nx = 1\n```"_s)};
    EXPECT_EQ(search(messages, u"a bold word"_s).count(), 1);
    EXPECT_EQ(search(messages, u"**"_s).count(), 0);
    EXPECT_EQ(search(messages, u"python"_s).count(), 0);
    EXPECT_EQ(search(messages, u"x = 1"_s).count(), 1);
}

TEST(MessageSearchTest, TheUsersOwnMarksAreText)
{
    EXPECT_EQ(search({message(Role::user, u"**bold**"_s)}, u"**"_s).count(), 2);
}

TEST(MessageSearchTest, ReadsNamesOfFilesAndErrors)
{
    ChatMessage asked = message(Role::user, u"look"_s);
    ChatAttachment picture;
    picture.filename = u"holiday.png"_s;
    asked.attachments.append(picture);
    ChatMessage failed = message(Role::assistant, u"Well."_s);
    failed.errorMessage = u"No holiday today"_s;
    const auto found = search({asked, failed}, u"holiday"_s);
    ASSERT_EQ(found.count(), 2);
    EXPECT_EQ(found.at(0).part, RowPart::attachments);
    EXPECT_EQ(found.at(1).part, RowPart::error);
}

TEST(MessageSearchTest, StartsWithTheMessageInSight)
{
    const auto found = search({message(Role::user, u"a a"_s), message(Role::user, u"b"_s),
                               message(Role::user, u"a"_s), message(Role::user, u"b"_s)},
                              u"a"_s);
    EXPECT_EQ(found.firstFrom(0), 0);
    EXPECT_EQ(found.firstFrom(1), 2);
    EXPECT_EQ(found.firstFrom(3), 0);
    for (qsizetype i = 0; i < found.count(); ++i)
        EXPECT_EQ(found.indexOf(found.at(i)), i);
    EXPECT_EQ(found.indexOf({.message = 1, .part = RowPart::body, .from = 0, .occurrence = 0}), -1);
}

TEST(MessageSearchTest, NothingIsFoundOfNothing)
{
    EXPECT_EQ(search({}, u"a"_s).count(), 0);
    EXPECT_EQ(search({message(Role::user, u"a"_s)}, QString()).count(), 0);
    EXPECT_EQ(search({message(Role::user, QString())}, u"a"_s).count(), 0);
}

TEST(MessageSearchTest, AMillionPlacesAreKeptBySegments)
{
    const auto found = search({message(Role::user, u"aa aa\n"_s.repeated(250'000))}, u"a"_s);
    ASSERT_EQ(found.count(), 1'000'000);
    EXPECT_EQ(found.indexOf(found.at(999'999)), 999'999);
}

TEST(MessageSearchTest, AStoppedSearchReadsNoFurther)
{
    const auto found = MessageSearch::run({message(Role::user, u"a"_s)}, u"a"_s, true);
    EXPECT_EQ(found.count(), 0);
}

} // namespace
} // namespace morvane
