#pragma once

#include "async/Wait.h"

#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace morvane {

/// A value that arrives once and that one task waits for. Copies share the same waiter. Cancellation does not
/// end the wait: a user's answer has no time limit, and work that has begun runs to its end.
template <class T> class OneShot {
public:
    OneShot() : m_state(std::make_shared<State>()) {}

    /// Gives the value; the first call wins and returns true. Any thread.
    bool resume(T value)
    {
        std::shared_ptr<Suspension> waiter;
        {
            const std::lock_guard lock(m_state->mutex);
            if (m_state->resumed)
                return false;
            m_state->resumed = true;
            m_state->value.emplace(std::move(value));
            waiter = m_state->waiter;
        }
        if (waiter)
            waiter->fire();
        return true;
    }

    /// Awaits the value. One waiter; main thread.
    auto wait() const { return Awaiter(m_state); }

private:
    struct State {
        std::mutex mutex;
        bool resumed = false;
        std::optional<T> value;
        std::shared_ptr<Suspension> waiter;
    };

    class Awaiter {
    public:
        explicit Awaiter(std::shared_ptr<State> state) : m_state(std::move(state)) {}

        bool await_ready() const { return false; }
        template <class Promise> bool await_suspend(std::coroutine_handle<Promise> coroutine)
        {
            m_wait.beginUncancellable(coroutine);
            const std::lock_guard lock(m_state->mutex);
            m_state->waiter = m_wait.signal();
            return !m_state->resumed;
        }
        T await_resume()
        {
            const std::lock_guard lock(m_state->mutex);
            return std::move(*m_state->value);
        }

    private:
        std::shared_ptr<State> m_state;
        Wait m_wait;
    };

    std::shared_ptr<State> m_state;
};

} // namespace morvane
