#pragma once

#include <charconv>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>

namespace morvane {

/// The double nearest to a JSON number that was delivered in two parts. `approximation` is what Boost.JSON
/// 1.81 made of it, which may be off in the last digits. Nothing if the number is beyond the range of
/// doubles.
inline std::optional<double> exactJsonDouble(std::string_view firstPart, std::string_view lastPart,
                                             double approximation)
{
    std::string joined;
    if (!firstPart.empty()) {
        joined.append(firstPart).append(lastPart);
        lastPart = joined;
    }
    double number = 0;
    const auto [end, error] = std::from_chars(lastPart.data(), lastPart.data() + lastPart.size(), number);
    if (error == std::errc())
        return number;
    // Out of range: too near to zero to tell from it, or too large.
    return std::abs(approximation) < 1 ? std::optional(std::copysign(0.0, approximation)) : std::nullopt;
}

} // namespace morvane
