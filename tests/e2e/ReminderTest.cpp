#include "MorvaneTest.h"

#include "support/FakeNotificationDaemon.h"
#include "support/WaitUntil.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace morvane {
namespace {

/// Reminders that the model sets, from the call to the moment when they are heard.
class ReminderTest : public MorvaneTest {
protected:
    static qsizetype heard(MorvaneSession &morvane, const QString &text)
    {
        return morvane.ear().heard().count(text);
    }

    static qsizetype reminders(const FakeNotificationDaemon &daemon)
    {
        return std::count_if(daemon.shown().cbegin(), daemon.shown().cend(),
                             [](const auto &banner) { return banner.title == QStringLiteral("Reminder"); });
    }
};

TEST_F(ReminderTest, AReminderIsSpokenOnceAndLeavesNothingBehind)
{
    MorvaneSession &morvane =
        start({callingTool("set_reminder", R"({"message":"time to stretch","minutes":0.02})"),
               ScriptedTurn::saying({"I will remind you."})});
    morvane.send(QStringLiteral("Remind me"));
    EXPECT_TRUE(morvane.ear().hears(QStringLiteral("Reminder: time to stretch")));
    EXPECT_TRUE(waitUntil([&] { return morvane.settingsText().contains("pendingReminders=@ByteArray([])"); }))
        << morvane.settingsText().toStdString();
    EXPECT_TRUE(morvane.hasStatus(QStringLiteral("Ready")));
    EXPECT_EQ(heard(morvane, QStringLiteral("Reminder: time to stretch")), 1);
}

TEST_F(ReminderTest, AReminderOutlivesARestart)
{
    MorvaneSession &morvane =
        start({callingTool("set_reminder", R"({"message":"water the plants","minutes":0.05})"),
               ScriptedTurn::saying({"I will remind you."})});
    morvane.send(QStringLiteral("Remind me"));
    ASSERT_TRUE(waitUntil([&] { return morvane.settingsText().contains("water the plants"); }));
    morvane.quit();
    morvane.start();
    EXPECT_TRUE(morvane.ear().hears(QStringLiteral("Reminder: water the plants")));
    EXPECT_TRUE(
        waitUntil([&] { return morvane.settingsText().contains("pendingReminders=@ByteArray([])"); }));
}

TEST_F(ReminderTest, AReminderOfAnEndedProgramIsShownAsABanner)
{
    MorvaneSession &morvane =
        prepare({callingTool("set_reminder", R"({"message":"water the plants","minutes":0.05})"),
                 ScriptedTurn::saying({"I will remind you."})});
    const FakeNotificationDaemon daemon(morvane.desktop().sessionBusAddress());
    morvane.start();
    morvane.send(QStringLiteral("Remind me"));
    ASSERT_TRUE(waitUntil([&] { return morvane.settingsText().contains("water the plants"); }));
    morvane.quit();
    EXPECT_TRUE(waitUntil([&] { return reminders(daemon) == 1; }));
    EXPECT_TRUE(
        waitUntil([&] { return morvane.settingsText().contains("pendingReminders=@ByteArray([])"); }));
}

TEST_F(ReminderTest, AReminderIsAlsoSeenWhileTheUserWorksElsewhere)
{
    MorvaneSession &morvane =
        prepare({callingTool("set_reminder", R"({"message":"water the plants","minutes":0.05})"),
                 ScriptedTurn::saying({"I will remind you."})});
    const FakeNotificationDaemon daemon(morvane.desktop().sessionBusAddress());
    morvane.start();
    morvane.send(QStringLiteral("Remind me"));
    ASSERT_TRUE(waitUntil([&] { return morvane.settingsText().contains("water the plants"); }));
    const xcb_window_t other = morvane.screen().openWindow();
    ASSERT_TRUE(waitUntil([&] { return morvane.screen().activeWindow() == other; }));
    EXPECT_TRUE(morvane.ear().hears(QStringLiteral("Reminder: water the plants")));
    EXPECT_TRUE(waitUntil([&] { return reminders(daemon) == 1; }));
    EXPECT_EQ(heard(morvane, QStringLiteral("Reminder: water the plants")), 1);
}

TEST_F(ReminderTest, TheEndOfARequestIsABannerThatBringsTheWindowBack)
{
    MorvaneSession &morvane = prepare({ScriptedTurn::saying({"Done."})});
    FakeNotificationDaemon daemon(morvane.desktop().sessionBusAddress());
    morvane.start();
    const xcb_window_t window = morvane.screen().activeWindow();
    morvane.send(QStringLiteral("Hello"));
    ASSERT_TRUE(waitUntil([&] { return daemon.shown().size() == 1; }));
    EXPECT_EQ(daemon.shown().front().title, QStringLiteral("Response ready"));
    EXPECT_EQ(daemon.shown().front().body, QString());
    ASSERT_TRUE(morvane.hasStatus(QStringLiteral("Ready")));
    const xcb_window_t other = morvane.screen().openWindow();
    ASSERT_TRUE(waitUntil([&] { return morvane.screen().activeWindow() == other; }));
    daemon.choose(1);
    EXPECT_TRUE(waitUntil([&] { return morvane.screen().activeWindow() == window; }));
}

} // namespace
} // namespace morvane
