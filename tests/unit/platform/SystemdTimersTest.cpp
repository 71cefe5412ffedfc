#include "platform/linux/notifications/SystemdTimers.h"

#include "base/ReferenceDate.h"
#include "base/Uuid.h"
#include "support/FakeCommands.h"
#include "support/LogRecorder.h"

#include <QDateTime>
#include <QRegularExpression>
#include <gtest/gtest.h>

namespace morvane {
namespace {

const QUuid id = *uuidFromText(u"0A1B2C3D-0000-4000-8000-000000000001");
const QString unit = "morvane-reminder-0A1B2C3D-0000-4000-8000-000000000001";

class SystemdTimersTest : public testing::Test {
protected:
    FakeCommands commands;
    SystemdTimers timers{{"/opt/morvane-reminder", "deliver"},
                         [this](const QString &program, const QStringList &arguments) {
                             return commands.run(program, arguments);
                         }};
};

TEST_F(SystemdTimersTest, ATimerStartsTheCommandAtATimeOfTheCalendar)
{
    const double date = referenceDateFromDateTime(QDateTime(QDate(2099, 3, 4), QTime(5, 6, 7), Qt::UTC));
    EXPECT_TRUE(timers.start(id, date + 0.4));
    const QStringList runs = commands.runs("systemd-run");
    ASSERT_EQ(runs.size(), 1);
    EXPECT_TRUE(runs.front().startsWith("systemd-run --user --quiet --collect --unit=" + unit + " "));
    EXPECT_TRUE(runs.front().contains(" --on-calendar=2099-03-04 05:06:08 UTC "));
    EXPECT_TRUE(runs.front().contains(" --timer-property=AccuracySec=1s "));
    EXPECT_TRUE(runs.front().endsWith(" -- /opt/morvane-reminder deliver " + uuidText(id)));
}

TEST_F(SystemdTimersTest, ATimeThatIsOverBecomesOneThatComes)
{
    const double before = referenceDateNow();
    EXPECT_TRUE(timers.start(id, 0));
    static const QRegularExpression calendar("--on-calendar=(\\S+ \\S+) UTC");
    QDateTime time = QDateTime::fromString(calendar.match(commands.runs("systemd-run").value(0)).captured(1),
                                           u"yyyy-MM-dd HH:mm:ss");
    time.setTimeSpec(Qt::UTC);
    EXPECT_GT(referenceDateFromDateTime(time), before + 1);
}

TEST_F(SystemdTimersTest, ATimeBeyondTheManagersCalendarIsLeftToALaterStart)
{
    EXPECT_TRUE(timers.start(id, 1e12));
    EXPECT_TRUE(commands.runs("systemd-run").isEmpty());
}

TEST_F(SystemdTimersTest, ATimerThatIsThereStays)
{
    commands.listOutput = unit + ".timer loaded active waiting Morvane reminder\nother.timer loaded\n";
    EXPECT_TRUE(timers.start(id, 8e8));
    EXPECT_TRUE(commands.runs("systemd-run").isEmpty());
    timers.stop(id);
    EXPECT_EQ(commands.runs("systemctl --user --quiet stop"),
              QStringList{"systemctl --user --quiet stop " + unit + ".timer"});
}

TEST_F(SystemdTimersTest, TheManagerIsAskedOnce)
{
    timers.start(id, 8e8);
    timers.start(newUuid(), 8e8);
    timers.stop(id);
    EXPECT_EQ(commands.runs("systemctl --user list-units").size(), 1);
}

TEST_F(SystemdTimersTest, StoppingWhatWasNeverStartedAsksNothingOfTheManager)
{
    timers.stop(id);
    EXPECT_TRUE(commands.runs("systemctl --user --quiet stop").isEmpty());
}

TEST_F(SystemdTimersTest, WithoutAManagerThereAreNoTimers)
{
    commands.listStatus = 1;
    const LogRecorder log;
    EXPECT_FALSE(timers.start(id, 8e8));
    EXPECT_EQ(log.lines().join(u'\n'), "morvane.platform: no service manager of the user; status 1");
    EXPECT_TRUE(commands.runs("systemd-run").isEmpty());
}

TEST_F(SystemdTimersTest, AManagerThatRefusesIsTold)
{
    commands.startStatus = 1;
    const LogRecorder log;
    EXPECT_FALSE(timers.start(id, 8e8));
    EXPECT_EQ(log.lines().join(u'\n'), "morvane.platform: a reminder's timer was not set; status 1");
    commands.startStatus = 0;
    EXPECT_TRUE(timers.start(id, 8e8));
}

} // namespace
} // namespace morvane
