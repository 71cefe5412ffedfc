#pragma once

#include "async/Suspension.h"
#include "mcp/MCPError.h"

#include <expected>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace morvane {

/// Where the answer to one request arrives, filled once by any thread and awaited by one task on the main
/// thread. Unlike a OneShot, waiting for it ends when the task is cancelled (AnswerWait).
template <class T> class AnswerSlot {
public:
    using Answer = std::expected<T, MCPError>;

    void fill(Answer answer)
    {
        std::unique_lock lock(m_mutex);
        m_answer.emplace(std::move(answer));
        const auto waiter = std::move(m_waiter);
        lock.unlock();
        if (waiter)
            waiter->fire();
    }

    /// Fires `waiter` once the answer is there; false if it is there already.
    bool wakeWhenFilled(std::shared_ptr<Suspension> waiter)
    {
        const std::lock_guard lock(m_mutex);
        if (m_answer)
            return false;
        m_waiter = std::move(waiter);
        return true;
    }

    /// The answer, moved out; throws MCPError if it is one.
    T take()
    {
        const std::lock_guard lock(m_mutex);
        if (!*m_answer)
            throw MCPError(m_answer->error());
        return std::move(**m_answer);
    }

private:
    std::mutex m_mutex;
    std::optional<Answer> m_answer;
    std::shared_ptr<Suspension> m_waiter;
};

} // namespace morvane
