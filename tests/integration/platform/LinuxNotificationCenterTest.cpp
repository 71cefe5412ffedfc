#include "platform/linux/notifications/LinuxNotificationCenter.h"

#include "base/Uuid.h"
#include "support/FakeClock.h"
#include "support/FakeDeliveryAlarm.h"
#include "support/FakeNotificationDaemon.h"
#include "support/RunTask.h"

#include <QSet>
#include <gmock/gmock.h>
#include <memory>

namespace morvane {
namespace {

using namespace std::chrono_literals;
using testing::IsEmpty;
using Manner = FakeNotificationDaemon::Manner;

class LinuxNotificationCenterTest : public testing::Test {
protected:
    ~LinuxNotificationCenterTest() override { scheduler.shutdown(5s); }

    void startDaemon(const QStringList &capabilities = {"body", "body-markup"},
                     Manner manner = Manner::honest)
    {
        daemon = std::make_unique<FakeNotificationDaemon>(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"),
                                                          capabilities, manner);
    }

    bool shows(qsizetype count)
    {
        return waitUntil([&] { return daemon->shown().size() == count; });
    }

    NotificationRequest request(const QString &body, std::optional<std::chrono::milliseconds> delay = {})
    {
        return {.identifier = uuidText(id), .title = "Reminder", .body = body, .sound = {}, .delay = delay};
    }

    /// Lets `time` go by on the wall and for timers.
    void pass(std::chrono::milliseconds time)
    {
        now += std::chrono::duration<double>(time).count();
        clock.advance(time);
        settle();
    }

    /// A banner that is shown behind all that were asked for before: the daemon sees them in order.
    bool showsNothingBefore(const QString &title)
    {
        center.add({.identifier = {}, .title = title, .body = {}, .sound = {}, .delay = {}});
        return waitUntil([&] { return !daemon->shown().isEmpty(); }) &&
               daemon->shown().front().title == title;
    }

    /// One that has nothing to do with any other.
    NotificationRequest another(const QString &body)
    {
        return {
            .identifier = uuidText(newUuid()), .title = "Reminder", .body = body, .sound = {}, .delay = {}};
    }

