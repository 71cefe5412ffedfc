#pragma once

#include "support/ModelScript.h"

#include <string>
#include <vector>

namespace morvane {

/// Which interface a request speaks; told by its path.
enum class ModelDialect { chatCompletions, gemini };

/// Writes the server-sent events of one streamed answer in the form of real providers.
class ScriptedEvents {
public:
    ScriptedEvents(ModelDialect dialect, std::string lineEnd);

    std::string text(const std::string &piece) const;
    /// One event for the head of the call and one for each fragment of its arguments; Gemini has one in all.
    std::vector<std::string> call(const ScriptedCall &call);
    std::string error(const std::string &message) const;
    /// The last events: the finish reason and, where the dialect has one, the end marker.
    std::string end(const ScriptedTurn &turn) const;

private:
    std::string event(const std::string &data) const;
    std::string chatChunk(const std::string &delta, const std::string &finish) const;

    ModelDialect m_dialect;
    std::string m_lineEnd;
    int m_callCount = 0;
};

} // namespace morvane
