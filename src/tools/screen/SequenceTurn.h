#pragma once

#include <condition_variable>
#include <mutex>
#include <stop_token>

namespace morvane {

/// Had by the one sequence whose events are on their way. Any thread.
class SequenceTurn {
public:
    /// Blocks until nobody else has it. Throws SequenceStopped, and it is not had, if `stop` is asked for
    /// meanwhile.
    void lock(const std::stop_token &stop);
    /// Lets the next one go on.
    void unlock();

private:
    std::mutex m_mutex;
    std::condition_variable_any m_isFree;
    bool m_isTaken = false;
};

} // namespace morvane
