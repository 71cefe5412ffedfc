#pragma once

#include "async/Cancellation.h"
#include "async/Outcome.h"
#include "async/Suspension.h"
#include "async/Task.h"

#include <memory>
#include <optional>

namespace morvane {

/// A task that nobody awaits: owns its frame and its cancellation. Kept by the Scheduler until it ends.
class RootTaskBase {
public:
    explicit RootTaskBase(Scheduler &scheduler) : m_scheduler(scheduler) {}
    virtual ~RootTaskBase() = default;

    Cancellation &cancellation() { return m_cancellation; }

    /// Queues the first step.
    void start(const std::shared_ptr<ReadyQueue> &queue);
    /// Destroys the coroutine with all that it awaits.
    void drop();

protected:
    /// Called by the coroutine as its last act.
    void retire();

    /// Takes `body` as the coroutine to run; it calls retire() at its end.
    void setBody(Task<void> body);

private:
    Scheduler &m_scheduler;
    Cancellation m_cancellation;
    std::shared_ptr<Suspension> m_start;
    std::optional<Task<void>> m_body;
};

template <class T> class RootTask final : public RootTaskBase {
public:
    RootTask(Scheduler &scheduler, Task<T> task) : RootTaskBase(scheduler)
    {
        setBody(run(this, std::move(task)));
    }
    ~RootTask() override { drop(); }

    Outcome<T> &outcome() { return m_outcome; }

private:
    static Task<void> run(RootTask *self, Task<T> task)
    {
        try {
            if constexpr (std::is_void_v<T>) {
                co_await std::move(task);
                self->m_outcome.setValue();
            } else {
                self->m_outcome.setValue(co_await std::move(task));
            }
        } catch (...) {
            self->m_outcome.setException(std::current_exception());
        }
        self->retire();
    }

    Outcome<T> m_outcome;
};

} // namespace morvane
