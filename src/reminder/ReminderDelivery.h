#pragma once

#include "model/Reminder.h"
#include "platform/linux/notifications/WallClockTimer.h"

#include <QFileSystemWatcher>
#include <QObject>

namespace morvane {

class LinuxBanners;
class PendingReminders;
class SoundPlayer;

/// Shows pending reminders as banners, with their sound. What it takes from the list it shows, and what
/// cannot be shown, since there is no notification daemon, stays in the list. Main thread.
class ReminderDelivery : public QObject {
    Q_OBJECT
public:
    /// `watchedFolder` is where the list lies. All outlive the delivery.
    ReminderDelivery(PendingReminders &pending, LinuxBanners &banners, SoundPlayer &sounds,
                     const QString &watchedFolder);

    /// Shows this reminder if it is still pending.
    void deliver(QUuid id);

    /// Shows every reminder when its time has come, those that are added meanwhile included, until none is
    /// pending.
    void deliverAll();

Q_SIGNALS:
    /// Nothing is left to do.
    void finished();

private:
    void look();
    void deliverDue();
    void show(const Reminder &reminder);
    void finishWhenShown();

    PendingReminders &m_pending;
    LinuxBanners &m_banners;
    SoundPlayer &m_sounds;
    QString m_watchedFolder;
    QFileSystemWatcher m_watcher;
    WallClockTimer m_timer;
    int m_open = 0; ///< Banners that the daemon has not taken yet.
    bool m_isWaiting = false;
};

} // namespace morvane
