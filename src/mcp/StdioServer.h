#pragma once

#include "async/OneShot.h"
#include "base/ChildProcess.h"
#include "base/FileDescriptor.h"
#include "mcp/LineFraming.h"
#include "mcp/PendingRequests.h"
#include "mcp/ServerInput.h"

#include <QByteArray>
#include <QString>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <poll.h>
#include <vector>

namespace morvane {

/// One tool server that runs as a child process, with the guard that ends it and all that it starts. Used by
/// the StdioThread alone, but for its input.
class StdioServer {
public:
    /// How the start of a server ended: with the way to write to it, or with the system's reason.
    using Started = std::expected<std::shared_ptr<ServerInput>, QString>;

    struct Order {
        QByteArray guard; ///< The guard program's path.
        QByteArray shell; ///< The path of the program that takes commands behind "-c".
        QByteArray line;
        std::weak_ptr<PendingRequests> requests; ///< Where the server's messages go.
        quint64 receiver = 0;                    ///< As which the requests know this server.
        OneShot<Started> started;
    };

    /// Launches the server; whether that worked is told through the order. `wake` is called when there is
    /// something to write.
    StdioServer(Order order, std::function<void()> wake);

    /// Appends what the server waits for.
    void addTo(std::vector<pollfd> &waits);

    /// Reads and writes what there is. `buffer` is scratch.
    void advance(std::vector<char> &buffer);

    /// Ends the server and all that it has started: closes its input, then SIGTERM, and SIGKILL after two
    /// seconds. Returns at once; isOver() tells when that is done.
    void end();

    bool isOver() const { return !m_guard; }

    /// Whether the end wakes who waits; it does not on systems without such notices.
    bool tellsItsEnd() const { return m_guard->endNotice().isOpen(); }

private:
    void launch(std::function<void()> wake);
    void readGuard();
    enum class Read { all, more };
    Read readOutput(std::vector<char> &buffer);
    void discardErrors(std::vector<char> &buffer);
    void route(QList<QByteArray> lines);
    void failWaiting();

    Order m_order;
    std::optional<ChildProcess> m_guard; ///< Nothing before the start and after the end.
    FileDescriptor m_control;            ///< Closing it ends the server.
    std::shared_ptr<ServerInput> m_input;
    LineFraming m_framing;
};

} // namespace morvane
