#pragma once

#include "support/ScriptedModel.h"

#include <string>
#include <string_view>

namespace morvane {

/// One connection of a ScriptedModel: reads requests and writes their answers until the client leaves.
class ScriptedModelConnection {
public:
    /// Does not own the descriptor.
    ScriptedModelConnection(ScriptedModel &server, int descriptor);

    void serve();

private:
    bool readRequest(ScriptedRequest &request);
    bool fill();
    bool answer(const ScriptedRequest &request, const ScriptedTurn &turn);
    bool answerWhole(const ScriptedTurn &turn, const std::string &body);
    bool answerStream(const ScriptedTurn &turn, ModelDialect dialect);
    bool perform(const ScriptStep &step, ScriptedEvents &events);
    bool burst(const std::string &event, std::size_t count);
    bool writeHead(const ScriptedTurn &turn, std::string_view contentType, std::string_view framing);
    /// Writes the bytes as HTTP chunks of at most the turn's segment size.
    bool writeChunk(std::string_view bytes);
    bool writeAll(std::string_view bytes);
    void reset();

    ScriptedModel &m_server;
    int m_descriptor;
    std::string m_buffer;
    std::size_t m_segmentBytes = 0;
    bool m_wasReset = false;
};

} // namespace morvane
