#pragma once

#include "recognition/WeightMatrix.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace morvane {

/// A layer that takes one step after the other and keeps a state between them: a long short-term memory.
class RecurrentLayer {
public:
    /// False if the data is not that of such a layer.
    bool read(ByteReader &data);

    std::size_t inputs() const { return m_gates.inputs() - m_states; }
    /// Numbers that come out of each step.
    std::size_t outputs() const { return m_states; }

    /// The way through one row of steps. The layer has to outlive it.
    class Run {
    public:
        explicit Run(const RecurrentLayer &layer);

        /// Forgets all steps.
        void reset();
        /// What comes out of the next step; holds until the one after it.
        std::span<const int16_t> step(std::span<const int16_t> input);

    private:
        const RecurrentLayer &m_layer;
        std::vector<int16_t> m_input; ///< The step's own, and behind it what came out of the step before.
        std::vector<float> m_gates;
        std::vector<float> m_states;
        std::vector<float> m_output;
    };

private:
    WeightMatrix m_gates; ///< What goes in, how much of it, how much is kept, how much comes out.
    std::size_t m_states = 0;
};

/// A number of a layer as the next one takes it.
inline int16_t rounded(float value)
{
    return int16_t(value * WeightMatrix::one + (value < 0 ? -0.5F : 0.5F));
}

} // namespace morvane
