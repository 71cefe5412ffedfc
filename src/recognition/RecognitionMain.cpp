#include "attachments/reader/Cage.h"
#include "attachments/reader/ProcessLimits.h"
#include "attachments/reader/RecognitionData.h"
#include "recognition/DistinctWords.h"
#include "recognition/LetterReader.h"
#include "recognition/PlainPicture.h"
#include "recognition/TextEngine.h"
#include "recognition/WordBounds.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace {

using namespace morvane;

/// Each takes a processor, and 60 MB of memory.
constexpr int mostThreads = 8;
constexpr int lowestStrip = 160;
/// A line of large type.
constexpr int overlap = 64;
constexpr int largestSide = 32'000;

bool setSize(GrayPicture &picture, const char *width, const char *height)
{
    picture.width = std::atoi(width);
    picture.height = std::atoi(height);
    return picture.width > 0 && picture.height > 0 && picture.width <= largestSide &&
           picture.height <= largestSide;
}

bool readPixels(GrayPicture &picture)
{
    picture.pixels.resize(std::size_t(picture.width) * std::size_t(picture.height));
    return std::fread(picture.pixels.data(), 1, picture.pixels.size(), stdin) == picture.pixels.size();
}

/// Has each engine do `work` on a thread of its own.
template <class Work> void onAll(std::vector<TextEngine> &engines, const Work &work)
{
    std::vector<std::jthread> workers;
    workers.reserve(engines.size());
    for (TextEngine &engine : engines)
        workers.emplace_back([&work, &engine] { work(engine); });
}

/// Has the engines do `count` pieces of work, each the next one when it has done its last.
template <class Work> void share(std::vector<TextEngine> &engines, std::size_t count, const Work &work)
{
    std::atomic<std::size_t> next = 0;
    onAll(engines, [&](TextEngine &engine) {
        for (std::size_t at = next++; at < count; at = next++)
            work(engine, at);
    });
}

/// Those of all languages; none if there is one among them that the library has to read.
std::vector<LetterReader> readersOf(const RecognitionData &data)
{
    std::vector<LetterReader> readers;
    for (std::size_t at = 0; at < data.languages.size();) {
        const std::size_t end = std::min(data.languages.find('+', at), data.languages.size());
        const std::string path = data.folder + '/' + data.languages.substr(at, end - at) + ".traineddata";
        std::vector<char> content;
        if (!RecognitionData::read(path.c_str(), &content) || !readers.emplace_back().prepare(content))
            return {};
        at = end + 1;
    }
    return readers;
}

std::vector<FoundLine> linesOf(const GrayPicture &picture, std::vector<TextEngine> &engines)
{
    const int most = int(engines.size());
    std::vector<Strip> parts =
        strips(picture.height, std::clamp(picture.height / lowestStrip, 1, most), overlap);
    share(engines, parts.size(),
          [&](TextEngine &engine, std::size_t part) { engine.findLines(picture, parts[part]); });
    std::vector<FoundLine> lines = mergedLines(parts, picture.height);
    for (FoundLine &line : lines)
        includeMarks(picture, line);
    return lines;
}

/// What each line reads.
std::vector<std::string> textsOf(const GrayPicture &picture, const std::vector<FoundLine> &lines,
                                 std::vector<TextEngine> &engines)
{
    const DistinctWords distinct(picture, lines);
    std::vector<WordText> words(distinct.count());
    share(engines, lines.size(), [&](TextEngine &engine, std::size_t line) {
        const std::vector<std::size_t> added = distinct.newWordsOf(line);
        if (added.empty())
            return;
        const auto readAs = [&](const std::vector<std::size_t> &places) {
            const LinePicture drawn = linePicture(picture, lines[line], places);
            return std::pair(drawn.slots, engine.read(drawn.picture));
        };
        const auto [slots, readings] = readAs(added);
        const auto found = surestTexts(slots, readings);
        for (std::size_t at = 0; at < added.size(); ++at) {
            WordText &word = words[distinct.picturesOf(line)[added[at]]];
            word = found[at] ? *found[at] : surestWord(readAs({added[at]}).second);
        }
    });
    std::vector<std::string> texts;
    for (std::size_t line = 0; line < lines.size(); ++line) {
        std::vector<WordText> ofLine;
        for (const std::size_t word : distinct.picturesOf(line))
            ofLine.push_back(words[word]);
        texts.push_back(lineText(ofLine));
    }
    return texts;
}

} // namespace

#if __has_feature(address_sanitizer)
/// The search for leaks at the end takes another process, which the cage refuses.
extern "C" int __lsan_is_turned_off()
{
    return 1;
}
#endif

/// morvane-text-recognizer WIDTH HEIGHT: reads a picture in shades of gray from its input and
/// writes its lines, each as "LEFT TOP RIGHT BOTTOM TEXT". Started by Morvane for each picture: what it needs
/// of memory ends with it. The language data is read first; then the process gives the rest of the system up,
/// and only then looks at the picture.
int main(int argc, char **argv)
{
    limitThisProcess();
    GrayPicture picture;
    if (argc != 3 || !setSize(picture, argv[1], argv[2]))
        return 2;
    std::optional<RecognitionData> data = RecognitionData::find();
    if (!data)
        data = RecognitionData::in(RecognitionData::broughtAlong());
    const int threads = std::clamp(int(std::thread::hardware_concurrency()), 1, mostThreads);
    std::vector<TextEngine> engines(static_cast<std::size_t>(threads));
    const std::vector<LetterReader> readers = data ? readersOf(*data) : std::vector<LetterReader>();
    std::atomic<bool> works = true;
    onAll(engines, [&](TextEngine &engine) {
        if (!data || !engine.prepare(*data, readers))
            works = false;
    });
    const DataFiles nothing;
    if (!works || !closeCage(nothing) || !readPixels(picture))
        return 1;
    picture = plainPicture(picture);
    const std::vector<FoundLine> lines = linesOf(picture, engines);
    for (std::size_t at = 0; const std::string &text : textsOf(picture, lines, engines)) {
        const Box &box = lines[at++].box;
        if (!text.empty())
            std::printf("%d %d %d %d %s\n", box.left, box.top, box.right, box.bottom, text.c_str());
    }
    return std::fflush(stdout) == 0 ? 0 : 1;
}
