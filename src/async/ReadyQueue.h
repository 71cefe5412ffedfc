#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace morvane {

class Suspension;

/// Suspended coroutines that may go on, filled from any thread, drained on the main thread. One wake-up of
/// the event loop serves all that is ready; after `timeSlice` the event loop gets its turn first, so that a
/// fast stream of resumptions starves neither input nor painting. Whoever may still push keeps it alive;
/// after close() it may end on any thread.
class ReadyQueue {
public:
    /// Half of the 8 ms that nothing may hold the main thread, so that one item may overrun it.
    static constexpr std::chrono::milliseconds timeSlice{4};

    /// `afterEach` runs after each resumption, outside of any coroutine.
    explicit ReadyQueue(std::function<void()> afterEach);
    ~ReadyQueue();
    ReadyQueue(const ReadyQueue &) = delete;
    ReadyQueue &operator=(const ReadyQueue &) = delete;

    /// Queues a resumption. Any thread; ignored once the queue is closed.
    void push(std::shared_ptr<Suspension> suspension);

    /// Whether the running drain has used its slice; false outside of a drain. Main thread.
    bool sliceUsedUp() const;

    /// Resumes what becomes ready until `finished` is true or `deadline` is reached, without an event loop.
    /// For the end of the program. Main thread.
    void pumpUntil(const std::function<bool()> &finished, std::chrono::steady_clock::time_point deadline);

    /// Ignores and forgets every resumption from now on. Main thread, not from within a resumption.
    void close();

private:
    class Turns;

    void drain();
    std::shared_ptr<Suspension> pop();
    void resume(const std::shared_ptr<Suspension> &suspension);

    std::function<void()> m_afterEach;
    std::mutex m_mutex;
    std::condition_variable m_pushed;
    std::deque<std::shared_ptr<Suspension>> m_ready; ///< Guarded by m_mutex, as the two below.
    bool m_wakePosted = false;
    bool m_closed = false;
    std::unique_ptr<Turns>
        m_turns; ///< Main thread; others post to it under m_mutex, until the queue is closed.
    std::chrono::steady_clock::time_point m_sliceEnd{};
    bool m_draining = false;
};

} // namespace morvane
