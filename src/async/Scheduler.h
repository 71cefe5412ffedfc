#pragma once

#include "async/Clock.h"
#include "async/ReadyQueue.h"
#include "async/TaskHandle.h"

#include <chrono>
#include <list>
#include <memory>
#include <vector>

namespace morvane {

/// Runs tasks on the main thread. One for the whole program, passed to whoever starts tasks; every task
/// carries it on to those that it awaits. Main thread, but for queue()->push.
class Scheduler {
public:
    /// `clock` must outlive the scheduler.
    explicit Scheduler(Clock &clock);
    /// Destroys what still runs.
    ~Scheduler();

    /// Starts a task on the main thread's next turn. The task goes on when the handle is dropped.
    template <class T> TaskHandle<T> spawn(Task<T> task)
    {
        auto root = std::make_shared<RootTask<T>>(*this, std::move(task));
        start(root);
        return TaskHandle<T>(std::move(root));
    }

    Clock &clock() const { return m_clock; }
    const std::shared_ptr<ReadyQueue> &queue() const { return m_queue; }

    /// Ends every task: cancels all, lets them finish for at most `limit`, and destroys what is left, the
    /// newest first. Nothing runs afterwards.
    void shutdown(std::chrono::milliseconds limit);

private:
    friend class RootTaskBase;

    void start(std::shared_ptr<RootTaskBase> root);
    void retire(RootTaskBase &root);

    Clock &m_clock;
    std::list<std::shared_ptr<RootTaskBase>> m_roots; ///< In the order in which they were spawned.
    std::vector<std::shared_ptr<RootTaskBase>> m_retired;
    std::shared_ptr<ReadyQueue> m_queue;
};

} // namespace morvane
