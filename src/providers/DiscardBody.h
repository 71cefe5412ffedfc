#pragma once

#include "async/Task.h"
#include "net/LineReader.h"

#include <chrono>

namespace morvane {

// How much of a body nobody wants is worth reading to keep its connection for the next request.
inline constexpr qint64 maximumDiscardedBytes = 1024 * 1024;
inline constexpr std::chrono::seconds maximumDiscardTime{5};

/// Reads a body to its end and throws it away; gives up, and closes the connection, above the limits. A
/// transport error ends it silently. Throws Cancelled only.
Task<void> discardBody(LineReader lines);

} // namespace morvane
