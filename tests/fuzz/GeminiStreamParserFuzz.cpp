#include "StreamParserFuzz.h"

#include "providers/GeminiStreamParser.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    morvane::GeminiStreamParser parser;
    morvane::fuzzStreamParser(parser, QByteArrayView(data, static_cast<qsizetype>(size)));
    return 0;
}
