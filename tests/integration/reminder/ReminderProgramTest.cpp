#include "base/InstalledFiles.h"
#include "base/ReferenceDate.h"
#include "base/Uuid.h"
#include "platform/linux/notifications/AutostartEntry.h"
#include "platform/linux/notifications/DeliveryAlarm.h"
#include "support/FakeNotificationDaemon.h"
#include "support/TemporaryHome.h"
#include "support/TestProgram.h"
#include "support/WaitUntil.h"
#include "tools/reminders/PendingReminders.h"

#include <QFileInfo>
#include <gmock/gmock.h>
#include <memory>
#include <vector>

namespace morvane {
namespace {

using testing::UnorderedElementsAre;

class ReminderProgramTest : public testing::Test {
protected:
    ReminderProgramTest()
    {
        // No sound device, and no service manager but where a test brings one.
        environment.insert("CANBERRA_DRIVER", "null");
        environment.insert("PATH", home.path("bin"));
    }

    QUuid add(const QString &message, double secondsFromNow)
    {
        const Reminder reminder{newUuid(), message, referenceDateNow() + secondsFromNow};
        EXPECT_TRUE(pending.add(reminder));
        return reminder.id;
    }

    std::unique_ptr<TestProgram> start(const QStringList &arguments)
    {
        return std::make_unique<TestProgram>(InstalledFiles::aroundProgram().helper("morvane-reminder"),
                                             arguments, environment,
                                             home.path("log" + QString::number(++m_starts)));
    }
    std::optional<int> run(const QStringList &arguments) { return start(arguments)->waitForExit(); }

