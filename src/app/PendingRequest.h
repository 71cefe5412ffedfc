#pragma once

#include "async/Cancelled.h"
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

    /// An answer, or nothing when there will be none.
    using Waiting = OneShot<std::optional<Answer>>;

    /// Waits until no request is pending; at once if none is. Cancellation does not end the wait. Throws
    /// Cancelled once closed.
    Task<void> untilFree()
    {
        while (m_current) {
            const OneShot<bool> turn;
            m_turns.enqueue(turn);
            co_await turn.wait();
        }
        if (m_isClosed)
            throw Cancelled();
    }

    /// Makes a request the pending one; only while none is.
    Waiting put(Request request)
    {
        m_current = std::move(request);
        m_answer = Waiting();
        return m_answer;
    }

    /// Waits for the answer to what was put. Cancellation does not end the wait. Throws Cancelled once
    /// closed, also for an answer that came only just before.
    Task<Answer> answerTo(Waiting request)
    {
        std::optional<Answer> answer = co_await request.wait();
        if (!answer || m_isClosed)
            throw Cancelled();
        co_return *std::move(answer);
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

    /// Ends every wait, now and later; true if a request was pending. For the end of the program, when nobody
    /// is left to answer.
    bool close()
    {
        m_isClosed = true;
        m_answer.resume(std::nullopt);
        while (!m_turns.isEmpty())
            m_turns.dequeue().resume(true);
        return std::exchange(m_current, std::nullopt).has_value();
    }
    bool isClosed() const { return m_isClosed; }

private:
    std::optional<Request> m_current;
    Waiting m_answer;
    QQueue<OneShot<bool>> m_turns;
    bool m_isClosed = false;
};

} // namespace morvane
