#include "tools/screen/RealSequenceClock.h"

#include <condition_variable>
#include <mutex>

namespace morvane {

void RealSequenceClock::sleep(std::chrono::milliseconds duration, const std::stop_token &stop)
{
    std::mutex mutex;
    std::condition_variable_any neverNotified;
    std::unique_lock lock(mutex);
    neverNotified.wait_for(lock, stop, duration, [] { return false; });
}

} // namespace morvane
