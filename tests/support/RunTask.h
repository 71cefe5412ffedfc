#pragma once

#include "async/Scheduler.h"
#include "support/WaitUntil.h"

#include <QCoreApplication>
#include <chrono>
#include <stdexcept>

namespace morvane {

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
