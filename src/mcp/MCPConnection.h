#pragma once

#include "async/Clock.h"
#include "async/Task.h"
#include "base/SharedJsonObject.h"
#include "mcp/MCPTool.h"
#include "mcp/MCPTransport.h"
#include "mcp/PendingRequests.h"
#include "mcp/ToolAnswers.h"

#include <QList>
#include <QString>
#include <functional>
#include <memory>

namespace morvane {

/// One live link to one tool server: connect, then listTools, then any number of callTool at once, then
/// shutdown. Speaks of tools only; whatever a server sends that does not answer a request waiting here is
/// dropped. Main thread; the caller keeps the connection while it awaits one of its tasks.
class MCPConnection {
public:
    /// Makes the transport of a connection; its answers go to the given requests.
    using MakeTransport =
        std::function<std::unique_ptr<MCPTransport>(const std::shared_ptr<PendingRequests> &)>;

    /// Starts nothing.
    explicit MCPConnection(const MakeTransport &makeTransport);
    /// Shuts down.
    ~MCPConnection();
    MCPConnection(const MCPConnection &) = delete;
    MCPConnection &operator=(const MCPConnection &) = delete;

    /// Starts the transport and shakes hands, within 20 seconds. Throws MCPError or Cancelled. May be called
    /// again: a child process is then replaced.
    Task<void> connect();

    /// The server's tools, within 30 seconds. Throws MCPError or Cancelled.
    Task<QList<MCPTool>> listTools();

    /// Calls a tool by its own name on the server, within 120 seconds. A tool's failure is a result. Throws
    /// MCPError or Cancelled.
    Task<ToolResult> callTool(QString name, SharedJsonObject arguments);

    /// Ends the server and every request that waits, which then fails. Does not block. May be called twice.
    void shutdown();

private:
    /// Sends a request and gives what `read` makes of its result, off the main thread.
    template <class T>
    Task<T> request(QByteArray method, QByteArray params, Clock::Duration timeout, MCPTransport::Kind kind,
                    std::expected<T, MCPError> (*read)(boost::json::object));

    const std::shared_ptr<PendingRequests> m_pending;
    const std::unique_ptr<MCPTransport> m_transport;
};

} // namespace morvane
