#pragma once

#include "providers/StreamChunk.h"
#include "providers/StreamParser.h"
#include "providers/StreamText.h"

#include <map>
#include <optional>
#include <string>

namespace morvane {

/// Reads the stream of a chat completions server: text and tool calls of the first choice. Calls come in
/// fragments, told apart by their index.
class OpenAIStreamParser final : public StreamParser {
public:
    /// Ends at "[DONE]".
    Progress feed(QByteArrayView line, QStringList &pieces) override;
    void end(QStringList &pieces) override;
    AITurnResult finish() override;

private:
    struct PendingCall {
        std::optional<QString> id;
        StreamText name;
        StreamText arguments; ///< JSON text so far.
    };

    void takeCalls(const boost::json::array &elements);

    StreamChunk m_chunk;
    StreamText m_text;
    std::string m_finishReason;
    std::map<qint64, PendingCall> m_pendingCalls; ///< By index.
};

} // namespace morvane
