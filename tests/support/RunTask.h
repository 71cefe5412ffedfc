#pragma once

#include "async/Scheduler.h"
#include "support/WaitUntil.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <chrono>
#include <stdexcept>

namespace morvane {

/// Lets everything run that is ready on this thread, and what it makes ready. Whether there was anything.
inline bool settle(std::chrono::milliseconds limit = std::chrono::seconds(20))
{
    auto *events = QCoreApplication::eventDispatcher();
    const auto deadline = std::chrono::steady_clock::now() + limit;
    bool any = false;
    while (events->processEvents(QEventLoop::AllEvents)) {
        any = true;
        if (std::chrono::steady_clock::now() >= deadline)
            throw std::runtime_error("there is always something to do");
    }
    return any;
}

/// Drives a task to its end and gives its result or throws its exception. One that does not end within
/// `limit` is cancelled and driven to its end, so that nothing of it outlives what it uses; then throws
/// std::runtime_error.
template <class T>
T runTask(Scheduler &scheduler, Task<T> task, std::chrono::milliseconds limit = std::chrono::seconds(20))
{
    auto handle = scheduler.spawn(std::move(task));
    const auto isDone = [&handle] { return handle.done(); };
    if (!waitUntil(isDone, limit)) {
        handle.cancel();
        const bool ended = waitUntil(isDone);
        throw std::runtime_error(ended ? "the task did not end in time" : "the task does not end");
    }
    return handle.result();
}

} // namespace morvane
