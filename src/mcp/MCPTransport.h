#pragma once

#include "async/Task.h"

#include <QByteArray>
#include <QtGlobal>
#include <optional>

namespace morvane {

/// What carries a connection's messages to its server. Answers go to the PendingRequests that the transport
/// was made with. Main thread.
class MCPTransport {
public:
    /// Shuts down.
    virtual ~MCPTransport() = default;

    /// Makes ready to send; for a child process, launches it, in place of one that runs. Throws MCPError. The
    /// transport outlives the task.
    virtual Task<void> start() = 0;

    /// Which server is asked now; changes when start() replaces it.
    virtual quint64 receiver() const = 0;

    enum class Kind {
        handshake, ///< Begins a session.
        other,
    };
    /// Sends one message, the text of a JSON object; `id` is that of a request. Whether it went on its way.
    virtual bool deliver(QByteArray message, std::optional<qint64> id, Kind kind) = 0;

    /// Nobody waits for the answer to this request any more.
    virtual void abandon(qint64 id) = 0;

    /// Ends the server's process or the exchanges with it, without waiting for that. Nothing starts again.
    virtual void shutdown() = 0;
};

} // namespace morvane
