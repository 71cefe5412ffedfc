#include "tools/reminders/PendingReminders.h"

#include "base/Uuid.h"
#include "support/FileSizeLimit.h"
#include "support/TemporaryHome.h"

#include <atomic>
#include <gtest/gtest.h>
#include <optional>
#include <thread>
#include <vector>

namespace morvane {
namespace {

class PendingRemindersTest : public testing::Test {
protected:
    Reminder add(const QString &message, double fireDate = 1)
    {
        const Reminder reminder{.id = newUuid(), .message = message, .fireDate = fireDate};
        EXPECT_TRUE(pending.add(reminder));
        return reminder;
    }

    TemporaryHome home;
    const QString path = home.path("Morvane/Morvane.conf");
    PendingReminders pending{path};
};

TEST_F(PendingRemindersTest, KeepsTheOrderInWhichTheyWereAdded)
{
    EXPECT_TRUE(pending.list().isEmpty());
    const QList<Reminder> added{add("second", 2), add("first", 1)};
    EXPECT_EQ(pending.list(), added);
    EXPECT_EQ(PendingReminders(path).list(), added);
}

TEST_F(PendingRemindersTest, ChangesLeaveTheOtherDefaultsAlone)
{
    home.write("Morvane/Morvane.conf", "[General]\nmodel=a\n");
    const Reminder reminder = add("tea");
    EXPECT_TRUE(home.read("Morvane/Morvane.conf").contains("\nmodel=a\n"));
    EXPECT_TRUE(pending.take(reminder.id));
    EXPECT_EQ(home.read("Morvane/Morvane.conf"),
              QByteArray("[General]\nmodel=a\npendingReminders=@ByteArray([])\n"));
}

TEST_F(PendingRemindersTest, AReminderIsTakenOnce)
{
    const Reminder reminder = add("tea");
    const Reminder other = add("coffee");
    EXPECT_EQ(pending.take(reminder.id), reminder);
    EXPECT_EQ(pending.take(reminder.id), std::nullopt);
    EXPECT_EQ(pending.list(), QList<Reminder>{other});
}

TEST_F(PendingRemindersTest, WhatOneProgramTakesTheOtherNoLongerFinds)
{
    const Reminder reminder = add("tea");
    PendingReminders other(path);
    ASSERT_EQ(other.list().size(), 1);
    EXPECT_TRUE(pending.take(reminder.id));
    EXPECT_EQ(other.take(reminder.id), std::nullopt);
    EXPECT_TRUE(other.list().isEmpty());
}

TEST_F(PendingRemindersTest, ManyWhoTakeAtOnceGetEachReminderOnce)
{
    constexpr int reminders = 30;
    constexpr int takers = 4;
    QList<QUuid> ids;
    for (int i = 0; i < reminders; ++i)
        ids.append(add("reminder").id);
    std::atomic<int> taken = 0;
    std::vector<std::thread> threads;
    for (int taker = 0; taker < takers; ++taker)
        threads.emplace_back([&] {
            PendingReminders own(path); // as another program has it
            for (const QUuid &id : ids)
                taken += own.take(id) ? 1 : 0;
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(taken, reminders);
    EXPECT_TRUE(pending.list().isEmpty());
}

TEST_F(PendingRemindersTest, CorruptBytesReadAsEmptyAndTheNextWriteReplacesThem)
{
    home.write("Morvane/Morvane.conf", "[General]\nmodel=a\npendingReminders=@ByteArray(\\xff[{)\n");
    EXPECT_TRUE(pending.list().isEmpty());
    EXPECT_EQ(pending.take(newUuid()), std::nullopt);
    const Reminder reminder = add("tea");
    EXPECT_EQ(PendingReminders(path).list(), QList<Reminder>{reminder});
    EXPECT_TRUE(home.read("Morvane/Morvane.conf").contains("model=a\n"));
}

TEST_F(PendingRemindersTest, APrefixMatchesExactlyAndTheFirstStoredWins)
{
    const Reminder first{*uuidFromText(u"ABCD1234-0000-4000-8000-000000000001"), "first", 9};
    const Reminder second{*uuidFromText(u"ABCD1234-0000-4000-8000-000000000002"), "second", 1};
    ASSERT_TRUE(pending.add(first));
    ASSERT_TRUE(pending.add(second));
    EXPECT_EQ(pending.takeByPrefix("abcd1234"), std::nullopt);
    EXPECT_EQ(pending.takeByPrefix("BCD1"), std::nullopt);
    EXPECT_EQ(pending.takeByPrefix("ABCD1234"), first);
    EXPECT_EQ(pending.takeByPrefix("ABCD1234"), second);
    EXPECT_EQ(pending.takeByPrefix("ABCD1234"), std::nullopt);
}

TEST_F(PendingRemindersTest, NothingIsWrittenWhereNothingIsTaken)
{
    add("tea");
    const auto before = FileIdentity::ofPath(path);
    EXPECT_EQ(pending.take(newUuid()), std::nullopt);
    EXPECT_EQ(FileIdentity::ofPath(path), before);
}

TEST_F(PendingRemindersTest, AFullDiskRefusesANewReminderButGivesAPendingOneOnce)
{
    const Reminder reminder = add("tea");
    {
        const FileSizeLimit full(0);
        EXPECT_FALSE(pending.add({.id = newUuid(), .message = "lost", .fireDate = 1}));
        EXPECT_EQ(pending.take(reminder.id), reminder);
        EXPECT_EQ(pending.take(reminder.id), std::nullopt);
        EXPECT_TRUE(pending.list().isEmpty());
    }
    const Reminder next = add("coffee");
    EXPECT_EQ(PendingReminders(path).list(), QList<Reminder>{next});
}

TEST_F(PendingRemindersTest, CleaningUpHappensOnlyWhenNothingIsPending)
{
    int cleanings = 0;
    const Reminder reminder = add("tea");
    pending.ifEmpty([&] { ++cleanings; });
    EXPECT_EQ(cleanings, 0);
    pending.take(reminder.id);
    pending.ifEmpty([&] {
        ++cleanings;
        EXPECT_FALSE(DefaultsFile(path).lock(std::chrono::milliseconds(1)).isHeld());
    });
    EXPECT_EQ(cleanings, 1);
    const DefaultsFile::Lock theirs =
        DefaultsFile(path).lock(std::chrono::seconds(1)); // who may be adding one
    ASSERT_TRUE(theirs.isHeld());
    PendingReminders(path, std::chrono::milliseconds(1)).ifEmpty([&] { ++cleanings; });
    EXPECT_EQ(cleanings, 1);
}

TEST_F(PendingRemindersTest, WhatCouldNotBeRemovedIsRemovedBeforeCleaningUp)
{
    const Reminder tea = add("tea");
    PendingReminders hasty(path, std::chrono::milliseconds(1));
    {
        const DefaultsFile::Lock theirs = DefaultsFile(path).lock(std::chrono::seconds(1));
        ASSERT_TRUE(theirs.isHeld());
        EXPECT_EQ(hasty.take(tea.id), tea);
    }
    QList<Reminder> left{tea};
    hasty.ifEmpty([&] { left = PendingReminders(path).list(); });
    EXPECT_EQ(left, QList<Reminder>());
}

TEST_F(PendingRemindersTest, WhatIsTakenWhileAnotherChangesTheFileIsRemovedLater)
{
    const Reminder tea = add("tea");
    const Reminder coffee = add("coffee");
    PendingReminders hasty(path, std::chrono::milliseconds(1));
    std::optional<PendingReminders> last(std::in_place, path, std::chrono::milliseconds(1));
    {
        const DefaultsFile::Lock theirs = DefaultsFile(path).lock(std::chrono::seconds(1));
        ASSERT_TRUE(theirs.isHeld());
        EXPECT_EQ(hasty.take(tea.id), tea);
        EXPECT_EQ(hasty.take(tea.id), std::nullopt);
        EXPECT_FALSE(hasty.removeTaken());
        EXPECT_EQ(last->take(coffee.id), coffee);
        EXPECT_EQ(PendingReminders(path).list(), (QList<Reminder>{tea, coffee}));
    }
    EXPECT_EQ(hasty.list(), QList<Reminder>{coffee});
    EXPECT_EQ(PendingReminders(path).list(), (QList<Reminder>{tea, coffee})) << "to look changes nothing";
    EXPECT_TRUE(hasty.removeTaken());
    EXPECT_EQ(PendingReminders(path).list(), QList<Reminder>{coffee});
    last.reset();
    EXPECT_EQ(PendingReminders(path).list(), QList<Reminder>());
}

} // namespace
} // namespace morvane
