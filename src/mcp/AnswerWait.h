#pragma once

#include "async/Wait.h"
#include "mcp/AnswerSlot.h"

#include <coroutine>
#include <functional>
#include <memory>

namespace morvane {

/// Awaits an answer for at most `timeout`. `giveUp` is called when the time is over or the task is cancelled;
/// it resumes the request's waiter with nothing, unless an answer has won. Throws MCPError or Cancelled. Main
/// thread.
template <class T> class AnswerWait {
public:
    AnswerWait(std::shared_ptr<AnswerSlot<T>> slot, Clock::Duration timeout, std::function<void()> giveUp)
        : m_slot(std::move(slot)), m_timeout(timeout), m_giveUp(std::move(giveUp))
    {
    }

    bool await_ready() const { return false; }
    template <class Promise> bool await_suspend(std::coroutine_handle<Promise> coroutine)
    {
        m_wait.begin(coroutine, m_giveUp);
        m_timer = m_wait.context().scheduler->clock().after(m_timeout, m_giveUp);
        return m_slot->wakeWhenFilled(m_wait.signal());
    }
    T await_resume()
    {
        m_timer.reset();
        m_wait.finish();
        return m_slot->take();
    }

private:
    std::shared_ptr<AnswerSlot<T>> m_slot;
    Clock::Duration m_timeout;
    std::function<void()> m_giveUp;
    Wait m_wait;
    std::unique_ptr<Clock::Timer> m_timer;
};

} // namespace morvane
