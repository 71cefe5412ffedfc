#pragma once

#include "async/Clock.h"

#include <map>
#include <vector>

namespace morvane {

/// Time that moves only when a test says so. Records every delay that was asked for.
class FakeClock final : public Clock {
public:
    TimePoint now() const override { return m_now; }
    std::unique_ptr<Timer> after(Duration delay, std::function<void()> function) override;

    /// Moves time forward and calls what falls due, in order of its time.
    void advance(Duration duration);

    std::size_t pendingTimers() const { return m_timers.size(); }
    const std::vector<Duration> &requestedDelays() const { return m_requested; }

private:
    class FakeTimer;
    struct Entry {
        FakeTimer *timer;
        std::function<void()> function;
    };

    TimePoint m_now{};
    std::multimap<TimePoint, Entry> m_timers;
    std::vector<Duration> m_requested;
};

} // namespace morvane
