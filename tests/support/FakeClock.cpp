#include "support/FakeClock.h"

#include <algorithm>

namespace morvane {

class FakeClock::FakeTimer final : public Clock::Timer {
public:
    explicit FakeTimer(FakeClock &clock) : m_clock(clock) {}
    ~FakeTimer() override
    {
        std::erase_if(m_clock.m_timers, [this](const auto &item) { return item.second.timer == this; });
    }

private:
    FakeClock &m_clock;
};

std::unique_ptr<Clock::Timer> FakeClock::after(Duration delay, std::function<void()> function)
{
    m_requested.push_back(delay);
    auto timer = std::make_unique<FakeTimer>(*this);
    m_timers.emplace(m_now + delay, Entry{timer.get(), std::move(function)});
    return timer;
}

void FakeClock::advance(Duration duration)
{
    const TimePoint end = m_now + duration;
    while (!m_timers.empty() && m_timers.begin()->first <= end) {
        auto node = m_timers.extract(m_timers.begin());
        m_now = std::max(m_now, node.key());
        node.mapped().function();
    }
    m_now = end;
}

} // namespace morvane
