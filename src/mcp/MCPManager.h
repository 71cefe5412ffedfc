#pragma once

#include "async/Task.h"
#include "mcp/ExposedTools.h"
#include "mcp/MCPConnection.h"
#include "mcp/MCPServerConfig.h"

#include <QHash>
#include <QObject>
#include <QThreadPool>
#include <functional>
#include <memory>

namespace morvane {

class Scheduler;

/// The one owner of the user's tool servers: their list on disk, a connection to each, and their tools under
/// the names by which the model calls them. Main thread.
class MCPManager : public QObject {
    Q_OBJECT
public:
    /// Makes the transport of a server's connection.
    using MakeTransport = std::function<std::unique_ptr<MCPTransport>(
        const MCPServerConfig &, const std::shared_ptr<PendingRequests> &)>;

    /// Reads the list from `mcp-servers.json` in `folder`, which is made where it is missing; a list that
    /// cannot be read is empty. Connects nothing. `scheduler` must outlive the manager, and be shut down
    /// before it goes.
    MCPManager(Scheduler &scheduler, const QString &folder, MakeTransport makeTransport);
    /// Shuts all servers down, and waits until the list is saved.
    ~MCPManager() override;

    /// In the order of adding.
    const QList<MCPServerConfig> &servers() const { return m_servers; }
    /// One line on a server; empty if no refresh has reached it yet.
    QString statusText(QUuid id) const { return m_statusTexts.value(id); }
    /// Whether a server that is to be connected could not be.
    bool hasTrouble() const;

    /// The tools of all enabled servers that are connected, under the names that the model uses. Shared, not
    /// made anew, until something changes.
    const QList<AITool> &exposedAITools() const { return m_exposed; }

    /// Calls a tool by the name that the model uses. Never throws: a failure is a text that begins with
    /// "Error: "; so is the end of a call that was cancelled, which comes at once.
    Task<ToolResult> execute(QString exposedName, SharedJsonObject arguments);

    /// Connects every enabled server and lists its tools, one server after the other; disconnects the others.
    /// A refresh during a refresh does nothing: what was added or switched on meanwhile waits for the next.
    Task<void> refreshAll();
    /// Starts refreshAll as a task of its own.
    void refresh();

    /// Adds a server; saveServers() and refreshAll() are to follow.
    void appendServer(const MCPServerConfig &server);
    /// Switches a server and saves the list; refreshAll() is to follow. A server that is switched off during
    /// a refresh is ended at once. Does nothing for an unknown id.
    void toggleServer(QUuid id, bool enabled);
    /// Ends a server and takes it off the list.
    void removeServer(QUuid id);
    /// Writes the list in the background; a failure is not told.
    void saveServers();
    /// Ends all servers; does not wait for that.
    void shutdownAll();

Q_SIGNALS:
    void serversChanged();
    void statusTextChanged(QUuid id);

private:
    using Connection = std::shared_ptr<MCPConnection>;
    struct Route {
        QUuid server;
        QString tool;
    };

    void readServers();
    const MCPServerConfig *find(QUuid id) const;
    bool isEnabled(QUuid id) const;
    Connection connectionFor(const MCPServerConfig &server);
    Task<void> connectServer(MCPServerConfig server);
    void switchOff(QUuid id);
    void disconnectServer(QUuid id);
    void setStatus(QUuid id, const QString &text);
    void updateExposed();

    Scheduler &m_scheduler;
    const QString m_file;
    const MakeTransport m_makeTransport;
    QList<MCPServerConfig> m_servers;
    QHash<QUuid, QString> m_statusTexts;
    QHash<QUuid, Connection> m_connections;
    QHash<QUuid, QList<ExposedTool>> m_listedTools;
    QList<AITool> m_exposed;        ///< What the three above amount to, as the next.
    QHash<QString, Route> m_routes; ///< By exposed name; of several the first in the list.
    bool m_isRefreshing = false;
    QThreadPool m_writer; ///< One thread, so that the newest list is written last.
};

/// The status of a connected server.
QString connectedLabel(qsizetype toolCount, const QString &transport);

} // namespace morvane
