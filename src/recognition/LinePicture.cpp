#include "recognition/LinePicture.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace morvane {
namespace {

/// Room above and below the line, in parts of its height.
constexpr double room = 0.15;
/// Letters are drawn narrower than they are. What reading takes grows with the width, and the engine knows
/// narrow letters.
constexpr double narrowing = 0.8;
/// Columns at both ends of the picture.
constexpr int margin = 0;
/// Fewest columns of ground between two words that do not stand side by side in the line.
constexpr int leastGap = 2;
/// Columns of the screen beside a word that belong to the soft edges of its letters.
constexpr int softEdge = 2;

/// What one pixel of the result is made of.
struct Taps {
    int first = 0;
    std::vector<float> weights;
};

/// A cubic curve through neighbouring pixels, which keeps edges sharper than a straight line does.
double cubic(double distance)
{
    const double x = std::abs(distance);
    if (x < 1)
        return 1.5 * x * x * x - 2.5 * x * x + 1;
    return x < 2 ? -0.5 * x * x * x + 2.5 * x * x - 4 * x + 2 : 0;
}

/// Draws `from` to `to` of the source on `size` pixels.
std::vector<Taps> tapsFor(double from, double to, int size)
{
    const double step = (to - from) / size;
    const double reach = std::max(step, 1.0); // several pixels become one where the picture shrinks
    std::vector<Taps> all(static_cast<std::size_t>(size));
    for (int at = 0; at < size; ++at) {
        const double middle = from + (at + 0.5) * step - 0.5;
        Taps &taps = all[static_cast<std::size_t>(at)];
        taps.first = int(std::ceil(middle - 2 * reach));
        for (int pixel = taps.first; pixel <= middle + 2 * reach; ++pixel)
            taps.weights.push_back(float(cubic((pixel - middle) / reach)));
        const float sum = std::accumulate(taps.weights.begin(), taps.weights.end(), 0.0F);
        for (float &weight : taps.weights)
            weight /= sum;
    }
    return all;
}

uint8_t shade(float value)
{
    return uint8_t(std::clamp(std::lround(value), 0L, 255L));
}

/// Draws the columns `left` to `right` of the picture with the rows of `rows` into `target` from `column` on.
void draw(const GrayPicture &picture, int left, int right, const std::vector<Taps> &rows, GrayPicture &target,
          LinePicture::Slot slot)
{
    const std::vector<Taps> columns = tapsFor(left, right, slot.right - slot.left);
    const int firstRow = rows.front().first;
    const int lastRow = rows.back().first + int(rows.back().weights.size());
    const std::size_t width = columns.size();
    std::vector<float> narrow(width * std::size_t(lastRow - firstRow));
    for (int y = firstRow; y < lastRow; ++y) {
        const uint8_t *const source = picture.row(std::clamp(y, 0, picture.height - 1));
        float *const row = narrow.data() + width * std::size_t(y - firstRow);
        for (std::size_t x = 0; x < width; ++x)
            for (std::size_t tap = 0; tap < columns[x].weights.size(); ++tap)
                row[x] += columns[x].weights[tap] *
                          float(source[std::clamp(columns[x].first + int(tap), 0, picture.width - 1)]);
    }
    std::vector<float> sum(width);
    for (int y = 0; y < target.height; ++y) {
        const Taps &taps = rows[std::size_t(y)];
        std::fill(sum.begin(), sum.end(), 0.0F);
        for (std::size_t tap = 0; tap < taps.weights.size(); ++tap) {
            const float *const row = narrow.data() + width * (std::size_t(taps.first - firstRow) + tap);
            for (std::size_t x = 0; x < width; ++x)
                sum[x] += taps.weights[tap] * row[x];
        }
        uint8_t *const out = target.pixels.data() + std::size_t(y) * std::size_t(target.width) + slot.left;
        std::transform(sum.begin(), sum.end(), out, shade);
    }
}

/// Words that stand side by side in the line too, with all that is between them.
struct Run {
    std::size_t first = 0; ///< Places in the line.
    std::size_t last = 0;
    int left = 0; ///< Columns of the screen.
    int right = 0;
};

std::vector<Run> runsOf(const FoundLine &line, const std::vector<std::size_t> &words, int width)
{
    std::vector<Run> runs;
    for (const std::size_t word : words) {
        if (runs.empty() || runs.back().last + 1 != word)
            runs.push_back({word, word});
        runs.back().last = word;
    }
    for (Run &run : runs) {
        // The soft edges of its letters as far as the neighbours leave room.
        const Box &first = line.words[run.first];
        const Box &last = line.words[run.last];
        const int before = run.first > 0 ? line.words[run.first - 1].right : 0;
        const int after = run.last + 1 < line.words.size() ? line.words[run.last + 1].left : width;
        run.left = std::min(first.left, std::max(first.left - softEdge, (before + first.left) / 2));
        run.right = std::max(last.right, std::min(last.right + softEdge, (last.right + after) / 2));
    }
    return runs;
}

/// The columns of the screen that most words of the line are apart.
int usualGap(const FoundLine &line)
{
    std::vector<int> gaps;
    for (std::size_t word = 1; word < line.words.size(); ++word)
        gaps.push_back(line.words[word].left - line.words[word - 1].right);
    if (gaps.empty())
        return 0;
    const auto middle = gaps.begin() + std::ptrdiff_t(gaps.size() / 2);
    std::nth_element(gaps.begin(), middle, gaps.end());
    return *middle;
}

/// Fills columns from the shade of one ground to that of the next.
void fill(GrayPicture &target, LinePicture::Slot columns, int from, int to)
{
    const int width = columns.right - columns.left;
    for (int y = 0; y < target.height; ++y) {
        uint8_t *const row = target.pixels.data() + std::size_t(y) * std::size_t(target.width) + columns.left;
        for (int x = 0; x < width; ++x)
            row[x] = uint8_t(from + (to - from) * x / width);
    }
}

} // namespace

