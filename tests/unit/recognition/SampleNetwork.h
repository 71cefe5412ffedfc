#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace morvane {

/// Language data with a small network of random weights, and what that network says by the book.
class SampleNetwork {
public:
    static constexpr int depth = 8; ///< Numbers that each layer makes.
    static constexpr int height = 36;

    /// The letters of the data by their numbers in the list; the last one is none.
    std::vector<std::string> letters{"NULL", "a", "b", "|Broken|0|1"};
    int partsOfACode = 1;
    std::string lastLayer = "Softmax";
    std::string rowLayer = "LSTM";

    SampleNetwork();

    /// As it lies in a file.
    std::string data() const;

    /// How likely each letter is at each place of a picture whose middle row has 0 and 254 by turns.
    std::vector<double> likelihoods(const std::vector<uint8_t> &pixels, int width) const;

private:
    struct Matrix {
        int inputs = 0;
        std::vector<int8_t> weights; ///< For each output its inputs and the one that counts always.
        std::vector<double> scales;

        std::vector<double> times(const std::vector<int> &input) const;
    };
    using Rows = std::vector<std::vector<int>>;

    Matrix matrix(int inputs, int outputs);
    std::vector<Matrix> gates(int inputs);
    static Rows through(const std::vector<Matrix> &gates, const Rows &input);

    uint32_t m_random = 1;
    Matrix m_edges;
    std::vector<Matrix> m_downward;
    std::vector<Matrix> m_forward;
    std::vector<Matrix> m_backward;
    Matrix m_letters;
};

} // namespace morvane
