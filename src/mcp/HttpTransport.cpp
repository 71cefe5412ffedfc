#include "mcp/HttpTransport.h"

#include "mcp/HttpExchanges.h"
#include "mcp/JsonRpc.h"
#include "mcp/MCPError.h"

#include <QUrl>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

QUrl parsedUrl(const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    return QUrl(QString::fromUtf8(trimmedBlanks(utf8)));
}

bool isWebAddress(const QUrl &url)
{
    return url.isValid() && (url.scheme() == "http"_L1 || url.scheme() == "https"_L1);
}

} // namespace

HttpTransport::HttpTransport(const QString &url, Scheduler &scheduler, HttpClient &client,
                             std::shared_ptr<PendingRequests> requests)
    : m_url(parsedUrl(url)),
      m_exchanges(std::make_shared<HttpExchanges>(m_url, scheduler, client, std::move(requests)))
{
}

HttpTransport::~HttpTransport()
{
    shutdown();
}

Task<void> HttpTransport::start()
{
    if (!isWebAddress(m_url))
        throw MCPError(u"The server URL must start with http:// or https://."_s);
    co_return;
}

bool HttpTransport::deliver(QByteArray message, std::optional<qint64> id, Kind kind)
{
    if (!m_url.isValid())
        return false;
    return m_exchanges->start(std::move(message), id, kind);
}

void HttpTransport::abandon(qint64 id)
{
    m_exchanges->end(id);
}

void HttpTransport::shutdown()
{
    m_exchanges->endAll();
}

} // namespace morvane
