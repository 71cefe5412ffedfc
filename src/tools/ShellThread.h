#pragma once

#include "base/FileDescriptor.h"
#include "tools/ShellRun.h"

#include <QByteArray>
#include <QString>
#include <list>
#include <mutex>
#include <thread>
#include <vector>

namespace morvane {

/// The thread that attends to all shell commands: starts them, reads what they print and keeps their times.
class ShellThread {
public:
    /// `shell` is the path of the program that takes commands behind "-c". Throws std::system_error if the
    /// system is out of threads or descriptors.
    ShellThread(QByteArray shell, const ShellLimits &limits);
    /// Stops every command that still runs.
    ~ShellThread();

    /// Starts a command as soon as may be. Any thread.
    void run(const QString &command, OneShot<QString> answer);

private:
    struct Order {
        QString command;
        OneShot<QString> answer;
    };

    void attend();
    bool takeOrders();
    void start(const Order &order);
    void wait();
    void stopAll();
    void wake();

    const QByteArray m_shell;
    const ShellLimits m_limits;
    FileDescriptor m_wake; ///< Readable when there is an order or an end.
    std::mutex m_mutex;
    std::vector<Order> m_orders; ///< Guarded by m_mutex, as the next.
    bool m_ends = false;
    std::list<ShellRun> m_runs; ///< The thread's own, as the next.
    std::vector<char> m_buffer;
    std::jthread m_thread; ///< Last, since it uses the others from its first moment.
};

} // namespace morvane
