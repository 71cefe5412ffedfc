#pragma once

#include <QString>
#include <QUuid>

namespace morvane {

/// How long a reminder is left to the running program, which looks every second, before the one that delivers
/// without it takes it. In seconds.
inline constexpr double deliveryGrace = 2;

/// Wakes the program that delivers reminders when we do not run. Main thread; the work happens elsewhere.
class DeliveryAlarm {
public:
    virtual ~DeliveryAlarm() = default;

    /// Has the reminder delivered at `date` (seconds since 2001-01-01T00:00:00Z) if it is still pending then.
    /// An alarm that is set already is left as it is.
    virtual void set(QUuid id, double date) = 0;

    /// Takes an alarm back. One that rings all the same finds nothing to deliver.
    virtual void clear(QUuid id) = 0;
};

} // namespace morvane
