#pragma once

#include "base/RunShellTool.h"

#include <QList>
#include <QStringList>
#include <mutex>

namespace morvane {

/// Remembers the command lines that were to be run or started, and answers for them. Any thread.
class FakeCommands {
public:
    ShellToolResult run(const QString &program, const QStringList &arguments)
    {
        const std::lock_guard lock(m_lock);
        m_run.append(QStringList{program} + arguments);
        return program == QStringLiteral("systemd-run") ? ShellToolResult{startStatus, {}}
                                                        : ShellToolResult{listStatus, listOutput};
    }
    void start(const QString &program, const QStringList &arguments)
    {
        const std::lock_guard lock(m_lock);
        m_started.append(QStringList{program} + arguments);
    }

    /// The arguments that commands with this name and first arguments were given, each in one line.
    QStringList runs(const QString &beginning) const
    {
        const std::lock_guard lock(m_lock);
        QStringList lines;
        for (const QStringList &words : m_run)
            if (words.join(u' ').startsWith(beginning))
                lines.append(words.join(u' '));
        return lines;
    }
    QList<QStringList> started() const
    {
        const std::lock_guard lock(m_lock);
        return m_started;
    }

    int listStatus = 0; ///< Of systemctl; set these before the commands run.
    int startStatus = 0;
    QString listOutput;

private:
    mutable std::mutex m_lock;
    QList<QStringList> m_run;
    QList<QStringList> m_started;
};

} // namespace morvane
