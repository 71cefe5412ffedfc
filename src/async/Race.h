#pragma once

#include "async/CurrentContext.h"
#include "async/OneShot.h"
#include "async/Outcome.h"
#include "async/Task.h"

#include <optional>
#include <utility>

namespace morvane {

/// One of the two tasks of a race: runs beside the other, with the race's cancellation.
template <class T> class RaceBranch {
public:
    struct Shared {
        Cancellation cancellation;
        Outcome<T> winner;
        int running = 2;
        OneShot<bool> bothEnded;
    };

    RaceBranch(Task<T> task, Shared &shared, Scheduler &scheduler) : m_body(run(std::move(task), &shared))
    {
        m_body.handle().promise().context = {&scheduler, &shared.cancellation};
        m_start = std::make_shared<Suspension>(scheduler.queue(), m_body.handle());
        m_start->fire();
    }
    ~RaceBranch() { m_start->detach(); }
    RaceBranch(const RaceBranch &) = delete;
    RaceBranch &operator=(const RaceBranch &) = delete;

private:
    static Task<void> run(Task<T> task, Shared *shared)
    {
        Outcome<T> outcome;
        try {
            if constexpr (std::is_void_v<T>) {
                co_await std::move(task);
                outcome.setValue();
            } else {
                outcome.setValue(co_await std::move(task));
            }
        } catch (...) {
            outcome.setException(std::current_exception());
        }
        if (!shared->winner.isSet()) {
            shared->winner = std::move(outcome);
            shared->cancellation.cancel();
        }
        if (--shared->running == 0)
            shared->bothEnded.resume(true);
    }

    Task<void> m_body;
    std::shared_ptr<Suspension> m_start;
};

/// Runs both tasks at once. The first to end decides the result or the exception; the other is cancelled and
/// awaited before it goes on. Cancelling the awaiting task cancels both.
template <class T> Task<T> race(Task<T> first, Task<T> second)
{
    const TaskContext context = co_await currentContext();
    typename RaceBranch<T>::Shared shared;
    if (context.cancellation->isCancelled())
        shared.cancellation.cancel();
    const Cancellation::Callback link(*context.cancellation, [&shared] { shared.cancellation.cancel(); });
    const RaceBranch<T> firstBranch(std::move(first), shared, *context.scheduler);
    const RaceBranch<T> secondBranch(std::move(second), shared, *context.scheduler);
    co_await shared.bothEnded.wait();
    co_return shared.winner.take();
}

} // namespace morvane
