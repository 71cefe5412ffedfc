#include "platform/linux/notifications/LinuxDeliveryAlarm.h"

#include "base/Uuid.h"
#include "support/FakeCommands.h"
#include "support/TemporaryHome.h"

#include <QFileInfo>
#include <gtest/gtest.h>
#include <memory>

namespace morvane {
namespace {

class LinuxDeliveryAlarmTest : public testing::Test {
protected:
    std::unique_ptr<LinuxDeliveryAlarm> newAlarm()
    {
        return std::make_unique<LinuxDeliveryAlarm>(LinuxDeliveryAlarm::Surroundings{
            .helper = helper,
            .configFolder = home.path(".config"),
            .run = [this](const QString &program,
                          const QStringList &arguments) { return commands.run(program, arguments); },
            .startDetached = [this](const QString &program,
                                    const QStringList &arguments) { commands.start(program, arguments); }});
    }

    bool startsAtLogin() const
    {
        return QFileInfo::exists(home.path(".config/autostart/morvane-reminder.desktop"));
    }

    TemporaryHome home;
    FakeCommands commands;
    const QString helper = "/opt/morvane-reminder";
    const QUuid id = newUuid();
};

TEST_F(LinuxDeliveryAlarmTest, AnAlarmIsATimerAndAnAutostartEntry)
{
    newAlarm()->set(id, 8e8);
    EXPECT_EQ(commands.runs("systemd-run").size(), 1);
    EXPECT_TRUE(startsAtLogin());
    EXPECT_TRUE(commands.started().isEmpty());
}

TEST_F(LinuxDeliveryAlarmTest, OnlyIdentifiersAreOnCommandLines)
{
    newAlarm()->set(id, 8e8);
    EXPECT_TRUE(commands.runs("systemd-run").value(0).endsWith("deliver " + uuidText(id)));
}

TEST_F(LinuxDeliveryAlarmTest, WithoutAManagerTheHelperWaitsItself)
{
    commands.listStatus = 1;
    newAlarm()->set(id, 8e8);
    EXPECT_EQ(commands.started(), QList<QStringList>({{helper, "wait"}}));
    EXPECT_TRUE(startsAtLogin());
}

TEST_F(LinuxDeliveryAlarmTest, AManagerThatRefusesATimerIsReplacedByTheHelper)
{
    commands.startStatus = 1;
    newAlarm()->set(id, 8e8);
    EXPECT_EQ(commands.started(), QList<QStringList>({{helper, "wait"}}));
}

TEST_F(LinuxDeliveryAlarmTest, ALaterReminderStartsAHelperAgain)
{
    commands.listStatus = 1;
    newAlarm()->set(id, 8e8);
    newAlarm()->set(newUuid(), 8e8);
    EXPECT_EQ(commands.started().size(), 2);
}

TEST_F(LinuxDeliveryAlarmTest, ClearingTheLastAlarmTakesTheAutostartEntryAway)
{
    const QUuid other = newUuid();
    auto alarm = newAlarm();
    alarm->set(id, 8e8);
    alarm->set(other, 8e8);
    alarm->clear(id);
    alarm.reset();
    EXPECT_TRUE(startsAtLogin());
    EXPECT_EQ(commands.runs("systemctl --user --quiet stop").size(), 1);
    alarm = newAlarm();
    alarm->set(other, 8e8);
    alarm->clear(other);
    alarm.reset();
    EXPECT_FALSE(startsAtLogin());
}

TEST_F(LinuxDeliveryAlarmTest, AnEntryThatAnEarlierRunLeftIsTakenAway)
{
    home.write(".config/autostart/morvane-reminder.desktop", "left");
    newAlarm()->clear(id);
    EXPECT_FALSE(startsAtLogin());
}

} // namespace
} // namespace morvane
