#include "app/PermissionsModel.h"

#include "async/Scheduler.h"
#include "platform/DisplaySilent.h"
#include "support/FakeAnnouncer.h"
#include "support/FakeClock.h"
#include "support/FakeDesktop.h"
#include "support/FakeDesktopSettings.h"
#include "support/FakeNotificationCenter.h"
#include "support/RunTask.h"
#include "support/WaitUntil.h"

#include <QThreadPool>
#include <atomic>
#include <future>
#include <gmock/gmock.h>
#include <stop_token>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using Permission = PermissionsModel::Permission;

class PermissionsModelTest : public testing::Test {
protected:
    PermissionsModelTest()
    {
        desktop.screen->granted = false;
        desktop.input->trusted = false;
        center.status = NotificationAuthorization::denied;
    }
    ~PermissionsModelTest() override { scheduler.shutdown(std::chrono::seconds(1)); }

    /// Until the display has been asked and what it tells is taken in.
    static void settle()
    {
        do {
            QThreadPool::globalInstance()->waitForDone();
        } while (morvane::settle());
    }
    void refresh()
    {
        model.refresh();
        settle();
    }

    FakeClock clock;
    Scheduler scheduler{clock};
    FakeAnnouncer announcer;
    FakeDesktop desktop;
    FakeNotificationCenter center;
    FakeDesktopSettings settings;
    PermissionsModel model{scheduler, announcer, desktop.screen, desktop.input, center, settings};
};

TEST_F(PermissionsModelTest, NothingIsConfiguredBeforeItWasAskedFor)
{
    for (const Permission permission :
         {Permission::screenRecording, Permission::accessibility, Permission::notifications})
        EXPECT_FALSE(model.isConfigured(permission));
}

TEST_F(PermissionsModelTest, ARefreshFindsAndAnnouncesWhatWasGranted)
{
    refresh();
    EXPECT_TRUE(announcer.spoken.isEmpty());
    desktop.screen->granted = true;
    desktop.input->trusted = true;
    center.status = NotificationAuthorization::provisional;
    refresh();
    EXPECT_EQ(announcer.spoken,
              QStringList({u"Screen Recording is configured."_s, u"Accessibility is configured."_s,
                           u"Notifications are configured."_s}));
    refresh();
    EXPECT_EQ(announcer.spoken.size(), 3);
}

TEST_F(PermissionsModelTest, WhatIsTakenBackShowsButIsNotAnnounced)
{
    desktop.screen->granted = true;
    refresh();
    desktop.screen->granted = false;
    announcer.spoken.clear();
    refresh();
    EXPECT_FALSE(model.isConfigured(Permission::screenRecording));
    EXPECT_TRUE(announcer.spoken.isEmpty());
}

TEST_F(PermissionsModelTest, ASecondRefreshWhileOneRunsDoesNothing)
{
    std::atomic<int> questions = 0;
    std::promise<void> answered;
    desktop.screen->onQuestion = [&, answer = answered.get_future().share()](const std::stop_token &) {
        ++questions;
        answer.wait();
    };
    model.refresh();
    ASSERT_TRUE(waitUntil([&] { return questions == 1; }));
    model.refresh();
    morvane::settle();
    answered.set_value();
    settle();
    EXPECT_EQ(questions, 1);
    refresh();
    EXPECT_EQ(questions, 2);
}

TEST_F(PermissionsModelTest, ADisplayThatDoesNotAnswerChangesNothingAndHoldsNobodyUp)
{
    desktop.screen->granted = true;
    refresh();
    std::promise<void> ended;
    desktop.screen->onQuestion = [&, end = ended.get_future().share()](const std::stop_token &) {
        end.wait();
        throw DisplaySilent();
    };
    model.refresh(); // which returns meanwhile
    ended.set_value();
    settle();
    EXPECT_TRUE(model.isConfigured(Permission::screenRecording));
    desktop.screen->onQuestion = nullptr;
    desktop.input->trusted = true;
    refresh();
    EXPECT_TRUE(model.isConfigured(Permission::accessibility));
}

