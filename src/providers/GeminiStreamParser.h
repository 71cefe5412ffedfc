#pragma once

#include "providers/StreamChunk.h"
#include "providers/StreamParser.h"
#include "providers/StreamText.h"

#include <QHash>
#include <optional>
#include <string>
#include <vector>

namespace morvane {

/// Reads the stream of a Gemini server: text and function calls of the first candidate. Calls with the same
/// id, or the same name where they have none, are one call whose arguments are merged.
class GeminiStreamParser final : public StreamParser {
public:
    /// Never ends by itself: the interface has no end marker.
    Progress feed(QByteArrayView line, QStringList &pieces) override;
    void end(QStringList &pieces) override;
    AITurnResult finish() override;

private:
    struct Call {
        QString key; ///< The id if the call has one, else the name.
        QString name;
        boost::json::object arguments;
        std::optional<QString> thoughtSignature;
    };

    void takePart(const boost::json::object &part, QStringList &pieces);

    StreamChunk m_chunk;
    StreamText m_text;
    std::string m_finishReason;
    std::vector<Call> m_calls; ///< In order of first appearance.
    QHash<QString, std::size_t> m_callByKey;
};

} // namespace morvane
