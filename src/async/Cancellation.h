#pragma once

#include <functional>
#include <list>

namespace morvane {

/// Whether a task was cancelled, and who wants to know. One for each root task and each pair in a race;
/// awaited children share their parent's. Main thread.
class Cancellation {
public:
    /// Calls `function` once when the cancellation happens, as long as it lives. Must not outlive `owner`.
    class Callback {
    public:
        Callback() = default;
        Callback(Cancellation &owner, std::function<void()> function);
        ~Callback();
        Callback(Callback &&other) noexcept;
        Callback &operator=(Callback &&other) noexcept;

    private:
        Cancellation *m_owner = nullptr;
        std::list<std::function<void()>>::iterator m_entry;
    };

    Cancellation() = default;
    Cancellation(const Cancellation &) = delete;
    Cancellation &operator=(const Cancellation &) = delete;

    bool isCancelled() const { return m_cancelled; }

    /// Runs every callback once; callbacks never resume a coroutine inline. A callback may take back itself
    /// and others.
    void cancel();

private:
    using Entry = std::list<std::function<void()>>::iterator;

    void remove(Entry entry);

    bool m_cancelled = false;
    std::list<std::function<void()>> m_callbacks;
    Entry m_next = m_callbacks.end(); ///< The callback that cancel() runs next.
};

} // namespace morvane
