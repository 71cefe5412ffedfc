#pragma once

#include "app/NotificationPort.h"
#include "async/Task.h"
#include "platform/NotificationCenter.h"

namespace morvane {

class Announcer;
class ReminderStore;
class Scheduler;
class SoundPlayer;

/// Owns the dealings with the desktop's notification centre: permission, what becomes of notifications that
/// arrive while the program runs, and those that tell the end of a request. Main thread.
class NotificationService final : public NotificationPort {
public:
    /// All outlive the service, and the scheduler is shut down before it goes.
    NotificationService(Scheduler &scheduler, NotificationCenter &center, SoundPlayer &sounds,
                        Announcer &announcer, ReminderStore &reminders);

    /// Becomes the one that the centre asks, and asks for permission, whose answer changes nothing here.
    /// Called again it does nothing.
    void configure();

    /// Asks the user if that has not been done; whether banners may be shown.
    Task<bool> requestAuthorization();
    Task<NotificationAuthorization> authorizationStatus();

    /// A banner, and a sound that comes also where banners are not allowed.
    void notify(const QString &response, Outcome outcome) override;
    void playSound(const QString &name) override;

    void removePending(const QString &id);

private:
    Task<NotificationCenter::Presentation> willPresent(NotificationRequest request);
    Task<void> askForPermission();

    Scheduler &m_scheduler;
    NotificationCenter &m_center;
    SoundPlayer &m_sounds;
    Announcer &m_announcer;
    ReminderStore &m_reminders;
    bool m_configured = false;
};

} // namespace morvane
