#pragma once

#include <span>

namespace morvane {

/// 1 / (1 + e^-x) of each value, in place; exact to some millionths. The count is a multiple of 8.
void applyLogistic(std::span<float> values);

/// The hyperbolic tangent of each value, likewise.
void applyTanh(std::span<float> values);

} // namespace morvane