    void startDaemon()
    {
        daemon = std::make_unique<FakeNotificationDaemon>(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"));
    }
    QStringList bodies() const
    {
        QStringList texts;
        for (const auto &banner : daemon->shown())
            texts.append(banner.body);
        return texts;
    }
    bool hasAutostart() const
    {
        return QFileInfo::exists(home.path(".config/autostart/morvane-reminder.desktop"));
    }

    TemporaryHome home;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    PendingReminders pending{home.path(".config/Morvane/Morvane.conf")};
    AutostartEntry autostart{home.path(".config"), "/anything"};
    std::unique_ptr<FakeNotificationDaemon> daemon;

private:
    int m_starts = 0;
};

TEST_F(ReminderProgramTest, DeliversAPendingReminderAndTakesItFromTheList)
{
    startDaemon();
    autostart.ensure();
    const QUuid id = add("time to <stretch>", -3);
    EXPECT_EQ(run({"deliver", uuidText(id)}), 0);
    ASSERT_EQ(daemon->shown().size(), 1);
    EXPECT_EQ(daemon->shown().front().title, "Reminder");
    EXPECT_EQ(daemon->shown().front().body, "time to &lt;stretch&gt;");
    EXPECT_TRUE(pending.list().isEmpty());
    EXPECT_FALSE(hasAutostart());
}

TEST_F(ReminderProgramTest, TwoStartedAtOnceDeliverOnce)
{
    startDaemon();
    for (int round = 0; round < 5; ++round) {
        const QUuid id = add("tea", -3);
        const auto one = start({"deliver", uuidText(id)});
        const auto other = start({"deliver", uuidText(id)});
        EXPECT_EQ(one->waitForExit(), 0);
        EXPECT_EQ(other->waitForExit(), 0);
        EXPECT_EQ(daemon->shown().size(), round + 1);
    }
}

TEST_F(ReminderProgramTest, WhatIsNotPendingAnyMoreIsNotShown)
{
    startDaemon();
    autostart.ensure();
    add("another", 600);
    EXPECT_EQ(run({"deliver", uuidText(newUuid())}), 0);
    EXPECT_TRUE(daemon->shown().isEmpty());
    EXPECT_EQ(pending.list().size(), 1);
    EXPECT_TRUE(hasAutostart());
}

TEST_F(ReminderProgramTest, WithoutADaemonAReminderStaysForTheNextStart)
{
    const QUuid id = add("tea", -3);
    EXPECT_EQ(run({"deliver", uuidText(id)}), 0);
    EXPECT_EQ(pending.list().size(), 1);
}

TEST_F(ReminderProgramTest, WaitingItDeliversEachInItsTimeAndThenEnds)
{
    startDaemon();
    autostart.ensure();
    add("over", -60);
    add("soon", 0.3 - deliveryGrace);
    add("later", 0.6 - deliveryGrace);
    const auto program = start({"wait"});
    EXPECT_EQ(program->waitForExit(), 0);
    EXPECT_EQ(bodies(), QStringList({"over", "soon", "later"}));
    EXPECT_TRUE(pending.list().isEmpty());
    EXPECT_FALSE(hasAutostart());
}

TEST_F(ReminderProgramTest, HoweverManyAreOverdueAllAreShown)
{
    startDaemon();
    QStringList messages;
    for (int i = 0; i < 40; ++i) {
        messages.append(QString::number(i));
        add(messages.last(), -60);
    }
    EXPECT_EQ(run({"wait"}), 0);
    EXPECT_EQ(bodies(), messages);
}

TEST_F(ReminderProgramTest, WaitingItNoticesWhatIsAddedAndTaken)
{
    startDaemon();
    const QUuid far = add("far", 3600);
    const auto program = start({"wait"});
    add("added", 0.5 - deliveryGrace);
    ASSERT_TRUE(waitUntil([this] { return daemon->shown().size() == 1; }));
    EXPECT_EQ(bodies(), QStringList{"added"});
    EXPECT_TRUE(program->isRunning());
    EXPECT_TRUE(pending.take(far));
    EXPECT_EQ(program->waitForExit(), 0);
}

TEST_F(ReminderProgramTest, OnlyOneWaits)
{
    startDaemon();
    add("far", 3600);
    const auto first = start({"wait"});
    ASSERT_TRUE(waitUntil([this] { return QFileInfo::exists(home.path(".config/Morvane/reminders.lock")); }));
    const auto second = start({"wait"});
    ASSERT_TRUE(waitUntil([&] { return first->isRunning() != second->isRunning(); }));
}

TEST_F(ReminderProgramTest, ManyRemindersDueAtOnceAreAllShownOnceBesideTimersThatRing)
{
    startDaemon();
    std::vector<QUuid> ids;
    for (int i = 0; i < 6; ++i)
        ids.push_back(add(QString::number(i), -3));
    std::vector<std::unique_ptr<TestProgram>> programs;
    programs.push_back(start({"wait"}));
    for (const QUuid &id : ids)
        programs.push_back(start({"deliver", uuidText(id)}));
    for (const auto &program : programs)
        EXPECT_EQ(program->waitForExit(), 0);
    EXPECT_THAT(bodies(), UnorderedElementsAre("0", "1", "2", "3", "4", "5"));
}

TEST_F(ReminderProgramTest, AtLoginItSetsATimerForEachReminder)
{
    // A service manager that takes everything and writes down what it took.
    const QByteArray script = "#!/bin/sh\necho \"$0 $@\" >> " + home.path("calls").toUtf8() + "\n";
    for (const char *program : {"bin/systemctl", "bin/systemd-run"})
        QFile::setPermissions(home.write(program, script), QFile::ReadOwner | QFile::ExeOwner);
    const QUuid one = add("private text", 60);
    const QUuid other = add("missed", -60);
    EXPECT_EQ(run({"rearm"}), 0);
    const QByteArray calls = home.read("calls");
    EXPECT_EQ(calls.count("systemd-run"), 2);
    EXPECT_TRUE(calls.contains(" deliver " + uuidText(one).toUtf8()));
    EXPECT_TRUE(calls.contains(" deliver " + uuidText(other).toUtf8()));
    EXPECT_FALSE(calls.contains("private"));
    EXPECT_EQ(pending.list().size(), 2);
}

TEST_F(ReminderProgramTest, AtLoginWithoutAManagerItWaitsItself)
{
    startDaemon();
    add("missed", -60);
    EXPECT_EQ(run({"rearm"}), 0);
    EXPECT_EQ(bodies(), QStringList{"missed"});
}

TEST_F(ReminderProgramTest, AtLoginWithNothingPendingTheEntryIsTakenAway)
{
    autostart.ensure();
    EXPECT_EQ(run({"rearm"}), 0);
    EXPECT_FALSE(hasAutostart());
}

TEST_F(ReminderProgramTest, WithoutASessionNobodyWaits)
{
    add("tea", 3600);
    environment.insert("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    EXPECT_EQ(run({"wait"}), 0);
    EXPECT_EQ(pending.list().size(), 1);
}

TEST_F(ReminderProgramTest, AnythingElseOnTheCommandLineIsRefused)
{
    for (const QStringList &arguments :
         {QStringList{}, {"deliver"}, {"deliver", "no id"}, {"wait", "more"}, {"unknown"}})
        EXPECT_EQ(run(arguments), 2) << arguments.join(' ').toStdString();
}

} // namespace
} // namespace morvane
