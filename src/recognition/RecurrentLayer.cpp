#include "recognition/RecurrentLayer.h"

#include "recognition/Activation.h"
#include "recognition/ByteReader.h"

#include <algorithm>

namespace morvane {
namespace {

constexpr int gates = 4;
/// A state never grows beyond this.
constexpr float mostState = 100;
/// What functions of whole rows work with.
constexpr std::size_t step = 8;

} // namespace

bool RecurrentLayer::read(ByteReader &data)
{
    const auto width = std::size_t(data.number<uint32_t>());
    for (int gate = 0; gate < gates; ++gate)
        if (!m_gates.append(data))
            return false;
    m_states = m_gates.outputs() / gates;
    m_gates.finish();
    return m_gates.outputs() == gates * m_states && m_states % step == 0 && m_gates.inputs() == width &&
           width > m_states;
}

RecurrentLayer::Run::Run(const RecurrentLayer &layer)
    : m_layer(layer), m_input(layer.m_gates.paddedInputs()), m_gates(layer.m_gates.paddedOutputs()),
      m_states(layer.m_states), m_output(layer.m_states)
{
}

void RecurrentLayer::Run::reset()
{
    std::fill(m_input.begin(), m_input.end(), int16_t(0));
    std::fill(m_states.begin(), m_states.end(), 0.0F);
}

std::span<const int16_t> RecurrentLayer::Run::step(std::span<const int16_t> input)
{
    std::copy(input.begin(), input.end(), m_input.begin());
    m_layer.m_gates.multiply(m_input, m_gates);
    const std::size_t count = m_states.size();
    const std::span<float> all(m_gates);
    applyTanh(all.first(count));
    applyLogistic(all.subspan(count, (gates - 1) * count));
    for (std::size_t at = 0; at < count; ++at) {
        m_states[at] =
            std::clamp(m_states[at] * all[2 * count + at] + all[at] * all[count + at], -mostState, mostState);
        m_output[at] = m_states[at];
    }
    applyTanh(m_output);
    const std::span<int16_t> behind = std::span(m_input).subspan(input.size(), count);
    for (std::size_t at = 0; at < count; ++at)
        behind[at] = rounded(m_output[at] * all[3 * count + at]);
    return behind;
}

} // namespace morvane
