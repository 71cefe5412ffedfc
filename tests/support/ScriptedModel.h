#pragma once

#include "support/ModelScript.h"
#include "support/ScriptedEvents.h"

#include <atomic>
#include <boost/json/value.hpp>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace morvane {

/// One request as the server received it.
struct ScriptedRequest {
    std::string method;
    std::string target;                         ///< Path and query.
    std::map<std::string, std::string> headers; ///< Names in lower case.
    std::string body;
    boost::json::value json;              ///< The parsed body; null if it is no JSON.
    int turn = -1;                        ///< Index of the turn of the sequence that answers it, -1 for none.
    std::chrono::microseconds received{}; ///< Since the server's start.
    /// From the last byte of the previous answer, on any connection, to this request; 0 for the first.
    std::chrono::microseconds sinceLastAnswer{};

    /// One object with all of the above, without line breaks; `body` only where `json` is null.
    std::string toJson() const;
};

/// A model provider on loopback that answers from a script and records what it is asked.
///
/// Speaks chat completions (POST …/chat/completions), Gemini (POST …:streamGenerateContent) and the probes
/// of a local model server (GET /api/version, /api/tags). POST /control/release lets one stalled answer go
/// on. Runs in its own threads; every function may be called from any thread. The destructor closes all
/// connections.
class ScriptedModel {
public:
    using RequestObserver = std::function<void(const ScriptedRequest &)>;

    /// Listens on 127.0.0.1; port 0 chooses a free one. `observer` is called for every request, one at a
    /// time, on a thread of the server. Throws std::system_error when the port cannot be had.
    explicit ScriptedModel(ModelScript script = {}, std::uint16_t port = 0, RequestObserver observer = {});
    ~ScriptedModel();
    ScriptedModel(const ScriptedModel &) = delete;
    ScriptedModel &operator=(const ScriptedModel &) = delete;

    std::uint16_t port() const { return m_port; }
    /// "http://127.0.0.1:{port}", without a slash at the end.
    std::string baseURL() const;

    /// Adds a turn at the end of the sequence.
    void appendTurn(ScriptedTurn turn);
    /// Lets this many stalled steps, present or future, go on.
    void release(int count = 1);

    std::vector<ScriptedRequest> requests() const;
    /// Whether this many requests have come, waiting up to `limit` for them.
    bool waitForRequests(std::size_t count, std::chrono::milliseconds limit = std::chrono::seconds(10));
    /// Whether the client has left this many answers before their end, waiting up to `limit`.
    bool waitForAbandoned(std::size_t count, std::chrono::milliseconds limit = std::chrono::seconds(10));

private:
    friend class ScriptedModelConnection;

    struct Connection {
        int descriptor = -1;
        std::jthread thread;
    };

    void acceptConnections();
    /// Records the request and chooses the answer.
    ScriptedTurn take(ScriptedRequest &request);
    ScriptedTurn answerFor(ScriptedRequest &request);
    void answered(bool abandoned);
    /// Waits until a release is there to be used; false when the client left or the server stops.
    bool waitForRelease(int descriptor);

    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
    RequestObserver m_observer;
    int m_listener = -1;
    std::uint16_t m_port = 0;
    std::atomic<bool> m_stopping = false;

    mutable std::mutex m_mutex; ///< Guards everything below.
    std::condition_variable m_changed;
    ModelScript m_script;
    std::size_t m_nextTurn = 0;
    std::vector<ScriptedRequest> m_requests;
    std::size_t m_abandoned = 0;
    int m_releases = 0;
    std::optional<std::chrono::steady_clock::time_point> m_lastAnswer;
    std::list<Connection> m_connections;

    std::jthread m_acceptor;
};

} // namespace morvane
