#pragma once

#include "async/Outcome.h"
#include "async/TaskContext.h"

#include <coroutine>
#include <exception>
#include <utility>

namespace morvane {

template <class T> class Task;

/// The part of a task's promise that does not depend on its result: context and continuation.
class TaskPromiseBase {
public:
    TaskContext context;
    std::coroutine_handle<> continuation = std::noop_coroutine();

    std::suspend_always initial_suspend() noexcept { return {}; }

    auto final_suspend() noexcept
    {
        struct Awaiter {
            std::coroutine_handle<> continuation;
            bool await_ready() noexcept { return false; }
            std::coroutine_handle<> await_suspend(std::coroutine_handle<>) noexcept { return continuation; }
            void await_resume() noexcept {}
        };
        return Awaiter{continuation};
    }
};

template <class T> class TaskPromise : public TaskPromiseBase {
public:
    Task<T> get_return_object();
    void unhandled_exception() { outcome.setException(std::current_exception()); }
    template <class U> void return_value(U &&value) { outcome.setValue(std::forward<U>(value)); }

    Outcome<T> outcome;
};

template <> class TaskPromise<void> : public TaskPromiseBase {
public:
    Task<void> get_return_object();
    void unhandled_exception() { outcome.setException(std::current_exception()); }
    void return_void() { outcome.setValue(); }

    Outcome<void> outcome;
};

/// A lazy coroutine that runs on the main thread when it is awaited or spawned. Owns its frame: dropping a
/// task drops all that it awaits, innermost first. Exceptions travel to the awaiter; scheduler and
/// cancellation are those of the awaiter. Parameters are taken by value, or outlive the task.
template <class T = void> class [[nodiscard]] Task {
public:
    using promise_type = TaskPromise<T>;
    using Handle = std::coroutine_handle<promise_type>;

    explicit Task(Handle handle) : m_handle(handle) {}
    Task(Task &&other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}
    Task &operator=(Task &&other) noexcept
    {
        if (this != &other) {
            if (m_handle)
                m_handle.destroy();
            m_handle = std::exchange(other.m_handle, nullptr);
        }
        return *this;
    }
    ~Task()
    {
        if (m_handle)
            m_handle.destroy();
    }

    /// What awaiting a task does: start it with the awaiter's context, and continue the awaiter at its end.
    class Awaiter {
    public:
        explicit Awaiter(Handle task) : m_task(task) {}
        bool await_ready() const noexcept { return false; }
        template <class Promise> Handle await_suspend(std::coroutine_handle<Promise> parent) noexcept
        {
            m_task.promise().context = parent.promise().context;
            m_task.promise().continuation = parent;
            return m_task;
        }
        T await_resume() { return m_task.promise().outcome.take(); }

    private:
        Handle m_task;
    };

    /// Runs the task to its end and gives its result or throws its exception.
    Awaiter operator co_await() && { return Awaiter(m_handle); }

    /// The frame, for those that start a task without awaiting it (Scheduler, race).
    Handle handle() const { return m_handle; }

private:
    Handle m_handle;
};

template <class T> Task<T> TaskPromise<T>::get_return_object()
{
    return Task<T>(Task<T>::Handle::from_promise(*this));
}

inline Task<void> TaskPromise<void>::get_return_object()
{
    return Task<void>(Task<void>::Handle::from_promise(*this));
}

} // namespace morvane
