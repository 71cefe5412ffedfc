#pragma once

#include "async/SystemClock.h"

#include <algorithm>

namespace morvane {

/// Real time for those who cannot wait long: what is to happen later than `longest` happens then.
class HurriedClock final : public Clock {
public:
    TimePoint now() const override { return m_real.now(); }
    std::unique_ptr<Timer> after(Duration delay, std::function<void()> function) override
    {
        return m_real.after(std::min(delay, longest), std::move(function));
    }

    Duration longest = Duration::max();

private:
    SystemClock m_real;
};

} // namespace morvane
