#pragma once

#include <chrono>
#include <stop_token>

namespace morvane {

/// The waits between the events of a sequence. Any thread.
class SequenceClock {
public:
    virtual ~SequenceClock() = default;

    /// Blocks for `duration`, or until `stop` is asked for.
    virtual void sleep(std::chrono::milliseconds duration, const std::stop_token &stop) = 0;
};

/// Real time.
class RealSequenceClock final : public SequenceClock {
public:
    void sleep(std::chrono::milliseconds duration, const std::stop_token &stop) override;
};

} // namespace morvane
