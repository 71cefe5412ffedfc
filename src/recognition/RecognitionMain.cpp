#include "attachments/reader/Cage.h"
#include "attachments/reader/ProcessLimits.h"
#include "recognition/StripRecognition.h"

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
/// More than threads, so that one full part of the screen does not keep the others waiting.
constexpr int stripsPerThread = 2;
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

} // namespace

#if __has_feature(address_sanitizer)
/// The search for leaks at the end takes another process, which the cage refuses.
extern "C" int __lsan_is_turned_off()
{
    return 1;
}
#endif

/// morvane-text-recognizer WIDTH HEIGHT LANGUAGES: reads a picture in shades of gray from its input and
/// writes its lines, each as "LEFT TOP RIGHT BOTTOM TEXT". Started by Morvane for each picture: what it needs
/// of memory ends with it. The language data is read first; then the process gives the rest of the system up,
/// and only then looks at the picture.
int main(int argc, char **argv)
{
    limitThisProcess();
    GrayPicture picture;
    if (argc != 4 || !setSize(picture, argv[1], argv[2]))
        return 2;
    const int threads = std::clamp(int(std::thread::hardware_concurrency()), 1, mostThreads);
    const int count = std::clamp(picture.height / lowestStrip, 1, threads * stripsPerThread);
    std::vector<StripRecognition> engines(std::size_t(std::min(threads, count)));
    std::atomic<bool> works = true;
    const auto onAll = [&engines](const auto &work) {
        std::vector<std::jthread> workers;
        workers.reserve(engines.size());
        for (StripRecognition &engine : engines)
            workers.emplace_back([&work, &engine] { work(engine); });
    };
    onAll([&](StripRecognition &engine) {
        if (!engine.prepare(argv[3]))
            works = false;
    });
    const DataFiles nothing;
    if (!works || !closeCage(nothing) || !readPixels(picture))
        return 1;
    std::vector<Strip> parts = strips(picture.height, count, overlap);
    std::atomic<int> next = 0;
    onAll([&](StripRecognition &engine) {
        for (int part = next++; part < count; part = next++)
            engine.recognize(picture, parts[std::size_t(part)]);
    });
    for (const TextLine &line : mergedLines(parts, picture.height))
        std::printf("%d %d %d %d %s\n", line.left, line.top, line.right, line.bottom, line.text.c_str());
    return std::fflush(stdout) == 0 ? 0 : 1;
}