LinePicture linePicture(const GrayPicture &picture, const FoundLine &line,
                        const std::vector<std::size_t> &words)
{
    const double lineHeight = std::max(line.lettersBottom - line.lettersTop, 1);
    const double top = line.lettersTop - room * lineHeight;
    const double bottom = line.lettersBottom + room * lineHeight;
    const double scale = narrowing * LinePicture::height / (bottom - top);
    const std::vector<Run> runs = runsOf(line, words, picture.width);
    LinePicture drawn;
    std::vector<LinePicture::Slot> places;
    const int gap = std::max(leastGap, int(std::lround((usualGap(line) - 2 * softEdge) * scale)));
    int column = margin;
    for (const Run &run : runs) {
        const int width = std::max(1, int(std::lround((run.right - run.left) * scale)));
        for (std::size_t word = run.first; word <= run.last; ++word)
            drawn.slots.push_back({column + int((line.words[word].left - run.left) * scale),
                                   column + int((line.words[word].right - run.left) * scale)});
        places.push_back({column, column + width});
        column += width + gap;
    }
    column += margin - gap;
    const std::size_t size = std::size_t(column) * LinePicture::height;
    drawn.picture = {column, LinePicture::height, std::vector<uint8_t>(size)};
    const std::vector<Taps> rows = tapsFor(top, bottom, LinePicture::height);
    int before = -1;
    int end = 0;
    for (std::size_t at = 0; at < runs.size(); ++at) {
        draw(picture, runs[at].left, runs[at].right, rows, drawn.picture, places[at]);
        const int ground =
            commonShade(picture, {runs[at].left, line.lettersTop, runs[at].right, line.lettersBottom});
        fill(drawn.picture, {end, places[at].left}, before < 0 ? ground : before, ground);
        before = ground;
        end = places[at].right;
    }
    fill(drawn.picture, {end, column}, before, before);
    return drawn;
}

} // namespace morvane
