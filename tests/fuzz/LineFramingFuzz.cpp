// What a tool server prints, cut into lines: however it is divided, no line holds a line feed that ends one,
// and what was valid comes out as it went in.

#include "mcp/LineFraming.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    using namespace morvane;
    const QByteArrayView input(reinterpret_cast<const char *>(data), qsizetype(size));
    const qsizetype piece = size > 0 ? 1 + data[0] % 64 : 1;
    LineFraming framing;
    QByteArray accepted;
    QByteArray delivered;
    for (qsizetype start = 0; start < input.size(); start += piece) {
        const QByteArrayView chunk = input.sliced(start, std::min(piece, input.size() - start));
        if (chunk.isValidUtf8())
            accepted += chunk;
        for (const QByteArray &line : framing.consume(chunk)) {
            if (line.startsWith('\n') || QByteArray(line).replace("\r\n", "").contains('\n'))
                std::abort();
            delivered += line + '\n';
        }
    }
    if (!accepted.startsWith(delivered) || accepted.size() - delivered.size() != framing.pendingBytes())
        std::abort();
    return 0;
}
