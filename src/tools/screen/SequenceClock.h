#pragma once

#include <QDeadlineTimer>
#include <chrono>
#include <stop_token>

namespace morvane {

/// The waits between the events of a sequence, and the limits of what it asks others. Any thread.
class SequenceClock {
public:
    virtual ~SequenceClock() = default;

    /// Blocks for `duration`, or until `stop` is asked for.
    virtual void sleep(std::chrono::milliseconds duration, const std::stop_token &stop) = 0;
    /// The end of what takes `limit` from now on.
    virtual QDeadlineTimer deadline(std::chrono::milliseconds limit) = 0;
};

} // namespace morvane
