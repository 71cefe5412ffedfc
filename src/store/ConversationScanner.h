#pragma once

#include "store/ConversationSummary.h"

#include <QByteArrayView>
#include <memory>
#include <optional>

namespace morvane {

/// Reads a conversation file piece by piece and keeps its summary only: several times faster than decoding,
/// and in constant memory, yet it accepts exactly the files that decodeConversation accepts.
class ConversationScanner {
public:
    ConversationScanner();
    ~ConversationScanner();

    /// Takes the next bytes; false if the file cannot be decoded, whatever follows. The first piece must hold
    /// at least three bytes, or the whole file.
    bool feed(QByteArrayView piece);

    /// The summary of what was fed; nothing if it cannot be decoded.
    std::optional<ConversationSummary> finish();

private:
    class Parser;
    std::unique_ptr<Parser> m_parser;
};

} // namespace morvane
