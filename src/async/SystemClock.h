#pragma once

#include "async/Clock.h"

namespace morvane {

/// Real, monotonic time; waits are timers of the main thread's event loop.
class SystemClock final : public Clock {
public:
    TimePoint now() const override;
    std::unique_ptr<Timer> after(Duration delay, std::function<void()> function) override;
};

} // namespace morvane
