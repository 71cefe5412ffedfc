#include "recognition/Activation.h"

#include <algorithm>
#include <bit>
#include <cstdint>

namespace morvane {
namespace {

/// e^x by 2^x of the whole part and a polynomial for the rest.
[[gnu::always_inline]] inline float exponential(float x)
{
    constexpr float binary = 1.44269504F;
    constexpr float mostPower = 126;
    constexpr float rounding = 12582912; // added and taken away, it leaves whole numbers
    const float power = std::clamp(x * binary, -mostPower, mostPower);
    const float whole = (power + rounding) - rounding;
    const float rest = power - whole;
    const float fine =
        1 + rest * (0.693147182F +
                    rest * (0.240226462F + rest * (0.0555036F + rest * (0.00961813F + rest * 0.00133335F))));
    return fine * std::bit_cast<float>((int32_t(whole) + 127) << 23);
}

[[gnu::always_inline]] inline void logistic(std::span<float> values)
{
    for (float &value : values)
        value = 1 / (1 + exponential(-value));
}

[[gnu::always_inline]] inline void hyperbolicTangent(std::span<float> values)
{
    for (float &value : values)
        value = 2 / (1 + exponential(-2 * value)) - 1;
}

#if defined(__x86_64__)
[[gnu::target("avx2,fma")]] void logisticWide(std::span<float> values)
{
    logistic(values);
}

[[gnu::target("avx2,fma")]] void hyperbolicTangentWide(std::span<float> values)
{
    hyperbolicTangent(values);
}

const bool isWide = __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0;
#endif

} // namespace

void applyLogistic(std::span<float> values)
{
#if defined(__x86_64__)
    if (isWide)
        return logisticWide(values);
#endif
    logistic(values);
}

void applyTanh(std::span<float> values)
{
#if defined(__x86_64__)
    if (isWide)
        return hyperbolicTangentWide(values);
#endif
    hyperbolicTangent(values);
}

} // namespace morvane
