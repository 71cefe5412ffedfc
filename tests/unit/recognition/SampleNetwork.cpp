#include "SampleNetwork.h"

#include <algorithm>
#include <cmath>

namespace morvane {
namespace {

template <class Number> void put(std::string &data, Number value)
{
    data.append(reinterpret_cast<const char *>(&value), sizeof value);
}

void putText(std::string &data, const std::string &text)
{
    put(data, uint32_t(text.size()));
    data += text;
}

void putLayer(std::string &data, const std::string &type, uint32_t options = 0)
{
    put(data, uint8_t(0));
    putText(data, type);
    put(data, uint16_t(0));
    put(data, options);
    for (int size = 0; size < 3; ++size)
        put(data, uint32_t(7));
    putText(data, "its name");
}

int rounded(double value)
{
    return int(std::lround(value * 127));
}

double logistic(double value)
{
    return 1 / (1 + std::exp(-value));
}

} // namespace

SampleNetwork::SampleNetwork()
    : m_edges(matrix(9, depth)), m_downward(gates(depth)), m_forward(gates(depth)), m_backward(gates(depth)),
      m_letters(matrix(depth, 4))
{
}

SampleNetwork::Matrix SampleNetwork::matrix(int inputs, int outputs)
{
    Matrix made{inputs, {}, {}};
    for (int weight = 0; weight < outputs * (inputs + 1); ++weight) {
        m_random = m_random * 1'664'525 + 1'013'904'223;
        made.weights.push_back(int8_t(m_random >> 24));
    }
    for (int output = 0; output < outputs; ++output)
        made.scales.push_back(0.01 + 0.002 * output);
    return made;
}

std::vector<SampleNetwork::Matrix> SampleNetwork::gates(int inputs)
{
    std::vector<Matrix> all;
    for (int gate = 0; gate < 4; ++gate)
        all.push_back(matrix(inputs + depth, depth));
    return all;
}

std::string SampleNetwork::data() const
{
    constexpr uint32_t hasRates = 64;
    std::string network;
    const auto putMatrix = [&network](const Matrix &matrix) {
        put(network, uint8_t(128 | 4 | 1));
        put(network, uint32_t(matrix.scales.size()));
        put(network, uint32_t(matrix.inputs + 1));
        put(network, int8_t(0));
        network.append(matrix.weights.begin(), matrix.weights.end());
        put(network, uint32_t(matrix.scales.size()));
        for (const double scale : matrix.scales)
            put(network, scale);
    };
    const auto putGates = [&](const std::string &type, const std::vector<Matrix> &gates) {
        putLayer(network, type);
        put(network, uint32_t(gates[0].inputs));
        for (const Matrix &gate : gates)
            putMatrix(gate);
    };
    const auto putNumbers = [&network](std::initializer_list<uint32_t> numbers) {
        for (const uint32_t number : numbers)
            put(network, number);
    };
    putLayer(network, "Series", hasRates);
    putNumbers({7});
    putLayer(network, "Input");
    putNumbers({1, height, 0, 1, 0});
    putLayer(network, "Series", hasRates);
    putNumbers({2});
    putLayer(network, "Convolve");
    putNumbers({1, 1});
    putLayer(network, "Tanh");
    putMatrix(m_edges);
    putNumbers({2, 0, 0}); // rates
    putLayer(network, "Maxpool");
    putNumbers({3, 3});
    putLayer(network, "XYTranspose");
    putNumbers({1});
    putGates("SummLSTM", m_downward);
    putGates(rowLayer, m_forward);
    putLayer(network, "RTLReversed", hasRates);
    putNumbers({1});
    putGates("LSTM", m_backward);
    putNumbers({1, 0}); // a rate
    putLayer(network, lastLayer);
    putMatrix(m_letters);
    putNumbers({1, 0}); // a rate
    putText(network, "its form");
    putNumbers({1 | 64, 0, 0, uint32_t(letters.size() - 1)});
    std::string names = std::to_string(letters.size()) + '\n';
    for (const std::string &letter : letters)
        names += letter + " 5 0,255 Latin\n";
    std::string codes;
    put(codes, uint32_t(letters.size()));
    for (std::size_t letter = 0; letter < letters.size(); ++letter) {
        put(codes, uint8_t(1));
        put(codes, uint32_t(partsOfACode));
        for (int part = 0; part < partsOfACode; ++part)
            put(codes, uint32_t(letter));
    }
    constexpr uint32_t parts = 24;
    std::string whole;
    put(whole, parts);
    int64_t end = 4 + 8 * parts;
    for (uint32_t part = 0; part < parts; ++part) {
        const std::string *const content =
            part == 17 ? &network : (part == 21 ? &names : (part == 22 ? &codes : nullptr));
        put(whole, content ? end : int64_t(-1));
        end += content ? int64_t(content->size()) : 0;
    }
    return whole + network + names + codes;
}

std::vector<double> SampleNetwork::Matrix::times(const std::vector<int> &input) const
{
    std::vector<double> result;
    for (std::size_t output = 0; output < scales.size(); ++output) {
        const int8_t *const row = weights.data() + output * std::size_t(inputs + 1);
        int sum = 127 * row[inputs];
        for (std::size_t at = 0; at < input.size(); ++at)
            sum += row[at] * input[at];
        result.push_back(sum * scales[output] / 127);
    }
    return result;
}

SampleNetwork::Rows SampleNetwork::through(const std::vector<Matrix> &gates, const Rows &input)
{
    Rows result;
    std::vector<double> states(depth);
    std::vector<int> output(depth);
    for (const std::vector<int> &step : input) {
        std::vector<int> both = step;
        both.insert(both.end(), output.begin(), output.end());
        const std::vector<double> in = gates[0].times(both);
        const std::vector<double> howMuch = gates[1].times(both);
        const std::vector<double> kept = gates[2].times(both);
        const std::vector<double> out = gates[3].times(both);
        for (std::size_t at = 0; at < depth; ++at) {
            states[at] = states[at] * logistic(kept[at]) + std::tanh(in[at]) * logistic(howMuch[at]);
            output[at] = rounded(std::tanh(states[at]) * logistic(out[at]));
        }
        result.push_back(output);
    }
    return result;
}

std::vector<double> SampleNetwork::likelihoods(const std::vector<uint8_t> &pixels, int width) const
{
    const auto number = [&](int x, int y) {
        if (x < 0 || y < 0 || x >= width || y >= height)
            return 0;
        // Ink and paper are the shades below which a quarter and three quarters of all lie.
        const double shade = (pixels[std::size_t(y * width + x)] - 0.25) / 127.25 - 1;
        return std::clamp(int(std::lround(shade * 128)), -127, 127);
    };
    Rows columns;
    for (int column = 0; column < width / 3; ++column) {
        Rows places;
        for (int place = 0; place < height / 3; ++place) {
            std::vector<int> most(depth, -127);
            for (int pixel = 0; pixel < 9; ++pixel) {
                std::vector<int> around;
                for (int x = -1; x <= 1; ++x)
                    for (int y = -1; y <= 1; ++y)
                        around.push_back(number(3 * column + pixel % 3 + x, 3 * place + pixel / 3 + y));
                const std::vector<double> edges = m_edges.times(around);
                for (std::size_t at = 0; at < depth; ++at)
                    most[at] = std::max(most[at], rounded(std::tanh(edges[at])));
            }
            places.push_back(most);
        }
        columns.push_back(through(m_downward, places).back());
    }
    columns = through(m_forward, columns);
    std::reverse(columns.begin(), columns.end());
    columns = through(m_backward, columns);
    std::reverse(columns.begin(), columns.end());
    std::vector<double> all;
    for (const std::vector<int> &column : columns) {
        std::vector<double> likely = m_letters.times(column);
        double sum = 0;
        for (double &letter : likely)
            sum += letter = std::exp(letter);
        for (const double letter : likely)
            all.push_back(letter / sum);
    }
    return all;
}

} // namespace morvane
