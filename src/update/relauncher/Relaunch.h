#pragma once

#include <chrono>
#include <functional>

namespace morvane {

/// What the relauncher does to the world.
struct RelaunchSteps {
    /// Waits for the end of the old process, for so long at most. Whether it has ended.
    std::function<bool(std::chrono::milliseconds)> oldProcessEnds;
    std::function<void(std::chrono::milliseconds)> sleep;
    std::function<void()> removeOldBundle;
    std::function<void()> startNewProgram;
    /// Whether the program that was started last still runs after that time, or has done its work: handed
    /// over to one that the user has started meanwhile.
    std::function<bool(std::chrono::milliseconds)> newProgramRuns;
};

/// Waits for the old program, removes it, and starts the new one, three times at most. The exit status: 1 if
/// the old one does not end, and then nothing is started.
inline int relaunch(const RelaunchSteps &steps)
{
    constexpr int rounds = 400;
    constexpr auto round = std::chrono::milliseconds(300);
    if (!steps.oldProcessEnds(rounds * round))
        return 1;
    steps.sleep(std::chrono::seconds(1)); // until what the old program has started has noticed its end, too
    steps.removeOldBundle();
    steps.startNewProgram();
    for (int again = 0; again < 2 && !steps.newProgramRuns(std::chrono::seconds(1)); ++again) {
        steps.sleep(std::chrono::seconds(2));
        steps.startNewProgram();
    }
    return 0;
}

} // namespace morvane
