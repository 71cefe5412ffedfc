#pragma once

#include <QtGlobal>
#include <chrono>

namespace morvane {

/// What one request of the web tools may take. Tests pass shorter times.
struct WebLimits {
    /// The longest time in which nothing comes from the server.
    std::chrono::milliseconds silence = std::chrono::seconds(20);
    /// The whole request: a server that sends a byte now and then must not hold the agent for ever.
    std::chrono::milliseconds whole = std::chrono::seconds(60);
    /// Bytes of a body, decompressed; one of this size is too large already.
    qint64 tooManyBytes = 10'000'000;
};

} // namespace morvane
