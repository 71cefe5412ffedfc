#pragma once

#include "async/Scheduler.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>
#include <chrono>
#include <functional>
#include <stdexcept>

namespace morvane {

/// Turns the test's event loop until `condition` holds; false if it does not within `limit`.
inline bool waitUntil(const std::function<bool()> &condition,
                      std::chrono::milliseconds limit = std::chrono::seconds(20))
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    QTimer heartbeat; // wakes the loop so that conditions fed by other threads are seen
    heartbeat.start(5);
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline)
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

/// Lets everything that is ready now run.
inline void settle()
{
    for (int turn = 0; turn < 50; ++turn)
        QCoreApplication::processEvents();
}

/// Drives a task to its end and gives its result or throws its exception; throws std::runtime_error if it
/// does not end within `limit`.
template <class T>
T runTask(Scheduler &scheduler, Task<T> task, std::chrono::milliseconds limit = std::chrono::seconds(20))
{
    auto handle = scheduler.spawn(std::move(task));
    if (!waitUntil([&handle] { return handle.done(); }, limit))
        throw std::runtime_error("the task did not end in time");
    return handle.result();
}

} // namespace morvane
