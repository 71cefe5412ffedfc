#include "recognition/WeightMatrix.h"

#include "recognition/ByteReader.h"

#include <algorithm>
#include <array>
#include <cmath>
#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace morvane {
namespace {

/// The form of the matrix that has whole numbers and scales in double precision.
constexpr int wholeNumbers = 1;
constexpr int doublePrecision = 128;
/// No sum of products that is multiplied by it is without a bound, and nothing that is no number is below it.
constexpr double mostScale = 1e6;

/// Outputs that are worked out together: their weights for one pair of inputs lie side by side.
constexpr std::size_t group = 32;

using Sums = std::array<int32_t, group>;

void addProducts(const int8_t *weights, const int16_t *input, std::size_t pairs, Sums &sums)
{
    for (std::size_t pair = 0; pair < pairs; ++pair)
        for (std::size_t output = 0; output < group; ++output, weights += 2)
            sums[output] += weights[0] * input[2 * pair] + weights[1] * input[2 * pair + 1];
}

#if defined(__x86_64__)
/// The same, eight outputs with one instruction.
__attribute__((target("avx2"))) void addProductsWide(const int8_t *weights, const int16_t *input,
                                                     std::size_t pairs, Sums &sums)
{
    constexpr std::size_t parts = group / 8;
    __m256i part[parts] = {};
    for (std::size_t pair = 0; pair < pairs; ++pair) {
        int32_t both = 0;
        std::memcpy(&both, input + 2 * pair, sizeof both);
        const __m256i inputs = _mm256_set1_epi32(both);
        for (std::size_t at = 0; at < parts; ++at, weights += 16) {
            const __m128i eight = _mm_loadu_si128(reinterpret_cast<const __m128i *>(weights));
            part[at] = _mm256_add_epi32(part[at], _mm256_madd_epi16(_mm256_cvtepi8_epi16(eight), inputs));
        }
    }
    for (std::size_t at = 0; at < parts; ++at)
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(sums.data() + 8 * at), part[at]);
}

const bool isWide = __builtin_cpu_supports("avx2") != 0;
#endif

} // namespace

bool WeightMatrix::append(ByteReader &data)
{
    const int form = data.number<uint8_t>();
    const auto outputs = std::size_t(data.number<uint32_t>());
    const auto weights = std::size_t(data.number<uint32_t>());
    data.number<int8_t>(); // what an empty place would have
    constexpr std::size_t most = 1 << 15;
    if (!data.isGood() || (form & wholeNumbers) == 0 || (form & doublePrecision) == 0 || outputs == 0 ||
        outputs > most || weights < 2 || weights > most || (m_inputs != 0 && weights != m_inputs + 1))
        return false;
    m_inputs = weights - 1;
    const std::vector<int8_t> rows = data.numbers<int8_t>(outputs * weights);
    m_rows.insert(m_rows.end(), rows.begin(), rows.end());
    // There may be more scales than outputs.
    const std::vector<double> scales = data.numbers<double>(data.number<uint32_t>());
    if (!data.isGood() || scales.size() < outputs)
        return false;
    const std::span used = std::span(scales).first(outputs);
    if (!std::all_of(used.begin(), used.end(), [](double scale) { return std::abs(scale) <= mostScale; }))
        return false;
    std::transform(used.begin(), used.end(), std::back_inserter(m_scales),
                   [](double scale) { return float(scale / one); });
    return true;
}

void WeightMatrix::finish()
{
    const std::size_t weights = m_inputs + 1;
    const std::size_t groups = (outputs() + group - 1) / group;
    m_pairs = (weights + 1) / 2;
    m_packed.assign(groups * m_pairs * group * 2, 0);
    for (std::size_t output = 0; output < outputs(); ++output) {
        int8_t *const packed = m_packed.data() + output / group * m_pairs * group * 2 + output % group * 2;
        for (std::size_t input = 0; input < weights; ++input)
            packed[input / 2 * group * 2 + input % 2] = m_rows[output * weights + input];
    }
    m_paddedScales = m_scales;
    m_paddedScales.resize(groups * group);
    m_rows = {};
}

void WeightMatrix::multiply(std::span<int16_t> input, std::span<float> output) const
{
    input[m_inputs] = one;
    for (std::size_t first = 0; first < m_paddedScales.size(); first += group) {
        const int8_t *const weights = m_packed.data() + first * m_pairs * 2;
        Sums sums{};
#if defined(__x86_64__)
        if (isWide)
            addProductsWide(weights, input.data(), m_pairs, sums);
        else
#endif
            addProducts(weights, input.data(), m_pairs, sums);
        for (std::size_t at = 0; at < group; ++at)
            output[first + at] = float(sums[at]) * m_paddedScales[first + at];
    }
}

} // namespace morvane
