#pragma once

#include "async/TaskContext.h"

#include <coroutine>

namespace morvane {

/// The awaiter of currentContext.
class CurrentContextAwaiter {
public:
    bool await_ready() const { return false; }
    template <class Promise> bool await_suspend(std::coroutine_handle<Promise> coroutine)
    {
        m_context = coroutine.promise().context;
        return false;
    }
    TaskContext await_resume() const { return m_context; }

private:
    TaskContext m_context;
};

/// The scheduler and cancellation of the running task; never suspends.
inline CurrentContextAwaiter currentContext()
{
    return {};
}

} // namespace morvane
