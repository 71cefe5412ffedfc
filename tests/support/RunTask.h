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
