#pragma once

#include "store/ConversationBuilder.h"
#include "store/ConversationSummary.h"

#include <QByteArrayView>
#include <memory>
#include <optional>

namespace morvane {

/// Reads a conversation file piece by piece. It keeps its summary only, in constant memory, unless a builder
/// is to have the messages; then the memory is that of the messages.
class ConversationScanner {
public:
    ConversationScanner();
    /// `builder` must outlive it.
    explicit ConversationScanner(ConversationBuilder &builder);
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
