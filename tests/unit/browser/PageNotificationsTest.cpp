#include "browser/tabs/PageNotifications.h"

#include "browser/pages/PageNotification.h"
#include "browser/pages/PageText.h"
#include "support/FakeNotificationCenter.h"

#include <gmock/gmock.h>

namespace morvane {
namespace {

class PageNotificationsTest : public testing::Test {
protected:
    NotificationRequest show(const PageNotification &notification)
    {
        notifications.show(notification);
        return center.added.last();
    }

    FakeNotificationCenter center;
    PageNotifications notifications{center};
};

TEST_F(PageNotificationsTest, ASiteHasOneBanner)
{
    const NotificationRequest first = show({"a.test", "Mail", "From Ann"});
    EXPECT_EQ(first.title, "a.test: Mail");
    EXPECT_EQ(first.body, "From Ann");
    EXPECT_EQ(first.delay, std::nullopt);
    EXPECT_EQ(show({"a.test", "Chat", "From Bob"}).identifier, first.identifier);
    EXPECT_NE(show({"b.test", "Mail", "From Ann"}).identifier, first.identifier);
}

TEST_F(PageNotificationsTest, NothingInItIsHiddenOrTurnsTheWordsAround)
{
    const QString rightToLeft(QChar(0x202E));
    const QString bell(QChar(0x07));
    const NotificationRequest shown =
        show({"a" + rightToLeft + ".test", "One" + rightToLeft, "two" + bell + "\r\nthree"});
    EXPECT_EQ(shown.title, "a\\u202E.test: One\\u202E");
    EXPECT_EQ(shown.body, "two\\u0007 three");
    EXPECT_EQ(show({"", "Mail", ""}).title, "This page: Mail");
}

TEST_F(PageNotificationsTest, ItIsBounded)
{
    const QString megabyte(1024 * 1024, 'x');
    const NotificationRequest shown = show({"a.test", megabyte, megabyte});
    EXPECT_LE(shown.title.size(), 2 * longestPageText);
    EXPECT_LE(shown.body.size(), 2 * longestPageText);
}

} // namespace
} // namespace morvane
