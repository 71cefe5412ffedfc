#pragma once

#include "async/Clock.h"

namespace morvane {

/// How often something may happen: so many times within a time that begins with the first of them.
class Allowance {
public:
    /// The clock outlives it.
    Allowance(const Clock &clock, int most, Clock::Duration within)
        : m_clock(clock), m_most(most), m_within(within)
    {
    }

    /// Whether it may happen once more; then it counts.
    bool take()
    {
        const Clock::TimePoint now = m_clock.now();
        if (m_taken == 0 || now - m_began >= m_within) {
            m_began = now;
            m_taken = 0;
        }
        if (m_taken == m_most)
            return false;
        ++m_taken;
        return true;
    }

private:
    const Clock &m_clock;
    const int m_most;
    const Clock::Duration m_within;
    Clock::TimePoint m_began;
    int m_taken = 0;
};

} // namespace morvane
