#pragma once

#include "async/Cancellation.h"

#include <stop_token>

namespace morvane {

/// Asks work on another thread to stop as soon as a task is cancelled. Main thread; the token goes to any.
class StopOnCancel {
public:
    /// The cancellation outlives it.
    explicit StopOnCancel(Cancellation &cancellation)
        : m_callback(cancellation, [stop = m_stop]() mutable { stop.request_stop(); })
    {
        if (cancellation.isCancelled())
            m_stop.request_stop();
    }

    std::stop_token token() const { return m_stop.get_token(); }

private:
    std::stop_source m_stop;
    Cancellation::Callback m_callback;
};

} // namespace morvane
