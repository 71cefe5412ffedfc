#pragma once

#include "async/ReadyQueue.h"

#include <atomic>
#include <coroutine>
#include <memory>
#include <utility>

namespace morvane {

/// One suspended coroutine, shared by all who may resume it. The first fire() wins; once the coroutine is
/// gone, firing does nothing.
class Suspension : public std::enable_shared_from_this<Suspension> {
public:
    Suspension(std::shared_ptr<ReadyQueue> queue, std::coroutine_handle<> coroutine)
        : m_queue(std::move(queue)), m_coroutine(coroutine)
    {
    }

    /// Queues the resumption; true for the first call only. Any thread.
    bool fire()
    {
        if (m_fired.exchange(true))
            return false;
        m_queue->push(shared_from_this());
        return true;
    }

    /// Continues the coroutine, if it is still there. Main thread, called by the queue.
    void resume()
    {
        if (auto coroutine = std::exchange(m_coroutine, nullptr))
            coroutine.resume();
    }

    /// The coroutine's frame goes away. Main thread.
    void detach() { m_coroutine = nullptr; }

private:
    std::shared_ptr<ReadyQueue> m_queue;
    std::coroutine_handle<> m_coroutine;
    std::atomic<bool> m_fired = false;
};

} // namespace morvane
