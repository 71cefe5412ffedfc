#pragma once

#include "recognition/LetterNetwork.h"
#include "recognition/LineText.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace morvane {

/// Reads lines of text with the network of one language. Any number of threads.
class LetterReader {
public:
    /// `data` is what a file of Tesseract's language data holds. False if it is no such data, or that of a
    /// language or a network that the library itself has to read: written from right to left, of letters that
    /// are told in several parts, or of another form.
    bool prepare(std::span<const char> data);

    /// The words of a picture that is one line of text, as high as LetterNetwork::height.
    std::vector<ReadWord> read(const GrayPicture &line) const;

private:
    bool readLetters(std::string_view names, ByteReader &codes);

    LetterNetwork m_network;
    std::vector<std::string>
        m_letters;             ///< By their places among those of the network; empty for what is none.
    std::size_t m_nothing = 0; ///< The place that stands for no letter.
};

/// The words that are most likely. `letters` are those that each place has a likelihood for, `nothing` the
/// one of them that stands for none; a letter that goes on over several places is one.
std::vector<ReadWord> likeliestWords(std::span<const float> likelihoods,
                                     const std::vector<std::string> &letters, std::size_t nothing);

} // namespace morvane
