#include "MorvaneTest.h"

#include "support/FakeNotificationDaemon.h"
#include "support/WaitUntil.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// Reminders that the model sets, from the call to the moment when they are heard.
class ReminderTest : public MorvaneTest {
protected:
    /// A session, not started yet, whose model sets a reminder of the plants, three seconds ahead.
    MorvaneSession &prepareReminder()
    {
        return prepare({callingTool("set_reminder", R"({"message":"water the plants","minutes":0.05})"),
                        ScriptedTurn::saying({"I will remind you."})});
    }
    /// Asks for the reminder and waits until it is stored.
    static void setReminder(MorvaneSession &morvane)
    {
        morvane.send(u"Remind me"_s);
        ASSERT_TRUE(waitUntil([&] { return morvane.settingsText().contains("water the plants"); }));
    }
    /// Whether the store has no reminder any more, now or soon.
    static bool storesNone(const MorvaneSession &morvane)
    {
        return waitUntil([&] { return morvane.settingsText().contains("pendingReminders=@ByteArray([])"); });
    }

    static qsizetype heard(MorvaneSession &morvane, const QString &text)
    {
        return morvane.ear().heard().count(text);
    }

    static qsizetype reminders(const FakeNotificationDaemon &daemon)
    {
        return std::count_if(daemon.shown().cbegin(), daemon.shown().cend(),
                             [](const auto &banner) { return banner.title == u"Reminder"_s; });
    }
};

TEST_F(ReminderTest, AReminderIsSpokenOnceAndLeavesNothingBehind)
{
    MorvaneSession &morvane =
        start({callingTool("set_reminder", R"({"message":"time to stretch","minutes":0.02})"),
               ScriptedTurn::saying({"I will remind you."})});
    morvane.send(u"Remind me"_s);
    EXPECT_TRUE(morvane.ear().hears(u"Reminder: time to stretch"_s));
    EXPECT_TRUE(storesNone(morvane)) << morvane.settingsText().toStdString();
    EXPECT_TRUE(morvane.hasStatus(u"Ready"_s));
    EXPECT_EQ(heard(morvane, u"Reminder: time to stretch"_s), 1);
}

TEST_F(ReminderTest, AReminderOutlivesARestart)
{
    MorvaneSession &morvane = prepareReminder();
    morvane.start();
    setReminder(morvane);
    morvane.quit();
    morvane.start();
    EXPECT_TRUE(morvane.ear().hears(u"Reminder: water the plants"_s));
    EXPECT_TRUE(storesNone(morvane));
}

TEST_F(ReminderTest, AReminderOfAnEndedProgramIsShownAsABanner)
{
    MorvaneSession &morvane = prepareReminder();
    const FakeNotificationDaemon daemon(morvane.desktop().sessionBusAddress());
    morvane.start();
    setReminder(morvane);
    morvane.quit();
    EXPECT_TRUE(waitUntil([&] { return reminders(daemon) == 1; }));
    EXPECT_TRUE(storesNone(morvane));
}

TEST_F(ReminderTest, AReminderIsAlsoSeenWhileTheUserWorksElsewhere)
{
    MorvaneSession &morvane = prepareReminder();
    const FakeNotificationDaemon daemon(morvane.desktop().sessionBusAddress());
    morvane.start();
    setReminder(morvane);
    const xcb_window_t other = morvane.screen().openWindow();
    ASSERT_TRUE(waitUntil([&] { return morvane.screen().activeWindow() == other; }));
    EXPECT_TRUE(morvane.ear().hears(u"Reminder: water the plants"_s));
    EXPECT_TRUE(waitUntil([&] { return reminders(daemon) == 1; }));
    EXPECT_EQ(heard(morvane, u"Reminder: water the plants"_s), 1);
}

TEST_F(ReminderTest, TheEndOfARequestIsABannerThatBringsTheWindowBack)
{
    MorvaneSession &morvane = prepare({ScriptedTurn::saying({"Done."})});
    FakeNotificationDaemon daemon(morvane.desktop().sessionBusAddress());
    morvane.start();
    const xcb_window_t window = morvane.screen().activeWindow();
    morvane.send(u"Hello"_s);
    ASSERT_TRUE(waitUntil([&] { return daemon.shown().size() == 1; }));
    EXPECT_EQ(daemon.shown().front().title, u"Response ready"_s);
    EXPECT_EQ(daemon.shown().front().body, QString());
    ASSERT_TRUE(morvane.hasStatus(u"Ready"_s));
    const xcb_window_t other = morvane.screen().openWindow();
    ASSERT_TRUE(waitUntil([&] { return morvane.screen().activeWindow() == other; }));
    daemon.choose(1);
    EXPECT_TRUE(waitUntil([&] { return morvane.screen().activeWindow() == window; }));
}

} // namespace
} // namespace morvane
