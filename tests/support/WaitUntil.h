#pragma once

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>
#include <chrono>
#include <functional>

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

} // namespace morvane
