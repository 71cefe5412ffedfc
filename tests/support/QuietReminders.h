#pragma once

#include "support/FakeAnnouncer.h"
#include "support/FakeNotificationCenter.h"
#include "support/FakeSoundPlayer.h"
#include "tools/reminders/ReminderStore.h"

namespace morvane {

/// A reminder store on a file of a test's own, amid a desktop that only remembers what it was asked.
struct QuietReminders {
    QuietReminders(Scheduler &scheduler, const QString &defaultsPath)
        : store(scheduler, defaultsPath, center, sounds, announcer)
    {
    }

    FakeNotificationCenter center;
    FakeSoundPlayer sounds;
    FakeAnnouncer announcer;
    ReminderStore store;
};

} // namespace morvane
