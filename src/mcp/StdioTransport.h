#pragma once

#include "mcp/MCPTransport.h"
#include "mcp/PendingRequests.h"
#include "mcp/ServerInput.h"

#include <QString>
#include <QStringList>
#include <memory>

namespace morvane {

class StdioThread;

/// Talks to a tool server that runs as a child process, over its standard streams: one message a line.
class StdioTransport final : public MCPTransport {
public:
    /// `command` is split by the shell, `args` are not. `thread` must outlive the transport.
    StdioTransport(QString command, QStringList args, StdioThread &thread,
                   std::shared_ptr<PendingRequests> requests);
    ~StdioTransport() override;

    Task<void> start() override;
    quint64 receiver() const override { return m_receiver; }
    bool deliver(QByteArray message, std::optional<qint64> id, Kind kind) override;
    void abandon(qint64) override {}
    void shutdown() override;

    /// What the shell is told: the command as it stands, and the arguments in quotes.
    static QString shellLine(const QString &command, const QStringList &args);

private:
    const QString m_command;
    const QStringList m_args;
    StdioThread &m_thread;
    const std::shared_ptr<PendingRequests> m_requests;
    quint64 m_receiver = 0;               ///< Of the present server; 0 if none has run.
    quint64 m_starting = 0;               ///< Of the one that is to be the next; 0 if there is none.
    std::shared_ptr<ServerInput> m_input; ///< Null unless a server runs.
    bool m_ended = false;
};

} // namespace morvane
