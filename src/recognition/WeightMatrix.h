#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace morvane {

class ByteReader;

/// The weights of one layer of a network: small whole numbers, with a scale for each output and a weight for
/// each output that counts always. Numbers that go in and come out of layers stand for -1 to 1 as -127 to
/// 127.
class WeightMatrix {
public:
    static constexpr int one = 127;

    /// As the data has it, appended below the outputs that there are; false if it does not fit to them, or
    /// has floating numbers.
    bool append(ByteReader &data);

    std::size_t inputs() const { return m_inputs; }
    std::size_t outputs() const { return m_scales.size(); }

    /// Puts the weights in the order that `multiply` wants; nothing can be appended after that.
    void finish();

    /// How many numbers `multiply` is given: the inputs, a place that it sets itself, and padding.
    std::size_t paddedInputs() const { return 2 * m_pairs; }
    /// How many numbers it makes: the outputs and padding.
    std::size_t paddedOutputs() const { return m_paddedScales.size(); }

    void multiply(std::span<int16_t> input, std::span<float> output) const;

private:
    std::size_t m_inputs = 0;
    std::vector<int8_t> m_rows; ///< For each output its weights and the one that counts always.
    std::vector<float> m_scales;

    std::size_t m_pairs = 0; ///< Of inputs.
    std::vector<int8_t> m_packed;
    std::vector<float> m_paddedScales;
};

} // namespace morvane
