#pragma once

#include "async/Task.h"
#include "tools/ShellLimits.h"

#include <QByteArray>
#include <QString>
#include <memory>

namespace morvane {

class ShellThread;

/// The tool that runs shell commands. Main thread.
class ShellTool {
public:
    /// `shell` is the path of the program that takes commands behind "-c".
    explicit ShellTool(QByteArray shell = "/bin/zsh", const ShellLimits &limits = {});
    /// Stops every command that still runs.
    ~ShellTool();

    /// Runs a command as the user and answers what it printed: up to 4,000 characters of its output and then
    /// of its errors, with a line in front that tells an exit status other than 0. It is stopped with all
    /// that it has started after 30 seconds. Never throws; cancellation does not stop it. Must outlive the
    /// task.
    Task<QString> runShell(QString command);

private:
    const QByteArray m_shell;
    const ShellLimits m_limits;
    std::unique_ptr<ShellThread> m_thread; ///< Started by the first command.
};

} // namespace morvane
