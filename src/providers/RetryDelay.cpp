#include "providers/RetryDelay.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace morvane {
namespace {

using Seconds = std::chrono::duration<double>;

std::optional<Seconds> secondsFrom(const QByteArray &text)
{
    double seconds = 0;
    const char *end = text.constData() + text.size();
    const auto [parsedTo, error] = std::from_chars(text.constData(), end, seconds);
    if (error != std::errc() || parsedTo != end || !std::isfinite(seconds) || seconds < 0)
        return std::nullopt;
    return Seconds(seconds);
}

} // namespace

std::chrono::nanoseconds retryDelay(const std::optional<QByteArray> &retryAfter, int attempt)
{
    const auto named = retryAfter ? secondsFrom(*retryAfter) : std::nullopt;
    const Seconds delay = named.value_or(Seconds(2 * (attempt + 1)));
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::min(delay, Seconds(longestRetryDelay)));
}

} // namespace morvane
