#include "recognition/LetterNetwork.h"

#include "recognition/Activation.h"
#include "recognition/ByteReader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <string_view>

namespace morvane {
namespace {

/// Rows of the picture for each place.
constexpr int rows = 3;
constexpr std::size_t placesInColumn = LetterNetwork::height / rows;
/// A pixel and those around it.
constexpr std::size_t window = 9;
constexpr std::size_t mostRows = 16;

struct Layer {
    std::string type;
    uint32_t options = 0;
};

/// What every layer's data begins with.
Layer layerOf(ByteReader &data)
{
    if (data.number<uint8_t>() != 0) // the type follows by its name
        data.fail();
    Layer layer{data.text()};
    data.number<uint16_t>(); // whether it is being taught
    layer.options = data.number<uint32_t>();
    data.numbers<uint32_t>(3); // sizes, which the weights tell as well
    data.text();               // its own name
    return layer;
}

bool isLayer(ByteReader &data, std::string_view type)
{
    return layerOf(data).type == type;
}

/// What stands behind the layers that are made of others.
void passRates(ByteReader &data, const Layer &layer)
{
    constexpr uint32_t hasRates = 64;
    if (layer.options & hasRates)
        data.numbers<float>(data.number<uint32_t>());
}

template <class Read> bool readInside(ByteReader &data, std::string_view type, uint32_t parts, Read read)
{
    const Layer layer = layerOf(data);
    if (layer.type != type || data.number<uint32_t>() != parts || !read())
        return false;
    passRates(data, layer);
    return data.isGood();
}

/// The shades that stand for -1 and 0: of the ink and half way to the paper, as far as the middle row tells.
std::pair<float, float> inkAndHalf(const GrayPicture &line)
{
    std::array<int, 256> darkest{};
    std::array<int, 256> lightest{};
    const uint8_t *const row = line.row(line.height / 2);
    for (int x = 1; x + 1 < line.width; ++x) {
        const int before = row[x - 1];
        const int here = row[x];
        const int after = row[x + 1];
        if ((here < before && here <= after) || (here <= before && here < after))
            ++darkest[std::size_t(here)];
        if ((here > before && here >= after) || (here >= before && here > after))
            ++lightest[std::size_t(here)];
    }
    // The shade below which this part of all lies.
    const auto below = [](const std::array<int, 256> &counts, double part, int otherwise) {
        const double wanted = std::max(1.0, part * std::accumulate(counts.begin(), counts.end(), 0));
        double sum = 0;
        for (std::size_t shade = 0; shade < counts.size(); ++shade) {
            sum += counts[shade];
            if (counts[shade] > 0 && sum >= wanted)
                return double(shade) + 1 - (sum - wanted) / counts[shade];
        }
        return double(otherwise);
    };
    const double ink = below(darkest, 0.25, 0);
    const double paper = below(lightest, 0.75, 255);
    return {float(ink), paper > ink ? float((paper - ink) / 2) : 1.0F};
}

/// The picture in the network's numbers, with a pixel of gray all around.
std::vector<int16_t> framed(const GrayPicture &line)
{
    const auto [ink, half] = inkAndHalf(line);
    std::array<int16_t, 256> numbers{};
    for (std::size_t shade = 0; shade < numbers.size(); ++shade)
        numbers[shade] = rounded(std::clamp(((float(shade) - ink) / half - 1) * 128 / 127, -1.0F, 1.0F));
    const std::size_t width = std::size_t(line.width) + 2;
    std::vector<int16_t> all(width * (LetterNetwork::height + 2));
    for (int y = 0; y < LetterNetwork::height; ++y)
        std::transform(line.row(y), line.row(y) + line.width,
                       all.begin() + std::ptrdiff_t(width) * (y + 1) + 1,
                       [&numbers](uint8_t shade) { return numbers[shade]; });
    return all;
}

} // namespace

bool LetterNetwork::readPlaces(ByteReader &data)
{
    const auto edges = [&] {
        return isLayer(data, "Convolve") && data.numbers<uint32_t>(2) == std::vector<uint32_t>{1, 1} &&
               isLayer(data, "Tanh") && m_edges.append(data) && m_edges.inputs() == window;
    };
    if (!readInside(data, "Series", 2, edges) || !isLayer(data, "Maxpool") ||
        data.numbers<uint32_t>(2) != std::vector<uint32_t>{columns, rows})
        return false;
    m_edges.finish();
    return readInside(data, "XYTranspose", 1, [&] {
        return isLayer(data, "SummLSTM") && m_downward.read(data) && m_downward.inputs() == m_edges.outputs();
    });
}

bool LetterNetwork::readRow(ByteReader &data)
{
    Row row;
    const Layer layer = layerOf(data);
    row.isFromRight = layer.type == "RTLReversed";
    if (row.isFromRight ? data.number<uint32_t>() != 1 || !isLayer(data, "LSTM") : layer.type != "LSTM")
        return false;
    if (!row.layer.read(data))
        return false;
    if (row.isFromRight)
        passRates(data, layer);
    const RecurrentLayer &before = m_rows.empty() ? m_downward : m_rows.back().layer;
    const bool fits = row.layer.inputs() == before.outputs();
    m_rows.push_back(std::move(row));
    return fits;
}

bool LetterNetwork::read(ByteReader &data)
{
    const Layer whole = layerOf(data);
    const std::size_t parts = data.number<uint32_t>();
    constexpr std::size_t others = 5; // input, edges, pooling, downward, letters
    if (whole.type != "Series" || parts <= others || parts > mostRows || !isLayer(data, "Input"))
        return false;
    const std::vector<uint32_t> shape = data.numbers<uint32_t>(5); // pictures, height, width, shades, purpose
    if (shape.size() != 5 || shape[1] != uint32_t(height) || shape[3] != 1 || !readPlaces(data))
        return false;
    for (std::size_t row = 0; row < parts - others; ++row)
        if (!readRow(data))
            return false;
    if (!isLayer(data, "Softmax") || !m_letters.append(data) ||
        m_letters.inputs() != m_rows.back().layer.outputs())
        return false;
    m_letters.finish();
    passRates(data, whole);
    return data.isGood();
}

std::vector<int16_t> LetterNetwork::placesOf(const GrayPicture &line) const
{
    const std::vector<int16_t> pixels = framed(line);
    const std::size_t width = std::size_t(line.width) + 2;
    const std::size_t count = std::size_t(line.width) / columns;
    const std::size_t depth = m_edges.outputs();
    std::vector<int16_t> around(m_edges.paddedInputs());
    std::vector<float> edges(m_edges.paddedOutputs());
    std::vector<float> most(edges.size());
    std::vector<int16_t> places;
    places.reserve(count * placesInColumn * depth);
    for (std::size_t column = 0; column < count; ++column) {
        for (std::size_t place = 0; place < placesInColumn; ++place) {
            // What comes out grows with what goes in, so that the greatest is the same before and after.
            std::fill(most.begin(), most.end(), -1e9F);
            for (std::size_t pixel = 0; pixel < std::size_t(rows) * std::size_t(columns); ++pixel) {
                const int16_t *const corner = pixels.data() + (place * rows + pixel / columns) * width +
                                              column * columns + pixel % columns;
                for (std::size_t at = 0; at < window; ++at)
                    around[at] = corner[at % 3 * width + at / 3];
                m_edges.multiply(around, edges);
                for (std::size_t at = 0; at < most.size(); ++at)
                    most[at] = std::max(most[at], edges[at]);
            }
            applyTanh(most);
            std::transform(most.begin(), most.begin() + std::ptrdiff_t(depth), std::back_inserter(places),
                           rounded);
        }
    }
    return places;
}

LetterNetwork::Features LetterNetwork::columnsOf(const std::vector<int16_t> &places, std::size_t count) const
{
    Features features{m_downward.outputs(), {}};
    features.numbers.reserve(count * features.depth);
    const std::size_t depth = m_edges.outputs();
    RecurrentLayer::Run run(m_downward);
    const std::span<const int16_t> all(places);
    for (std::size_t column = 0; column < count; ++column) {
        run.reset();
        std::span<const int16_t> last;
        for (std::size_t place = 0; place < placesInColumn; ++place)
            last = run.step(all.subspan((column * placesInColumn + place) * depth, depth));
        features.numbers.insert(features.numbers.end(), last.begin(), last.end());
    }
    return features;
}

LetterNetwork::Features LetterNetwork::along(const Row &row, const Features &before)
{
    Features features{row.layer.outputs(), {}};
    const std::size_t count = before.numbers.size() / before.depth;
    features.numbers.resize(count * features.depth);
    RecurrentLayer::Run run(row.layer);
    for (std::size_t step = 0; step < count; ++step) {
        const std::size_t at = row.isFromRight ? count - 1 - step : step;
        const auto output = run.step(std::span(before.numbers).subspan(at * before.depth, before.depth));
        std::copy(output.begin(), output.end(),
                  features.numbers.begin() + std::ptrdiff_t(at * features.depth));
    }
    return features;
}

std::vector<float> LetterNetwork::likelihoods(const GrayPicture &line) const
{
    const std::size_t count = std::size_t(line.width) / columns;
    if (line.height != height || count == 0)
        return {};
    Features features = columnsOf(placesOf(line), count);
    for (const Row &row : m_rows)
        features = along(row, features);
    std::vector<int16_t> input(m_letters.paddedInputs());
    std::vector<float> output(m_letters.paddedOutputs());
    std::vector<float> all;
    all.reserve(count * letters());
    for (std::size_t place = 0; place < count; ++place) {
        const auto first = features.numbers.begin() + std::ptrdiff_t(place * features.depth);
        std::copy(first, first + std::ptrdiff_t(features.depth), input.begin());
        m_letters.multiply(input, output);
        const std::span<float> likely = std::span(output).first(letters());
        const float most = *std::max_element(likely.begin(), likely.end());
        float sum = 0;
        for (float &letter : likely)
            sum += letter = std::exp(letter - most);
        std::transform(likely.begin(), likely.end(), std::back_inserter(all),
                       [sum](float letter) { return letter / sum; });
    }
    return all;
}

} // namespace morvane
