#pragma once

#include <chrono>

namespace morvane {

/// The times of a shell command.
struct ShellLimits {
    std::chrono::milliseconds time{30'000};     ///< After which it is asked to stop.
    std::chrono::milliseconds untilKill{2'000}; ///< From then until it is stopped by force.
    /// How long after the command's end its answer waits for pipes that background processes hold open.
    std::chrono::milliseconds untilAnswer{200};
};

} // namespace morvane
