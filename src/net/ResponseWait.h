#pragma once

#include "async/Wait.h"
#include "net/ResponseBody.h"

#include <coroutine>

namespace morvane {

/// Awaits a part of a response; throws Cancelled as soon as the task is cancelled. `body` outlives it.
class ResponseWait {
public:
    ResponseWait(ResponseBody &body, ResponseChannel::Until until) : m_body(body), m_until(until) {}

    bool await_ready() const { return false; }
    template <class Promise> bool await_suspend(std::coroutine_handle<Promise> coroutine)
    {
        m_wait.begin(coroutine);
        return m_body.wakeWhen(m_until, m_wait.signal());
    }
    void await_resume() { m_wait.finish(); }

private:
    ResponseBody &m_body;
    ResponseChannel::Until m_until;
    Wait m_wait;
};

} // namespace morvane
