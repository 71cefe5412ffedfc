#pragma once

#include "async/Scheduler.h"
#include "async/Task.h"
#include "model/Reminder.h"

#include <QThreadPool>
#include <functional>
#include <memory>
#include <optional>

namespace morvane {

class Announcer;
class NotificationCenter;
class PendingReminders;
class SoundPlayer;

/// The title by which a reminder's notification is known.
inline constexpr QStringView reminderTitle = u"Reminder";
/// The sound of a reminder, and of a request that has ended well.
inline constexpr QStringView doneSound = u"MorvaneDone";

/// Keeps the reminders that the model sets and makes sure that each comes once: through its own monitor while
/// the program runs, through the desktop's notification centre otherwise. The list lies on the disk, where
/// the program that delivers reminders without us takes out what it delivers. Main thread; all file accesses
/// happen on a thread of its own, which does not wait behind the tools.
class ReminderStore {
public:
    /// Seconds since 2001-01-01T00:00:00Z by the computer's calendar.
    using WallClock = std::function<double()>;

    /// `defaultsPath` is the file of the user defaults. All outlive the store, and the scheduler must be shut
    /// down before the store goes.
    ReminderStore(Scheduler &scheduler, const QString &defaultsPath, NotificationCenter &center,
                  SoundPlayer &sounds, Announcer &announcer, WallClock wallClock = {});
    /// Waits for what is being written.
    ~ReminderStore();

    // What the model is answered. Failures begin with "Error".
    Task<QString> setReminder(QString message, double minutes);
    Task<QString> listReminders();
    Task<QString> cancelReminder(QString idString);

    /// Takes a pending reminder out of the list; true if it was there, and false for all who come later.
    Task<bool> consumeIfPending(QUuid id);

    /// Fires what is due now and from now on, within a second of its time. While nothing is pending nothing
    /// is watched. Called again it looks for what another has added.
    void startMonitoring();

    /// Asks the notification centre anew for what is still ahead, since it may have lost its requests.
    void reschedulePending();

private:
    Task<void> monitor();
    Task<void> reschedule();
    void watch();
    void scheduleNotification(const Reminder &reminder);
    void fire(const Reminder &reminder);

    Scheduler &m_scheduler;
    std::shared_ptr<PendingReminders> m_pending;
    NotificationCenter &m_center;
    SoundPlayer &m_sounds;
    Announcer &m_announcer;
    WallClock m_now;
    bool m_monitors = false;
    int m_calls = 0; ///< Of the monitor: one that came while it looked is answered before it ends.
    std::optional<TaskHandle<void>> m_monitorTask;
    QThreadPool m_disk;
};

} // namespace morvane
