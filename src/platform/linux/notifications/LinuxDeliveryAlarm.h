#pragma once

#include "platform/linux/notifications/AutostartEntry.h"
#include "platform/linux/notifications/DeliveryAlarm.h"
#include "platform/linux/notifications/SystemdTimers.h"

#include <QSet>
#include <QThreadPool>
#include <atomic>

namespace morvane {

/// Alarms through transient timers of the user's service manager, or where none answers through the
/// delivering program itself, which then waits for the times in the background. An autostart entry sets them
/// again at the next login. Only identifiers are handed over: command lines can be read by other users.
class LinuxDeliveryAlarm final : public DeliveryAlarm {
public:
    struct Surroundings {
        QString helper;       ///< Path of the delivering program.
        QString configFolder; ///< Where the desktop looks for "autostart".
        SystemdTimers::RunCommand run;
        /// Starts a program that goes on when this one ends.
        std::function<void(const QString &program, const QStringList &arguments)> startDetached;
    };

    explicit LinuxDeliveryAlarm(Surroundings surroundings);
    /// Waits until all alarms are set.
    ~LinuxDeliveryAlarm() override;

    void set(QUuid id, double date) override;
    void clear(QUuid id) override;

    /// The desktop's folder and real processes.
    static Surroundings realSurroundings(const QString &helper);

private:
    void enqueue(std::function<void()> work);
    void setNow(QUuid id, double date);
    void clearNow(QUuid id);

    Surroundings m_surroundings;
    AutostartEntry m_autostart; ///< This and what follows: the alarm thread's.
    SystemdTimers m_timers;
    QSet<QUuid> m_set;
    bool m_owesWaiter = false;
    std::atomic<int> m_queued = 0;
    QThreadPool m_thread;
};

} // namespace morvane
