#pragma once

#include "async/Scheduler.h"
#include "platform/NotificationCenter.h"
#include "platform/linux/notifications/LinuxBanners.h"

#include <QHash>

namespace morvane {

class DeliveryAlarm;

/// The notification daemon, and for what comes later an alarm that rings also when the program has ended.
/// Linux has no permission to ask for: whoever has a daemon sees the banners.
///
/// While the program runs, its own monitor comes first. A request that nobody has taken back `monitorTime`
/// after its time is presented from here, with the delegate's consent; the alarm rings still later
/// (`deliveryGrace`), for a program that hangs or has ended.
class LinuxNotificationCenter final : public NotificationCenter {
public:
    using WallClock = std::function<double()>;
    static constexpr std::chrono::milliseconds monitorTime{1500};

    /// All outlive the centre, and the scheduler is shut down before it goes. `isInFront` tells whether the
    /// user works in one of our windows; `wallClock` the seconds since 2001-01-01T00:00:00Z.
    LinuxNotificationCenter(Scheduler &scheduler, DeliveryAlarm &alarm, std::function<bool()> isInFront,
                            WallClock wallClock = {});

    void setDelegate(WillPresent willPresent) override;
    Task<bool> requestAuthorization() override;
    Task<NotificationAuthorization> authorizationStatus() override;
    void add(const NotificationRequest &request) override;
    void removePending(const QString &identifier) override;

    /// For those who want to know which banner the user chose.
    const LinuxBanners &banners() const { return m_banners; }

private:
    struct Pending {
        NotificationRequest request;
        double date = 0; ///< By the wall clock.
    };

    Task<void> present(NotificationRequest request);
    void lookSoon();
    void look();
    void show(const NotificationRequest &request);

    Scheduler &m_scheduler;
    DeliveryAlarm &m_alarm;
    std::function<bool()> m_isInFront;
    WallClock m_now;
    WillPresent m_willPresent;
    QHash<QString, Pending> m_pending;
    std::unique_ptr<Clock::Timer> m_nextLook;
    LinuxBanners m_banners;
};

} // namespace morvane
