#include "recognition/LetterReader.h"

#include "recognition/ByteReader.h"

#include <QString>
#include <algorithm>
#include <cmath>

namespace morvane {
namespace {

/// The parts of the data, by their places in its list.
constexpr std::size_t networkPart = 17;
constexpr std::size_t lettersPart = 21;
constexpr std::size_t codesPart = 22;
constexpr std::size_t mostParts = 64;

/// A part of the data; empty if it has none.
std::span<const char> partOf(std::span<const char> data, std::size_t part)
{
    ByteReader head(data);
    const std::vector<int64_t> starts =
        head.numbers<int64_t>(std::min<std::size_t>(head.number<uint32_t>(), mostParts));
    if (part >= starts.size())
        return {};
    const auto isThere = [&](int64_t start) { return start >= 0 && std::size_t(start) <= data.size(); };
    if (!isThere(starts[part]))
        return {};
    std::size_t end = data.size();
    for (const int64_t start : starts)
        if (isThere(start) && start > starts[part])
            end = std::min(end, std::size_t(start));
    const auto start = std::size_t(starts[part]);
    return data.subspan(start, end - start);
}

bool isRightToLeft(const std::string &letter)
{
    const QString text = QString::fromStdString(letter);
    return std::any_of(text.begin(), text.end(), [](QChar character) {
        return character.direction() == QChar::DirR || character.direction() == QChar::DirAL;
    });
}

/// In percent, as the library counts: what is certain is 100, what is one of seven about 30.
float confidenceOf(float likelihood)
{
    return std::clamp(100 + 35 * std::log(std::max(likelihood, 1e-6F)), 0.0F, 100.0F);
}

} // namespace

bool LetterReader::prepare(std::span<const char> data)
{
    ByteReader network(partOf(data, networkPart));
    if (!m_network.read(network))
        return false;
    network.text(); // its form in short
    constexpr uint32_t wholeNumbers = 1;
    const auto options = network.number<uint32_t>();
    network.numbers<uint32_t>(2); // how long it was taught
    m_nothing = network.number<uint32_t>();
    const std::span<const char> names = partOf(data, lettersPart);
    ByteReader codes(partOf(data, codesPart));
    return network.isGood() && (options & wholeNumbers) && m_nothing < m_network.letters() &&
           readLetters({names.data(), names.size()}, codes);
}

bool LetterReader::readLetters(std::string_view names, ByteReader &codes)
{
    const auto takeLine = [&names] {
        const std::string_view line = names.substr(0, names.find('\n'));
        names.remove_prefix(std::min(line.size() + 1, names.size()));
        return line;
    };
    takeLine(); // how many there are
    m_letters.assign(m_network.letters(), {});
    const auto count = codes.number<uint32_t>();
    for (uint32_t letter = 0; letter < count && codes.isGood(); ++letter) {
        codes.number<uint8_t>();
        if (codes.number<uint32_t>() != 1)
            return false;
        const auto place = std::size_t(codes.number<uint32_t>());
        const std::string_view line = takeLine();
        std::string name(line.substr(0, line.find(' ')));
        if (name == "NULL")
            name = " ";
        if (place >= m_letters.size() || name.empty() || isRightToLeft(name))
            return false;
        if (place != m_nothing) // where the marks stand that are no letters, too
            m_letters[place] = name;
    }
    return codes.isGood();
}

std::vector<ReadWord> LetterReader::read(const GrayPicture &line) const
{
    return likeliestWords(m_network.likelihoods(line), m_letters, m_nothing);
}

std::vector<ReadWord> likeliestWords(std::span<const float> likelihoods,
                                     const std::vector<std::string> &letters, std::size_t nothing)
{
    struct Seen {
        std::size_t letter = 0;
        std::size_t first = 0; ///< Places.
        std::size_t last = 0;
        float likelihood = 0; ///< Where it is most likely.
    };
    std::vector<Seen> line;
    std::size_t before = nothing;
    for (std::size_t place = 0; (place + 1) * letters.size() <= likelihoods.size(); ++place) {
        const auto here = likelihoods.subspan(place * letters.size(), letters.size());
        const auto most = std::max_element(here.begin(), here.end());
        const auto letter = std::size_t(most - here.begin());
        if (letter != nothing && letter != before)
            line.push_back({letter, place, place, *most});
        else if (letter != nothing)
            line.back() = {letter, line.back().first, place, std::max(line.back().likelihood, *most)};
        before = letter;
    }
    std::vector<ReadWord> words;
    bool isInWord = false;
    for (const Seen &seen : line) {
        const std::string &letter = letters[seen.letter];
        if (!isInWord && letter != " ")
            words.push_back({int(seen.first) * LetterNetwork::columns, 0, {{}, 100, false}});
        isInWord = letter != " ";
        if (!isInWord)
            continue;
        ReadWord &word = words.back();
        word.right = int(seen.last + 1) * LetterNetwork::columns;
        word.word.text += letter;
        word.word.confidence = std::min(word.word.confidence, confidenceOf(seen.likelihood));
    }
    return words;
}

} // namespace morvane
