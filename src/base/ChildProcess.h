#pragma once

#include "base/FileDescriptor.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <expected>
#include <optional>
#include <sys/types.h>

namespace morvane {

/// A program that runs in a process group of its own, so that signals reach what it starts, too. It inherits
/// no descriptor but its three standard ones, and a fourth where it is given. Objects are used by one thread
/// at a time.
class ChildProcess {
public:
    enum class Output { ownPipe, discarded };
    enum class Errors { ownPipe, withOutput, discarded };

    struct Options {
        QByteArray program; ///< A path; no folder is searched.
        QList<QByteArray> arguments;
        QList<QByteArray> environment; ///< "NAME=value" each.
        Errors errors = Errors::ownPipe;
        int input = -1;   ///< What it reads from, still the caller's own; the null device if negative.
        int control = -1; ///< What it gets as descriptor 3, still the caller's own; nothing if negative.
        Output output = Output::ownPipe;
    };

    /// Fails with the system's reason, such as "No such file or directory". Blocks until the program runs.
    static std::expected<ChildProcess, QString> start(const Options &options);

    ChildProcess(ChildProcess &&other) noexcept;
    ChildProcess &operator=(ChildProcess &&other) noexcept;
    /// Kills the whole group if the program still runs, and waits for its end.
    ~ChildProcess();

    /// What it prints: the read ends of its pipes, not blocking. Each is open with its ownPipe only.
    FileDescriptor &output() { return m_output; }
    FileDescriptor &errors() { return m_errors; }

    /// Becomes readable when the program has ended; closed on systems that know no such descriptor.
    const FileDescriptor &endNotice() const { return m_endNotice; }

    bool isRunning() const { return m_pid > 0; }

    /// The exit status, or the number of the signal that ended the program; nothing while it runs. Leaves no
    /// zombie behind.
    std::optional<int> takeStatus();

    /// As takeStatus, but waits for the end.
    int waitForStatus();

    /// Sends a signal to the group. Does nothing when the program has ended.
    void signalGroup(int signal);

private:
    ChildProcess() = default;

    std::optional<int> reap(int options);

    pid_t m_pid = 0; ///< 0 when the status has been taken.
    int m_status = 0;
    FileDescriptor m_output;
    FileDescriptor m_errors;
    FileDescriptor m_endNotice;
};

/// The environment of this program in the form that ChildProcess takes.
QList<QByteArray> currentEnvironment();

} // namespace morvane
