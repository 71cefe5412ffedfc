#pragma once

#include <QElapsedTimer>
#include <algorithm>
#include <functional>
#include <vector>

namespace morvane {

/// Median of so many runs of the work, in milliseconds by the clock.
inline double medianMilliseconds(int runs, const std::function<void()> &work)
{
    std::vector<double> times;
    for (int run = 0; run < runs; ++run) {
        QElapsedTimer timer;
        timer.start();
        work();
        times.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

} // namespace morvane
