#include "app/NotificationService.h"

#include "base/ReferenceDate.h"
#include "base/Uuid.h"
#include "support/FakeAnnouncer.h"
#include "support/FakeClock.h"
#include "support/FakeNotificationCenter.h"
#include "support/FakeSoundPlayer.h"
#include "support/RunTask.h"
#include "support/TemporaryHome.h"
#include "tools/reminders/PendingReminders.h"
#include "tools/reminders/ReminderStore.h"

#include <gmock/gmock.h>

namespace morvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Outcome = NotificationPort::Outcome;
using Presentation = NotificationCenter::Presentation;

class NotificationServiceTest : public testing::Test {
protected:
    ~NotificationServiceTest() override { scheduler.shutdown(std::chrono::seconds(5)); }

    Presentation present(const NotificationRequest &request)
    {
        return runTask(scheduler, center.delegate(request));
    }
    static NotificationRequest reminder(const QString &identifier)
    {
        return {.identifier = identifier,
                .title = "Reminder",
                .body = "tea",
                .sound = "MorvaneDone",
                .delay = {}};
    }

    TemporaryHome home;
    FakeClock clock;
    Scheduler scheduler{clock};
    FakeNotificationCenter center;
    FakeSoundPlayer sounds;
    FakeAnnouncer announcer;
    const QString path = home.path("Morvane.conf");
    ReminderStore reminders{scheduler, path, center, sounds, announcer};
    NotificationService service{scheduler, center, sounds, announcer, reminders};
};

TEST_F(NotificationServiceTest, ConfiguresOnce)
{
    service.configure();
    service.configure();
    settle();
    EXPECT_EQ(center.delegatesSet, 1);
    EXPECT_EQ(center.authorizationsAsked, 1);
}

TEST_F(NotificationServiceTest, AnAnswerGivesItsBannerAndSound)
{
    service.notify("The whole text of the answer.", Outcome::answer);
    ASSERT_EQ(center.added.size(), 1);
    const NotificationRequest &request = center.added.front();
    EXPECT_EQ(request.title, "Response ready");
    EXPECT_EQ(request.body, "");
    EXPECT_EQ(request.sound, "") << "it is played apart, so that it comes also where banners are denied";
    EXPECT_FALSE(request.delay);
    EXPECT_TRUE(uuidFromText(request.identifier));
    EXPECT_THAT(sounds.played, ElementsAre("MorvaneDone"));
}

TEST_F(NotificationServiceTest, AnErrorGivesItsTextTrimmed)
{
    service.notify("  The key is not valid.\n", Outcome::error);
    EXPECT_EQ(center.added.front().title, QString("Morvane — error"));
    EXPECT_EQ(center.added.front().body, "The key is not valid.");
    EXPECT_THAT(sounds.played, ElementsAre("MorvaneError"));
}

TEST_F(NotificationServiceTest, AnErrorWithoutTextIsGivenOne)
{
    service.notify(" \n ", Outcome::error);
    EXPECT_EQ(center.added.front().body, "Something went wrong.");
}

TEST_F(NotificationServiceTest, ALongErrorIsCutAtItsFirst160Characters)
{
    const QString family = "👨‍👩‍👧"; // one character to the eye
    service.notify(family.repeated(200), Outcome::error);
    EXPECT_EQ(center.added.front().body, family.repeated(160));
}

TEST_F(NotificationServiceTest, EachNotificationHasAnIdentifierOfItsOwn)
{
    service.notify("a", Outcome::answer);
    service.notify("b", Outcome::answer);
    EXPECT_NE(center.added.front().identifier, center.added.back().identifier);
}

TEST_F(NotificationServiceTest, OtherNotificationsArePresentedAsBannersAndNotSpoken)
{
    service.configure();
    NotificationRequest request = reminder(uuidText(newUuid()));
    request.title = "Response ready";
    EXPECT_EQ(present(request), Presentation::banner);
    EXPECT_THAT(announcer.spoken, IsEmpty());
}

TEST_F(NotificationServiceTest, APendingReminderIsConsumedSpokenAndPresented)
{
    service.configure();
    const QUuid id = newUuid();
    PendingReminders(path).add({id, "tea", referenceDateNow()});
    EXPECT_EQ(present(reminder(uuidText(id))), Presentation::banner);
    EXPECT_THAT(announcer.spoken, ElementsAre("tea"));
    EXPECT_TRUE(PendingReminders(path).list().isEmpty());
    EXPECT_THAT(sounds.played, IsEmpty());
}

TEST_F(NotificationServiceTest, AReminderThatTheMonitorHasFiredIsNotShownAgain)
{
    service.configure();
    EXPECT_EQ(present(reminder(uuidText(newUuid()))), Presentation::none);
    EXPECT_THAT(announcer.spoken, IsEmpty());
}

TEST_F(NotificationServiceTest, AReminderWithAStrangeIdentifierIsPresented)
{
    service.configure();
    EXPECT_EQ(present(reminder("no identifier of ours")), Presentation::banner);
    EXPECT_THAT(announcer.spoken, ElementsAre("tea"));
}

TEST_F(NotificationServiceTest, AReminderFiresOnceHoweverMonitorAndDelegateRace)
{
    service.configure();
    for (int round = 0; round < 20; ++round) {
        announcer.spoken.clear();
        const QUuid id = newUuid();
        PendingReminders(path).add({id, "tea", referenceDateNow() - 1});
        reminders.startMonitoring();
        const Presentation presentation = present(reminder(uuidText(id)));
        ASSERT_TRUE(waitUntil([this] { return clock.pendingTimers() > 0; }));
        clock.advance(std::chrono::seconds(2));
        settle(); // The monitor looks once more, before the list that is asked for after it, and ends.
        runTask(scheduler, reminders.listReminders());
        settle();
        EXPECT_THAT(announcer.spoken,
                    ElementsAre(presentation == Presentation::banner ? "tea" : "Reminder: tea"));
    }
}

TEST_F(NotificationServiceTest, PermissionIsAskedForOnlyWhileUndetermined)
{
    center.answer = false;
    EXPECT_FALSE(runTask(scheduler, service.requestAuthorization()));
    center.answer = true;
    EXPECT_TRUE(runTask(scheduler, service.requestAuthorization()));
    EXPECT_EQ(center.authorizationsAsked, 2);
    for (const auto &[status, expected] : {std::pair(NotificationAuthorization::denied, false),
                                           {NotificationAuthorization::authorized, true},
                                           {NotificationAuthorization::provisional, true}}) {
        center.status = status;
        EXPECT_EQ(runTask(scheduler, service.requestAuthorization()), expected);
        EXPECT_EQ(runTask(scheduler, service.authorizationStatus()), status);
    }
    EXPECT_EQ(center.authorizationsAsked, 2);
}

TEST_F(NotificationServiceTest, SoundsAndRemovalsGoThrough)
{
    service.playSound("MorvaneCancelled");
    service.removePending("id");
    EXPECT_THAT(sounds.played, ElementsAre("MorvaneCancelled"));
    EXPECT_THAT(center.removed, ElementsAre("id"));
}

} // namespace
} // namespace morvane
