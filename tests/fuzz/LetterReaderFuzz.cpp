#include "recognition/LetterReader.h"

#include <cstdlib>
#include <span>

/// Language data of any content is taken or refused, and what was taken reads a line.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    using namespace morvane;
    LetterReader reader;
    if (!reader.prepare(std::span(reinterpret_cast<const char *>(data), size)))
        return 0;
    GrayPicture line{24, LetterNetwork::height, {}};
    for (int pixel = 0; pixel < line.width * line.height; ++pixel)
        line.pixels.push_back(uint8_t(pixel * 37));
    if (reader.read(line).size() > std::size_t(line.width))
        std::abort();
    return 0;
}
