#pragma once

#include "async/OneShot.h"
#include "async/Task.h"

#include <QQueue>
#include <optional>
#include <utility>

namespace morvane {

/// The one request to the user that is on display, and those who wait for their turn: a cancelled run on its
/// way out may ask while the run after it does. Main thread.
template <class Request, class Answer> class PendingRequest {
public:
    const std::optional<Request> &current() const { return m_current; }

    /// Waits until no request is pending; at once if none is. Cancellation does not end the wait.
    Task<void> untilFree()
    {
        while (m_current) {
            const OneShot<bool> turn;
            m_turns.enqueue(turn);
            co_await turn.wait();
        }
    }

    /// Makes a request the pending one; only while none is. What comes back is to be waited for.
    OneShot<Answer> put(Request request)
    {
        m_current = std::move(request);
        m_answer = OneShot<Answer>();
        return m_answer;
    }

    /// Answers the pending request and lets the next come; false if none is pending.
    bool answer(Answer answer)
    {
        if (!std::exchange(m_current, std::nullopt))
            return false;
        m_answer.resume(std::move(answer));
        if (!m_turns.isEmpty())
            m_turns.dequeue().resume(true);
        return true;
    }

private:
    std::optional<Request> m_current;
    OneShot<Answer> m_answer;
    QQueue<OneShot<bool>> m_turns;
};

} // namespace morvane
