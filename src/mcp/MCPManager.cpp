#include "mcp/MCPManager.h"

#include "async/Cancelled.h"
#include "async/OffMain.h"
#include "async/Scheduler.h"
#include "base/AtomicFile.h"
#include "base/RegularFile.h"
#include "base/Text.h"
#include "mcp/Log.h"

#include <QFile>
#include <QScopeGuard>
#include <algorithm>
#include <expected>
#include <optional>
#include <tuple>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr QLatin1StringView troublePrefix = "Could not connect"_L1;
constexpr QLatin1StringView offStatus = "Off"_L1;
/// Reasons come from servers and may be of any length; in characters.
constexpr qsizetype longestReason = 4'000;

/// Nobody has that many servers; a longer file is no list. In bytes.
constexpr qint64 longestFile = 16 * 1024 * 1024;

} // namespace

MCPManager::MCPManager(Scheduler &scheduler, const QString &folder, MakeTransport makeTransport)
    : m_scheduler(scheduler), m_file(folder + "/mcp-servers.json"_L1),
      m_makeTransport(std::move(makeTransport))
{
    m_writer.setMaxThreadCount(1);
    std::ignore = ensurePrivateFolder(folder); // A list that cannot be saved in it is told of.
    readServers();
}

MCPManager::~MCPManager()
{
    shutdownAll();
    m_writer.waitForDone();
}

void MCPManager::readServers()
{
    auto file = RegularFile::open(QFile::encodeName(m_file).constData());
    const auto text = file ? file->readUpTo(longestFile) : std::unexpected(file.error());
    if (text)
        m_servers = serversFromJson(*text);
    else
        qCInfo(mcpLog) << "no list of tool servers:" << text.error();
}

bool MCPManager::hasTrouble() const
{
    return std::any_of(m_servers.begin(), m_servers.end(), [this](const MCPServerConfig &server) {
        return statusText(server.id).startsWith(troublePrefix);
    });
}

Task<ToolResult> MCPManager::execute(QString exposedName, SharedJsonObject arguments)
{
    const auto route = m_routes.constFind(exposedName);
    if (route == m_routes.constEnd())
        co_return ToolResult(u"Error: that tool's MCP server is not connected right now."_s);
    const Connection connection = m_connections.value(route->server);
    if (!connection) {
        const MCPServerConfig *const server = find(route->server);
        co_return ToolResult(u"Error: the MCP server \"%1\" is not connected right now."_s.arg(
            server ? server->name : QString()));
    }
    try {
        co_return co_await connection->callTool(route->tool, std::move(arguments));
    } catch (const MCPError &error) {
        co_return ToolResult(u"Error: "_s + error.message());
    } catch (const Cancelled &) {
        co_return ToolResult(u"Error: the call was cancelled."_s);
    }
}

Task<void> MCPManager::refreshAll()
{
    if (m_isRefreshing)
        co_return;
    m_isRefreshing = true;
    const auto finished = qScopeGuard([this] { m_isRefreshing = false; });
    const QList<MCPServerConfig> snapshot = m_servers;
    for (const MCPServerConfig &server : snapshot) {
        if (!find(server.id) || isEnabled(server.id) != server.enabled)
            continue; // removed or switched meanwhile, and seen to
        if (server.enabled)
            co_await connectServer(server);
        else
            switchOff(server.id);
    }
}

void MCPManager::refresh()
{
    m_scheduler.spawn(refreshAll());
}

void MCPManager::appendServer(const MCPServerConfig &server)
{
    m_servers.append(server);
    updateExposed();
    Q_EMIT serversChanged();
}

void MCPManager::toggleServer(QUuid id, bool enabled)
{
    const auto server = std::find_if(m_servers.begin(), m_servers.end(),
                                     [id](const MCPServerConfig &config) { return config.id == id; });
    if (server == m_servers.end())
        return;
    server->enabled = enabled;
    saveServers();
    // The refresh that is to follow does nothing while another runs, which may be about this very server.
    if (!enabled && m_isRefreshing)
        switchOff(id);
    // No refresh may reach it for a while.
    if (enabled && statusText(id) == offStatus)
        setStatus(id, {});
    updateExposed();
    Q_EMIT serversChanged();
}

