#pragma once

#include <QByteArray>
#include <chrono>
#include <optional>

namespace morvane {

/// No wait before another attempt is longer.
inline constexpr std::chrono::seconds longestRetryDelay{10};

/// How long to wait after attempt number `attempt` (0 for the first): the seconds that a `Retry-After` header
/// names as a decimal number, otherwise 2 × (attempt + 1), and never more than `longestRetryDelay`. A date, a
/// negative number and anything that is no number count as no header.
std::chrono::nanoseconds retryDelay(const std::optional<QByteArray> &retryAfter, int attempt);

} // namespace morvane
