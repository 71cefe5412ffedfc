#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <optional>

namespace morvane {

/// A program that a test started, in a process group of its own, that cannot outlive the test: it is ended
/// by the destructor, and by the kernel when the test program dies. Its output goes to a file.
class TestProgram {
public:
    /// Starts `program`; output and errors go to `logPath`. Throws std::runtime_error if it cannot start.
    TestProgram(const QString &program, const QStringList &arguments, const QProcessEnvironment &environment,
                QString logPath);
    ~TestProgram();

    qint64 pid() const { return m_pid; }
    bool isRunning();

    /// Asks the program to end and kills it if it does not.
    void end();
    /// Kills the program and everything of its group at once, as a crash would.
    void kill();
    /// Waits for the end; the exit status, or nothing if it does not end in time or was killed by a signal.
    std::optional<int> waitForExit();

    /// What the program has written so far.
    QString log() const;

private:
    QProcess m_process;
    QString m_logPath;
    qint64 m_pid = 0;
};

} // namespace morvane
