#pragma once

#include "async/Task.h"
#include "mcp/MCPTransport.h"
#include "mcp/PendingRequests.h"

#include <QString>
#include <QUrl>
#include <memory>

namespace morvane {

class HttpClient;
class HttpExchanges;
class Scheduler;

/// Talks to a tool server by HTTP POST, one exchange for each message. The answer comes as JSON or as the
/// first fitting event of a stream. Statuses are not looked at, but for RefusalRepair's two cases.
class HttpTransport final : public MCPTransport {
public:
    /// `scheduler` and `client` must outlive the transport.
    HttpTransport(const QString &url, Scheduler &scheduler, HttpClient &client,
                  std::shared_ptr<PendingRequests> requests);
    ~HttpTransport() override;

    /// Sends nothing: it is only a check of the address.
    Task<void> start() override;
    quint64 receiver() const override { return 0; }
    bool deliver(QByteArray message, std::optional<qint64> id, Kind kind) override;
    void abandon(qint64 id) override;
    void shutdown() override;

private:
    const QUrl m_url;
    const std::shared_ptr<HttpExchanges> m_exchanges;
};

} // namespace morvane
