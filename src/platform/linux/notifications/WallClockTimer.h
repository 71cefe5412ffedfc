#pragma once

#include "base/FileDescriptor.h"

#include <QObject>
#include <memory>

class QSocketNotifier;

namespace morvane {

/// Rings at a time of the calendar: also at once when the computer wakes up after it or the calendar is set.
/// Costs nothing while it waits. Needs an event loop.
class WallClockTimer : public QObject {
    Q_OBJECT
public:
    explicit WallClockTimer(QObject *parent = nullptr);
    ~WallClockTimer() override;

    /// Rings once at `date` (seconds since 2001-01-01T00:00:00Z), or at once if that is over. Replaces what
    /// was set before.
    void setTo(double date);

Q_SIGNALS:
    /// The time has come, or the calendar was set and it is unknown when it comes: whoever waits looks again.
    void rang();

private:
    void read();

    FileDescriptor m_timer;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace morvane
