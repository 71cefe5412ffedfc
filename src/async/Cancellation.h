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
        using Entry = std::list<std::function<void()>>::iterator;

        Cancellation *m_owner = nullptr;
        Entry m_entry;
    };

    Cancellation() = default;
    Cancellation(const Cancellation &) = delete;
    Cancellation &operator=(const Cancellation &) = delete;

    bool isCancelled() const { return m_cancelled; }

    /// Runs every callback once; callbacks never resume a coroutine inline.
    void cancel();

private:
    bool m_cancelled = false;
    std::list<std::function<void()>> m_callbacks;
};

} // namespace morvane
