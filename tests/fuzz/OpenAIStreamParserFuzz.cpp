#include "StreamParserFuzz.h"

#include "providers/OpenAIStreamParser.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    morvane::OpenAIStreamParser parser;
    morvane::fuzzStreamParser(parser, QByteArrayView(data, static_cast<qsizetype>(size)));
    return 0;
}
