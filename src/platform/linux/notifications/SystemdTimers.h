#pragma once

#include "base/RunShellTool.h"

#include <QStringList>
#include <QUuid>
#include <chrono>
#include <functional>

namespace morvane {

/// Transient timers of the user's service manager, which start a program at a time of the calendar. Any one
/// thread; blocks until the manager has answered.
class SystemdTimers {
public:
    /// Runs a program, found in PATH, with a time limit.
    using RunCommand = std::function<ShellToolResult(const QString &program, const QStringList &arguments)>;

    /// `command` is what the timer of a reminder starts, with the identifier behind it.
    SystemdTimers(QStringList command, RunCommand run);

    /// Has the command started at `date` (seconds since 2001-01-01T00:00:00Z) or soon if that is over; a
    /// timer that is there already stays. False if no manager answers, which is asked once, or it refuses.
    bool start(QUuid id, double date);

    /// Takes the timer back; nothing happens if there is none.
    void stop(QUuid id);

private:
    void ask();

    QStringList m_command;
    RunCommand m_run;
    bool m_wasAsked = false;
    bool m_isAvailable = false;
    QStringList m_units; ///< The timers that are there.
};

} // namespace morvane