void MCPManager::removeServer(QUuid id)
{
    disconnectServer(id);
    m_servers.removeIf([id](const MCPServerConfig &server) { return server.id == id; });
    m_statusTexts.remove(id);
    saveServers();
    updateExposed();
    Q_EMIT serversChanged();
}

void MCPManager::saveServers()
{
    m_writer.start([file = m_file, text = serversToJson(m_servers)] {
        if (const auto written = writeFileAtomically(file, text); !written)
            qCWarning(mcpLog) << "the list of tool servers could not be saved:" << written.error();
    });
}

void MCPManager::shutdownAll()
{
    for (const Connection &connection : std::as_const(m_connections))
        connection->shutdown();
    m_connections.clear();
}

const MCPServerConfig *MCPManager::find(QUuid id) const
{
    const auto server = std::find_if(m_servers.begin(), m_servers.end(),
                                     [id](const MCPServerConfig &config) { return config.id == id; });
    return server == m_servers.end() ? nullptr : &*server;
}

bool MCPManager::isEnabled(QUuid id) const
{
    const MCPServerConfig *const server = find(id);
    return server && server->enabled;
}

MCPManager::Connection MCPManager::connectionFor(const MCPServerConfig &server)
{
    Connection &connection = m_connections[server.id];
    if (!connection) {
        connection = std::make_shared<MCPConnection>(
            [this, &server](const std::shared_ptr<PendingRequests> &requests) {
                return m_makeTransport(server, requests);
            });
    }
    return connection;
}

Task<void> MCPManager::connectServer(MCPServerConfig server)
{
    setStatus(server.id, u"Connecting…"_s);
    const Connection connection = connectionFor(server);
    std::optional<QString> failure;
    QList<ExposedTool> tools;
    try {
        co_await connection->connect();
        const QList<MCPTool> listed = co_await connection->listTools();
        tools = co_await runOffMain([name = server.name, listed] { return exposedTools(name, listed); });
    } catch (const MCPError &error) {
        failure = error.message();
    }
    if (m_connections.value(server.id) != connection)
        co_return; // removed or switched off meanwhile, and ended
    if (failure) {
        disconnectServer(server.id);
        setStatus(server.id, u"Could not connect: "_s + firstCharacters(*failure, longestReason));
    } else {
        m_listedTools.insert(server.id, tools);
        updateExposed();
        setStatus(server.id, connectedLabel(tools.size(), server.transport));
    }
}

void MCPManager::switchOff(QUuid id)
{
    disconnectServer(id);
    setStatus(id, offStatus);
}

void MCPManager::disconnectServer(QUuid id)
{
    if (const Connection connection = m_connections.take(id))
        connection->shutdown();
    if (m_listedTools.remove(id))
        updateExposed();
}

void MCPManager::setStatus(QUuid id, const QString &text)
{
    QString &status = m_statusTexts[id];
    if (status == text)
        return;
    status = text;
    Q_EMIT statusTextChanged(id);
}

void MCPManager::updateExposed()
{
    // The schemas of many tools take milliseconds to give back.
    QThreadPool::globalInstance()->start([gone = std::exchange(m_exposed, {})] {});
    m_routes.clear();
    for (const MCPServerConfig &server : std::as_const(m_servers)) {
        const auto listed = m_listedTools.constFind(server.id);
        if (!server.enabled || listed == m_listedTools.constEnd())
            continue;
        for (const ExposedTool &tool : *listed) {
            m_exposed.append(tool.declared);
            if (!m_routes.contains(tool.declared.name))
                m_routes.insert(tool.declared.name, {server.id, tool.name});
        }
    }
}

QString connectedLabel(qsizetype toolCount, const QString &transport)
{
    const QString how = transport == "http"_L1 ? u"remote server"_s : u"command"_s;
    return u"Connected via %1 · %2 tool%3"_s.arg(how, QString::number(toolCount),
                                                 toolCount == 1 ? QString() : u"s"_s);
}

} // namespace morvane