TEST_F(PermissionsModelTest, TheEndOfTheProgramEndsTheWaitingForADisplay)
{
    std::promise<void> asked;
    std::atomic<std::future_status> stop = std::future_status::deferred;
    desktop.screen->onQuestion = [&](const std::stop_token &token) {
        std::promise<void> stopped;
        const std::stop_callback whenStopped(token, [&stopped] { stopped.set_value(); });
        asked.set_value();
        stop = stopped.get_future().wait_for(std::chrono::seconds(20));
        throw DisplaySilent();
    };
    model.refresh();
    morvane::settle();
    asked.get_future().wait();
    scheduler.shutdown(std::chrono::seconds(20));
    QThreadPool::globalInstance()->waitForDone();
    EXPECT_EQ(stop.load(), std::future_status::ready);
}

TEST_F(PermissionsModelTest, NotificationsAreConfiguredWhenTheyAreAllowedForGoodOrForNow)
{
    for (const auto status : {NotificationAuthorization::authorized, NotificationAuthorization::denied,
                              NotificationAuthorization::provisional}) {
        center.status = status;
        refresh();
        EXPECT_EQ(model.isConfigured(Permission::notifications), status != NotificationAuthorization::denied);
    }
}

TEST_F(PermissionsModelTest, DeniedNotificationsStayNotConfigured)
{
    refresh();
    EXPECT_FALSE(model.isConfigured(Permission::notifications));
}

TEST_F(PermissionsModelTest, ARequestIsFollowedByTwoLooks)
{
    model.request(Permission::accessibility);
    EXPECT_EQ(desktop.log.events(), QStringList(u"request trust"_s));
    settle();
    clock.advance(std::chrono::milliseconds(1499));
    desktop.input->trusted = true;
    settle();
    EXPECT_FALSE(model.isConfigured(Permission::accessibility));
    clock.advance(std::chrono::milliseconds(1));
    settle();
    EXPECT_TRUE(model.isConfigured(Permission::accessibility));
    EXPECT_EQ(announcer.spoken, QStringList(u"Accessibility is configured."_s));
}

TEST_F(PermissionsModelTest, TheSecondLookComesAfterFiveSeconds)
{
    model.request(Permission::screenRecording);
    EXPECT_EQ(desktop.log.events(), QStringList(u"request screen access"_s));
    settle();
    clock.advance(std::chrono::milliseconds(1500));
    settle();
    desktop.screen->granted = true;
    clock.advance(std::chrono::milliseconds(3499));
    settle();
    EXPECT_FALSE(model.isConfigured(Permission::screenRecording));
    clock.advance(std::chrono::milliseconds(1));
    settle();
    EXPECT_TRUE(model.isConfigured(Permission::screenRecording));
}

TEST_F(PermissionsModelTest, TheAnswerOnNotificationsIsAnnouncedEitherWay)
{
    center.answer = false;
    model.request(Permission::notifications);
    settle();
    EXPECT_FALSE(model.isConfigured(Permission::notifications));
    EXPECT_EQ(
        announcer.spoken.takeFirst(),
        u"Notifications are turned off in System Settings. Choose Settings next to Notifications to open "
        "the Notifications settings and allow Morvane."_s);
    center.answer = true;
    for (int time = 0; time < 2; ++time) {
        model.request(Permission::notifications);
        settle();
        EXPECT_TRUE(model.isConfigured(Permission::notifications));
        EXPECT_EQ(announcer.spoken.takeFirst(), u"Notifications are configured."_s);
    }
}

TEST_F(PermissionsModelTest, EachRowHasItsPaneAndAMissingOneIsTold)
{
    using Pane = DesktopSettings::Pane;
    for (const QString &row :
         {u"Screen Recording"_s, u"Accessibility"_s, u"Full Disk Access"_s, u"Notifications"_s, u"Other"_s})
        model.openSettingsFor(row);
    EXPECT_EQ(settings.opened, QList<Pane>({Pane::screenCapture, Pane::accessibility, Pane::allFiles,
                                            Pane::notifications, Pane::privacy}));
    EXPECT_TRUE(announcer.spoken.isEmpty());
    settings.knowsPanes = false;
    model.openSettingsFor(u"Accessibility"_s);
    EXPECT_EQ(announcer.spoken, QStringList(u"This desktop has no settings for this that Morvane knows."_s));
}

} // namespace
} // namespace morvane