    const QUuid id = newUuid();
    double now = 8e8;
    bool isInFront = true;
    FakeClock clock;
    Scheduler scheduler{clock};
    FakeDeliveryAlarm alarm;
    LinuxNotificationCenter center{scheduler, alarm, [this] { return isInFront; }, [this] { return now; }};
    std::unique_ptr<FakeNotificationDaemon> daemon;
};

TEST_F(LinuxNotificationCenterTest, ABannerIsShownAtOnceWithItsTextEscaped)
{
    startDaemon();
    center.add(request("1 < 2 & <b>bold</b>"));
    ASSERT_TRUE(shows(1));
    const auto &banner = daemon->shown().front();
    EXPECT_EQ(banner.program, "Morvane");
    EXPECT_EQ(banner.title, "Reminder");
    EXPECT_EQ(banner.body, "1 &lt; 2 &amp; &lt;b&gt;bold&lt;/b&gt;");
    EXPECT_EQ(banner.actions.value(0), "default");
    EXPECT_EQ(banner.hints.value("suppress-sound"), QVariant(true));
    EXPECT_EQ(banner.hints.value("desktop-entry"), QVariant("morvane"));
}

TEST_F(LinuxNotificationCenterTest, ADaemonWithoutMarkupGetsTheTextAsItIs)
{
    startDaemon({"body"});
    center.add(request("1 < 2"));
    ASSERT_TRUE(shows(1));
    EXPECT_EQ(daemon->shown().front().body, "1 < 2");
}

TEST_F(LinuxNotificationCenterTest, TheDaemonIsAskedOnceWhatItCan)
{
    startDaemon();
    for (int banner = 0; banner < 5; ++banner)
        center.add(another(QString::number(banner)));
    ASSERT_TRUE(shows(5));
    center.add(another("later"));
    ASSERT_TRUE(shows(6));
    EXPECT_EQ(daemon->timesAskedForCapabilities(), 1);
    EXPECT_EQ(daemon->shown().front().body, "0");
    EXPECT_EQ(daemon->shown().back().body, "later");
}

TEST_F(LinuxNotificationCenterTest, WithoutADaemonNothingHappensAndALaterOneIsFound)
{
    center.add(request("lost"));
    EXPECT_EQ(runTask(scheduler, center.authorizationStatus()), NotificationAuthorization::denied);
    EXPECT_FALSE(runTask(scheduler, center.requestAuthorization()));
    startDaemon();
    EXPECT_EQ(runTask(scheduler, center.authorizationStatus()), NotificationAuthorization::authorized);
    EXPECT_TRUE(runTask(scheduler, center.requestAuthorization()));
    center.add(request("shown"));
    ASSERT_TRUE(shows(1));
    EXPECT_EQ(daemon->shown().front().body, "shown");
}

TEST_F(LinuxNotificationCenterTest, ADaemonThatAnswersInWrongTypesOrErrorsIsHarmless)
{
    for (const Manner manner : {Manner::wrongTypes, Manner::errors}) {
        startDaemon({}, manner);
        for (int banner = 0; banner < 3; ++banner)
            center.add(another("lost"));
        ASSERT_TRUE(waitUntil([this] { return daemon->timesAskedForCapabilities() > 0; }));
        daemon->choose(1);
        settle();
        daemon.reset();
    }
    startDaemon();
    center.add(request("shown"));
    // What the other daemon never took may arrive here before.
    EXPECT_TRUE(waitUntil(
        [this] { return !daemon->shown().isEmpty() && daemon->shown().back().body == QString("shown"); }));
}

TEST_F(LinuxNotificationCenterTest, ADaemonThatNeverAnswersIsNotWaitedFor)
{
    startDaemon({}, Manner::silent);
    for (int banner = 0; banner < 100; ++banner)
        center.add(another("unanswered"));
    ASSERT_TRUE(waitUntil([this] { return daemon->timesAskedForCapabilities() == 1; }));
}

TEST_F(LinuxNotificationCenterTest, ChoosingABannerIsToldWithItsToken)
{
    startDaemon();
    QList<ActivationToken> chosen;
    QObject::connect(&center.banners(), &LinuxBanners::chosen, &center.banners(),
                     [&chosen](const ActivationToken &token) { chosen.append(token); });
    center.add(another("first"));
    center.add(another("second"));
    ASSERT_TRUE(shows(2));
    settle();
    daemon->choose(77);                      // another program's
    daemon->choose(1, {}, "no-such-action"); // nothing that we offered
    daemon->choose(2, "token-2");
    daemon->choose(1);
    ASSERT_TRUE(waitUntil([&] { return chosen.size() == 2; }));
    EXPECT_EQ(chosen.front().xdgToken, QByteArray("token-2"));
    EXPECT_EQ(chosen.back().xdgToken, QByteArray());
    daemon->close(1);
    daemon->choose(1);
    daemon->choose(2);
    ASSERT_TRUE(waitUntil([&] { return chosen.size() == 3; }));
}

TEST_F(LinuxNotificationCenterTest, ABannerTakesThePlaceOfTheOneWithItsName)
{
    startDaemon();
    center.add(request("old"));
    ASSERT_TRUE(shows(1));
    settle();
    center.add(another("other"));
    center.add(request("new"));
    ASSERT_TRUE(shows(3));
    EXPECT_EQ(daemon->shown().at(0).replaces, 0U);
    EXPECT_EQ(daemon->shown().at(1).replaces, 0U);
    EXPECT_EQ(daemon->shown().at(2).replaces, 1U);
    EXPECT_EQ(daemon->shown().at(2).body, "new");
}

TEST_F(LinuxNotificationCenterTest, AThousandOfOneNameAreOneBannerAndTheLastStays)
{
    startDaemon();
    center.add(another("before")); // so that it has told what it can
    ASSERT_TRUE(shows(1));
    settle();
    daemon->holdAnswers();
    for (int banner = 0; banner < 1000; ++banner)
        center.add(request(QString::number(banner)));
    ASSERT_TRUE(shows(2));
    settle();
    daemon->goOn();
    ASSERT_TRUE(waitUntil([this] { return daemon->shown().back().body == QString("999"); }));
    QSet<uint> places;
    for (const auto &banner : daemon->shown().sliced(1))
        places.insert(banner.number);
    EXPECT_EQ(places.size(), 1);
    EXPECT_EQ(daemon->shown().size(), 3) << "of those that wait for the daemon only the newest is left";
}

TEST_F(LinuxNotificationCenterTest, OfOneNameOnlyTheNewestWaitsForADaemonThatDoesNotAnswer)
{
    startDaemon({}, Manner::silent);
    for (int banner = 0; banner < 1000; ++banner)
        center.add(request(QString::number(banner)));
    center.add(another("other"));
    ASSERT_TRUE(waitUntil([this] { return daemon->timesAskedForCapabilities() == 1; }));
    settle();
    daemon.reset();
    startDaemon();
    ASSERT_TRUE(shows(2));
    EXPECT_EQ(daemon->shown().at(0).body, "999");
    EXPECT_EQ(daemon->shown().at(1).body, "other");
}

TEST_F(LinuxNotificationCenterTest, ABannerThatTheUserClosedIsNotReplaced)
{
    startDaemon();
    center.add(request("old"));
    ASSERT_TRUE(shows(1));
    settle();
    QList<ActivationToken> chosen;
    QObject::connect(&center.banners(), &LinuxBanners::chosen, &center.banners(),
                     [&chosen](const ActivationToken &token) { chosen.append(token); });
    center.add(another("other"));
    ASSERT_TRUE(shows(2));
    settle();
    daemon->close(1);
    daemon->choose(2); // behind it
    ASSERT_TRUE(waitUntil([&] { return !chosen.isEmpty(); }));
    center.add(request("new"));
    ASSERT_TRUE(shows(3));
    EXPECT_EQ(daemon->shown().back().replaces, 0U);
}

TEST_F(LinuxNotificationCenterTest, AnotherDaemonsNumbersAreNotItsPredecessors)
{
    startDaemon();
    center.add(request("old"));
    ASSERT_TRUE(shows(1));
    settle();
    daemon.reset();
    // It is not told before the bus has told of the daemon's end.
    ASSERT_TRUE(waitUntil([this] {
        return runTask(scheduler, center.authorizationStatus()) == NotificationAuthorization::denied;
    }));
    startDaemon();
    center.add(request("new"));
    ASSERT_TRUE(shows(1));
    EXPECT_EQ(daemon->shown().back().replaces, 0U);
}

TEST_F(LinuxNotificationCenterTest, NorAreThoseOfADaemonThatTakesItsPlace)
{
    startDaemon({"body"});
    center.add(request("1 < 2"));
    ASSERT_TRUE(shows(1));
    settle();
    startDaemon();
    // By then the bus has told of the change.
    ASSERT_EQ(runTask(scheduler, center.authorizationStatus()), NotificationAuthorization::authorized);
    center.add(request("2 < 3"));
    ASSERT_TRUE(shows(1));
    EXPECT_EQ(daemon->shown().back().replaces, 0U);
    EXPECT_EQ(daemon->shown().back().body, "2 &lt; 3");
}

TEST_F(LinuxNotificationCenterTest, TheDelegateDecidesWhetherABannerIsShown)
{
    startDaemon();
    center.setDelegate([](NotificationRequest asked) -> Task<NotificationCenter::Presentation> {
        co_return asked.body == "no" ? NotificationCenter::Presentation::none
                                     : NotificationCenter::Presentation::banner;
    });
    center.add(another("no"));
    center.add(another("yes"));
    ASSERT_TRUE(shows(1));
    EXPECT_EQ(daemon->shown().front().body, "yes");
}

TEST_F(LinuxNotificationCenterTest, ALaterNotificationSetsAnAlarmForWhenTheProgramHasEnded)
{
    center.add(request("tea", 60s));
    EXPECT_EQ(alarm.alarms.value(id), now + 60 + deliveryGrace);
    center.removePending(uuidText(id));
    EXPECT_TRUE(alarm.alarms.isEmpty());
}

TEST_F(LinuxNotificationCenterTest, ALaterNotificationThatNobodyTookBackIsPresentedAfterItsTime)
{
    startDaemon();
    center.add(request("tea", 60s));
    pass(61s);
    EXPECT_THAT(daemon->shown(), IsEmpty());
    pass(1s);
    ASSERT_TRUE(shows(1));
    EXPECT_EQ(daemon->shown().front().body, "tea");
    pass(60s);
    EXPECT_EQ(daemon->shown().size(), 1);
}

TEST_F(LinuxNotificationCenterTest, ANotificationOfTheSameNameReplacesTheWaitingOne)
{
    startDaemon();
    center.add(request("old", 60s));
    center.add(request("new", 120s));
    pass(90s);
    EXPECT_THAT(daemon->shown(), IsEmpty());
    pass(60s);
    ASSERT_TRUE(shows(1));
    EXPECT_EQ(daemon->shown().front().body, "new");
}

TEST_F(LinuxNotificationCenterTest, WhatIsTakenBackInTimeIsNeverShown)
{
    startDaemon();
    isInFront = false;
    center.add(request("tea", 60s));
    pass(59s);
    center.removePending(uuidText(id));
    pass(60s);
    EXPECT_TRUE(showsNothingBefore("end"));
}

TEST_F(LinuxNotificationCenterTest, InFrontAReminderWhoseTimeHasComeIsTakenBack)
{
    startDaemon();
    center.add(request("tea", 60s));
    pass(60s);
    center.removePending(uuidText(id));
    EXPECT_TRUE(showsNothingBefore("end"));
}

TEST_F(LinuxNotificationCenterTest, ElsewhereTheUserSeesTheReminderWhoseTimeHasCome)
{
    startDaemon();
    isInFront = false;
    center.add(request("tea", 60s));
    pass(60s);
    center.removePending(uuidText(id));
    ASSERT_TRUE(shows(1));
    EXPECT_EQ(daemon->shown().front().body, "tea");
    pass(10s);
    center.removePending(uuidText(id));
    settle();
    EXPECT_EQ(daemon->shown().size(), 1);
}

TEST_F(LinuxNotificationCenterTest, ATimeBeyondAnyTimerIsKept)
{
    startDaemon();
    center.add(request("far", std::chrono::hours(24 * 365 * 2000)));
    pass(std::chrono::hours(24 * 365));
    center.removePending(uuidText(id));
    EXPECT_TRUE(showsNothingBefore("end"));
}

} // namespace
} // namespace morvane
