#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace morvane {

/// Where all waits of the program come from: real time in the program, a hand-driven one in unit tests.
/// Main thread.
class Clock {
public:
    using Duration = std::chrono::steady_clock::duration;
    using TimePoint = std::chrono::steady_clock::time_point;

    /// A scheduled call; destroying it takes the call back.
    class Timer {
    public:
        virtual ~Timer() = default;
    };

    virtual ~Clock() = default;

    virtual TimePoint now() const = 0;

    /// Calls `function` once on the main thread, not before `delay` has passed.
    virtual std::unique_ptr<Timer> after(Duration delay, std::function<void()> function) = 0;
};

} // namespace morvane
