#pragma once

#include "async/Clock.h"
#include "async/Scheduler.h"
#include "async/Task.h"
#include "mcp/MCPTransport.h"
#include "mcp/PendingRequests.h"
#include "mcp/RefusalRepair.h"
#include "net/HttpRequest.h"
#include "net/LineReader.h"

#include <QUrl>
#include <map>
#include <memory>
#include <optional>

namespace morvane {

class HttpClient;

/// The POSTs of one connection that are under way, and what they share: the session and how the server wants
/// to be asked. Each runs as a task of its own. Main thread.
class HttpExchanges : public std::enable_shared_from_this<HttpExchanges> {
public:
    HttpExchanges(QUrl url, Scheduler &scheduler, HttpClient &client,
                  std::shared_ptr<PendingRequests> requests);

    /// Sends one message; false after endAll().
    bool start(QByteArray message, std::optional<qint64> id, MCPTransport::Kind kind);

    /// Ends the exchange that asks this; nobody waits for the answer any more.
    void end(qint64 id);
    /// Ends all; nothing starts again.
    void endAll();

    /// Exchanges that have not ended.
    std::size_t underWay() const { return m_exchanges.size(); }

private:
    struct Exchange {
        std::optional<qint64> id;
        TaskHandle<void> task;
        std::unique_ptr<Clock::Timer> limit; ///< Of reading on behind the answer.
    };
    /// What one POST came to.
    struct Reply {
        int status = 0;
        bool answered = false;
        std::optional<boost::json::object> other; ///< A whole body that answers something else, or nothing.
    };

    static Task<void> run(std::shared_ptr<HttpExchanges> self, quint64 number, QByteArray message,
                          std::optional<qint64> id, MCPTransport::Kind kind);
    Task<Reply> exchange(quint64 number, HttpRequest sent, std::optional<qint64> id);
    Task<void> exchangeUntilTaken(quint64 number, QByteArray message, std::optional<qint64> id,
                                  MCPTransport::Kind kind);
    HttpRequest request(const QByteArray &message) const;
    void noticeSession(const HttpHeaders &headers);
    /// Reads what is behind an answer, so that the connection can be used again.
    Task<void> readOn(quint64 number, LineReader *lines);

    const QUrl m_url;
    Scheduler &m_scheduler;
    HttpClient &m_client;
    const std::shared_ptr<PendingRequests> m_requests;
    std::optional<QByteArray> m_sessionID;
    RefusalRepair m_repair;
    std::map<quint64, Exchange> m_exchanges;
    quint64 m_lastNumber = 0;
    bool m_ended = false;
};

} // namespace morvane
