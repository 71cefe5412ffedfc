#pragma once

#include "async/Cancellation.h"
#include "async/Cancelled.h"
#include "async/Scheduler.h"
#include "async/Suspension.h"

#include <coroutine>
#include <functional>
#include <memory>

namespace morvane {

/// The common part of every leaf await: a member of an awaiter, which calls begin() in await_suspend, hands
/// signal() to whoever ends the wait, and calls finish() in await_resume. Resumption always goes through the
/// ready queue. When the awaiter is destroyed, firing the signal does nothing any more. Main thread.
class Wait {
public:
    Wait() = default;
    ~Wait()
    {
        if (m_suspension)
            m_suspension->detach();
    }
    Wait(const Wait &) = delete;
    Wait &operator=(const Wait &) = delete;

    /// Begins a wait that also ends when the task is cancelled; `onCancel` then runs first.
    template <class Promise>
    void begin(std::coroutine_handle<Promise> coroutine, std::function<void()> onCancel = {})
    {
        beginUncancellable(coroutine);
        Cancellation *cancellation = m_context.cancellation;
        m_observed = cancellation;
        if (cancellation->isCancelled()) {
            if (onCancel)
                onCancel();
            m_suspension->fire();
            return;
        }
        m_callback = Cancellation::Callback(*cancellation, [this, onCancel = std::move(onCancel)] {
            if (onCancel)
                onCancel();
            m_suspension->fire();
        });
    }

    /// Begins a wait that cancellation does not end.
    template <class Promise> void beginUncancellable(std::coroutine_handle<Promise> coroutine)
    {
        m_context = coroutine.promise().context;
        m_suspension = std::make_shared<Suspension>(m_context.scheduler->queue(), coroutine);
    }

    /// What ends the wait when fired, from any thread.
    std::shared_ptr<Suspension> signal() const { return m_suspension; }
    const TaskContext &context() const { return m_context; }

    /// Throws Cancelled if the task was cancelled while it waited.
    void finish()
    {
        m_callback = {};
        if (m_observed && m_observed->isCancelled())
            throw Cancelled();
    }

private:
    TaskContext m_context;
    std::shared_ptr<Suspension> m_suspension;
    Cancellation *m_observed = nullptr;
    Cancellation::Callback m_callback;
};

} // namespace morvane
