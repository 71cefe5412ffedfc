#pragma once

#include "async/OneShot.h"
#include "base/ChildProcess.h"
#include "tools/CommandOutput.h"
#include "tools/ShellLimits.h"

#include <QString>
#include <array>
#include <chrono>
#include <optional>
#include <poll.h>
#include <vector>

namespace morvane {

/// One running shell command: reads what it prints, stops it at its limit, and gives the answer once. Lives
/// on after the answer as long as a background process holds a pipe open, and reads on, since a program whose
/// output nobody takes stops or dies.
class ShellRun {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    ShellRun(ChildProcess child, OneShot<QString> answer, const ShellLimits &limits, TimePoint now);

    /// Appends what the run waits for.
    void addTo(std::vector<pollfd> &waits) const;

    /// When the run must be looked at even if nothing comes; nothing if never.
    std::optional<TimePoint> deadline() const;

    /// Reads what there is and takes the next step. `buffer` is scratch.
    void advance(TimePoint now, std::vector<char> &buffer);

    /// Whether there is nothing left to do.
    bool isOver() const;

    /// Asks the command's processes to stop, or makes them.
    void stop(int signal) { m_child.signalGroup(signal); }
    bool isRunning() const { return m_child.isRunning(); }

private:
    struct Stream {
        FileDescriptor pipe;
        CommandOutput text;
    };

    void read(Stream &stream, std::vector<char> &buffer);
    void stopAtLimit(TimePoint now);
    void finish();
    QString result() const;

    ChildProcess m_child;
    OneShot<QString> m_answer;
    ShellLimits m_limits;
    TimePoint m_start;
    std::array<Stream, 2> m_streams; ///< Output, errors.
    std::optional<TimePoint> m_end;
    int m_status = 0;
    bool m_timedOut = false;
    bool m_killed = false;
    bool m_finished = false;
};

} // namespace morvane
