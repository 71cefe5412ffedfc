#pragma once

#include <boost/json/value.hpp>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

// The JSON form of a script (every key is optional, an unknown key is an error):
//
//   {
//     "turns": [TURN, …],                  answered one after the other, whatever model is asked for
//     "afterwards": TURN,                  every request after the last turn (otherwise status 400)
//     "title": "Scripted title",           answer to requests for a conversation's title
//     "rules": [{"system_begins": "…", "last_message_contains": "…", "turn": TURN}, …],
//                                          the first rule whose conditions all hold answers; no turn is used
//                                          up
//     "routes": {"GET /v1/models": TURN},  other addresses, by method and path without the query
//     "ollama_version": "0.5.0",           GET /api/version
//     "models": ["qwen2.5:latest", …]      GET /api/tags
//   }
//
// A TURN is an object:
//
//   "text": "…" or ["piece", …]            text deltas, sent first
//   "steps": [STEP, …]                     sent next, in order
//   "calls": [CALL, …]                     tool calls, sent last
//   "finish": "length"                     finish reason; left out: "tool_calls" or "stop" ("STOP" for
//   Gemini) "done": false                          no "[DONE]" marker "status": 503, "headers":
//   {"Retry-After": "1"}, "body": "…" or any JSON
//                                          a body is sent whole instead of a stream
//   "segment_bytes": 1                     bytes written at a time; left out: one write for one event
//   "line_end": "\r\n"                     end of the lines of the stream; left out: "\n"
//
// A CALL: {"name": "read_file", "arguments": {…} or "fragments": ["{\"pa", "th\":1}"], "id": "call_1",
//          "index": 0, "thought_signature": "…"}. Left out: id "call_N", index in order of appearance.
// A STEP is an object with one key:
//   {"text": "…"} {"call": CALL} {"error": "message"} (an error object within the stream)
//   {"raw": "bytes as they stand"} {"stall": true} (until released)
//   {"burst": 100000} (so many one-word tokens as fast as possible)
//   {"endless": "word "} (that token until the client leaves) {"reset": true} (the connection is reset)

namespace morvane {

/// One tool call of a scripted turn.
struct ScriptedCall {
    std::string name;
    std::vector<std::string> argumentFragments; ///< Concatenated they are the JSON text of the arguments.
    std::string id;
    std::optional<int> index; ///< Chat completions only; absent means its place among the turn's calls.
    std::string thoughtSignature;
};

namespace step {
struct Text {
    std::string piece;
};
struct Call {
    ScriptedCall call;
};
struct Error {
    std::string message;
};
struct Raw {
    std::string bytes;
};
struct Stall {};
struct Burst {
    std::size_t tokens = 0;
};
struct Endless {
    std::string piece;
};
struct Reset {};
} // namespace step

using ScriptStep = std::variant<step::Text, step::Call, step::Error, step::Raw, step::Stall, step::Burst,
                                step::Endless, step::Reset>;

/// One answer of the scripted model: a stream of steps, or a whole body.
struct ScriptedTurn {
    std::vector<ScriptStep> steps;
    std::optional<std::string> finish; ///< Absent: "tool_calls" or "stop", as fits the steps.
    bool doneMarker = true;
    int status = 200;
    std::vector<std::pair<std::string, std::string>> headers;
    std::optional<std::string> body;
    std::size_t segmentBytes = 0; ///< Bytes of one write; 0 means one write for one event.
    std::string lineEnd = "\n";

    static ScriptedTurn saying(std::vector<std::string> pieces);
    static ScriptedTurn calling(std::vector<ScriptedCall> calls);
    static ScriptedTurn failing(int status, std::string body = {},
                                std::vector<std::pair<std::string, std::string>> headers = {});
};

/// Requests that are answered apart from the sequence; an empty condition always holds.
struct ScriptRule {
    std::string systemBegins;
    std::string lastMessageContains;
    ScriptedTurn turn;
};

/// Everything that a ScriptedModel answers.
struct ModelScript {
    std::vector<ScriptedTurn> turns;
    std::optional<ScriptedTurn> afterwards;
    std::string title = "Scripted title";
    std::vector<ScriptRule> rules;
    std::vector<std::pair<std::string, ScriptedTurn>> routes;
    std::string ollamaVersion = "0.5.0";
    std::vector<std::string> models{"qwen2.5:latest"};

    /// Reads the form above. Throws std::runtime_error naming the fault.
    static ModelScript fromJson(std::string_view text);
};

} // namespace morvane
