#pragma once

#include "async/Wait.h"

#include <memory>

namespace morvane {

/// The awaiter of sleepFor.
class SleepAwaiter {
public:
    explicit SleepAwaiter(Clock::Duration duration) : m_duration(duration) {}

    bool await_ready() const { return false; }
    template <class Promise> void await_suspend(std::coroutine_handle<Promise> coroutine)
    {
        m_wait.begin(coroutine);
        m_timer = m_wait.context().scheduler->clock().after(m_duration,
                                                            [signal = m_wait.signal()] { signal->fire(); });
    }
    void await_resume() { m_wait.finish(); }

private:
    Clock::Duration m_duration;
    Wait m_wait;
    std::unique_ptr<Clock::Timer> m_timer;
};

/// Waits on the scheduler's clock. Throws Cancelled as soon as the task is cancelled.
inline SleepAwaiter sleepFor(Clock::Duration duration)
{
    return SleepAwaiter(duration);
}

} // namespace morvane
