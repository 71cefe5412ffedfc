#pragma once

#include "async/Cancellation.h"
#include "async/Cancelled.h"
#include "async/Task.h"

namespace morvane {

/// The awaiter of checkCancelled.
class CheckCancelledAwaiter {
public:
    bool await_ready() const { return false; }
    template <class Promise> bool await_suspend(std::coroutine_handle<Promise> coroutine)
    {
        m_cancelled = coroutine.promise().context.cancellation->isCancelled();
        return false;
    }
    void await_resume() const
    {
        if (m_cancelled)
            throw Cancelled();
    }

private:
    bool m_cancelled = false;
};

/// Throws Cancelled if the task was cancelled; never suspends.
inline CheckCancelledAwaiter checkCancelled()
{
    return {};
}

} // namespace morvane
