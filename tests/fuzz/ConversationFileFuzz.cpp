#include "store/ConversationFile.h"
#include "store/ConversationScanner.h"
#include "support/ConversationOracle.h"

#include <algorithm>
#include <cstdlib>

/// Decoding gives what the whole file as one value gives; the scan of it, in pieces, accepts what decoding
/// accepts and finds the same; what was decoded survives being written and read again.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    using namespace morvane;
    const QByteArrayView bytes(data, static_cast<qsizetype>(size));
    const auto decoded = decodeConversation(bytes);
    if (decoded != conversationOfWholeValue(bytes))
        std::abort();

    ConversationScanner scanner;
    const qsizetype pieceSize = 3 + bytes.size() % 61;
    for (qsizetype at = 0; at < bytes.size(); at += pieceSize)
        if (!scanner.feed(bytes.sliced(at, std::min(pieceSize, bytes.size() - at))))
            break;
    const auto scanned = scanner.finish();

    if (decoded.has_value() != scanned.has_value())
        std::abort();
    if (!decoded)
        return 0;
    if (*scanned != ConversationSummary{decoded->id, decoded->title, decoded->createdAt, decoded->updatedAt,
                                        decoded->messages.size()})
        std::abort();
    if (decodeConversation(encodeConversation(*decoded)) != decoded)
        std::abort();
    return 0;
}
