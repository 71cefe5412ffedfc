#include "localmodel/ProgramOutput.h"
#include "localmodel/PullProgress.h"

#include <algorithm>
#include <cstdlib>

/// Whatever a program prints, however it is cut, the same text comes of it, and progress is within its
/// bounds.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    using namespace morvane;
    if (size == 0)
        return 0;
    const qsizetype pieceSize = data[0] % 32 + 1;
    QByteArrayView bytes(data + 1, static_cast<qsizetype>(size) - 1);
    ProgramOutput whole;
    whole.append(bytes);
    ProgramOutput cut;
    while (!bytes.isEmpty()) {
        const qsizetype piece = std::min(pieceSize, bytes.size());
        cut.append(bytes.first(piece));
        bytes = bytes.sliced(piece);
        const auto line = cut.takeLine();
        if (!line)
            continue;
        if (line->isEmpty() || line->contains(u'\n') || line->contains(u'\x1b'))
            std::abort();
        const auto progress = parsePullProgress(*line);
        if (progress && (progress->fraction < 0 || progress->fraction > 1 || progress->label.isEmpty()))
            std::abort();
    }
    if (cut.text() != whole.text() || cut.tail() != whole.tail())
        std::abort();
    return 0;
}
