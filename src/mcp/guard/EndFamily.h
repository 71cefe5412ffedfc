#pragma once

#include <chrono>
#include <csignal>
#include <functional>

namespace morvane {

/// What the end of a family of processes takes of the system.
struct FamilyAndTime {
    using TimePoint = std::chrono::steady_clock::time_point;

    std::function<TimePoint()> now;
    std::function<void(int signal)> signalAll; ///< To everyone in the family.
    /// Takes the status of everyone who has ended; false when nobody is left.
    std::function<bool()> reap;
    /// Waits until someone ends, and until `end` at the longest.
    std::function<void(TimePoint end)> waitUntil;
};

/// Ends a family: SIGTERM, and after two seconds SIGKILL. Returns when nobody is left, or a second after
/// that.
inline void endFamily(const FamilyAndTime &system)
{
    constexpr auto timeToStop = std::chrono::seconds(2);
    // A process that hangs in the kernel cannot be waited for.
    constexpr auto timeToDie = std::chrono::seconds(1);
    constexpr auto killInterval = std::chrono::milliseconds(10);

    if (!system.reap()) // as most often; to look for everyone takes the system longer
        return;
    system.signalAll(SIGTERM);
    for (const auto end = system.now() + timeToStop; system.reap() && system.now() < end;)
        system.waitUntil(end);
    // Again and again, since what is killed may just have started something.
    for (const auto end = system.now() + timeToDie; system.reap() && system.now() < end;) {
        system.signalAll(SIGKILL);
        system.waitUntil(system.now() + killInterval);
    }
}

} // namespace morvane
