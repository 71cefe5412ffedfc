#include "mcp/HttpExchanges.h"

#include "async/OffMain.h"
#include "mcp/HttpNames.h"
#include "mcp/JsonRpc.h"
#include "mcp/LineFraming.h"
#include "mcp/Log.h"
#include "net/HttpClient.h"
#include "net/Log.h"

#include <QScopeGuard>
#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace json = boost::json;

namespace morvane {

namespace {

/// Above the longest time that a request waits, so that its own words are what the user reads.
constexpr std::chrono::seconds transportTimeout = 130s;
/// Messages up to this size are parsed at once, larger ones off the main thread. In bytes.
constexpr qsizetype smallMessage = 64 * 1024;
/// What may come behind an answer before its connection is given up.
constexpr qsizetype mostBehindAnswer = 64 * 1024;
constexpr std::chrono::seconds timeBehindAnswer = 1s;

/// What became of one message.
struct Taken {
    bool answered = false;
    std::optional<json::object> other;
};

/// Gives the message that stands behind `prefix` bytes to the request that it answers; with no request to
/// answer, any object will do.
Taken take(PendingRequests &requests, QByteArray text, qsizetype prefix, std::optional<qint64> id)
{
    const QByteArrayView bytes = QByteArrayView(text).sliced(prefix);
    if (!bytes.isValidUtf8())
        text = text.first(prefix) + QString::fromUtf8(bytes).toUtf8();
    auto message = parseJSONText(std::move(text), prefix); // the waiter may make as much of it again
    if (!message || (id && answeredID(*message) != id))
        return {false, std::move(message)};
    if (!id)
        return {true, std::move(message)};
    requests.resume(*id, std::move(message));
    return {true, std::nullopt};
}

Task<Taken> takeLarge(std::shared_ptr<PendingRequests> requests, QByteArray text, qsizetype prefix,
                      std::optional<qint64> id)
{
    return runOffMain([requests, text = std::move(text), prefix, id]() mutable {
        return take(*requests, std::move(text), prefix, id);
    });
}

} // namespace

HttpExchanges::HttpExchanges(QUrl url, Scheduler &scheduler, HttpClient &client,
                             std::shared_ptr<PendingRequests> requests)
    : m_url(std::move(url)), m_scheduler(scheduler), m_client(client), m_requests(std::move(requests))
{
}

bool HttpExchanges::start(QByteArray message, std::optional<qint64> id, MCPTransport::Kind kind)
{
    if (m_ended)
        return false;
    const quint64 number = ++m_lastNumber;
    auto task = m_scheduler.spawn(run(shared_from_this(), number, std::move(message), id, kind));
    m_exchanges.emplace(number, Exchange{id, std::move(task), nullptr});
    return true;
}

void HttpExchanges::end(qint64 id)
{
    const auto entry = std::find_if(m_exchanges.begin(), m_exchanges.end(),
                                    [id](const auto &exchange) { return exchange.second.id == id; });
    if (entry == m_exchanges.end())
        return;
    entry->second.task.cancel();
    m_exchanges.erase(entry);
}

void HttpExchanges::endAll()
{
    m_ended = true;
    for (auto &[number, exchange] : std::exchange(m_exchanges, {}))
        exchange.task.cancel();
}

Task<void> HttpExchanges::run(std::shared_ptr<HttpExchanges> self, quint64 number, QByteArray message,
                              std::optional<qint64> id, MCPTransport::Kind kind)
{
    const auto over = qScopeGuard([&self, number] { self->m_exchanges.erase(number); });
    try {
        co_await self->exchangeUntilTaken(number, std::move(message), id, kind);
    } catch (const TransportError &error) {
        qCWarning(mcpLog) << "a tool server did not take a message:" << reasonOf(error);
        if (id)
            self->m_requests->resume(*id,
                                     failureMessage(u"could not reach the server: "_s + error.description()));
    }
}

Task<void> HttpExchanges::exchangeUntilTaken(quint64 number, QByteArray message, std::optional<qint64> id,
                                             MCPTransport::Kind kind)
{
    while (true) {
        const HttpRequest sent = request(message);
        const Reply reply = co_await exchange(number, sent, id);
        if (reply.answered)
            co_return;
        const bool isHandshake = kind == MCPTransport::Kind::handshake;
        switch (m_repair.repair(sent, isHandshake, reply.status, reply.other)) {
        case RefusalRepair::Repair::none:
            co_return;
        case RefusalRepair::Repair::newSession:
            m_sessionID.reset();
            break;
        case RefusalRepair::Repair::date:
            break;
        }
    }
}

Task<HttpExchanges::Reply> HttpExchanges::exchange(quint64 number, HttpRequest sent, std::optional<qint64> id)
{
    HttpResponse response = co_await m_client.open(std::move(sent));
    noticeSession(response.headers());
    const int status = response.status();
    LineReader lines = response.lines();
    QByteArray plain;
    while (auto line = co_await lines.next()) {
        constexpr QByteArrayView prefix = "data:";
        if (!line->startsWith(prefix)) {
            plain += *line;
            if (plain.size() > LineFraming::longestLine)
                throw TransportError(TransportError::Kind::tooLarge);
            continue;
        }
        const Taken taken = line->size() <= smallMessage
                                ? take(*m_requests, *std::move(line), prefix.size(), id)
                                : co_await takeLarge(m_requests, *std::move(line), prefix.size(), id);
        if (taken.answered) {
            co_await readOn(number, &lines);
            co_return Reply{status, true, std::nullopt};
        }
    }
    if (plain.isEmpty())
        co_return Reply{status, false, std::nullopt};
    Taken taken = plain.size() <= smallMessage ? take(*m_requests, std::move(plain), 0, id)
                                               : co_await takeLarge(m_requests, std::move(plain), 0, id);
    co_return Reply{status, taken.answered && id.has_value(), std::move(taken.other)};
}

HttpRequest HttpExchanges::request(const QByteArray &message) const
{
    HttpRequest request;
    request.method = "POST";
    request.url = m_url;
    request.headers = {{"Content-Type", "application/json"},
                       {"Accept", "application/json, text/event-stream"},
                       {protocolVersionHeader, m_repair.protocolVersion()}};
    if (m_sessionID)
        request.headers.set(sessionHeader, *m_sessionID);
    request.body = message;
    request.silenceLimit = transportTimeout;
    request.connectLimit = transportTimeout;
    request.maximumLineBytes = LineFraming::longestLine;
    return request;
}

void HttpExchanges::noticeSession(const HttpHeaders &headers)
{
    const auto value = headers.value(sessionHeader);
    if (value && HttpHeaders{{sessionHeader, *value}}.areWellFormed())
        m_sessionID = *value;
}

Task<void> HttpExchanges::readOn(quint64 number, LineReader *lines)
{
    const auto entry = m_exchanges.find(number);
    if (entry == m_exchanges.end())
        co_return;
    entry->second.limit =
        m_scheduler.clock().after(timeBehindAnswer, [task = entry->second.task]() mutable { task.cancel(); });
    qsizetype bytes = 0;
    try {
        while (const auto line = co_await lines->next()) {
            bytes += line->size();
            if (bytes > mostBehindAnswer)
                break;
        }
    } catch (const TransportError &error) {
        // The answer is there; what was to follow may be missing.
        qCInfo(mcpLog) << "what followed an answer broke off:" << reasonOf(error);
    }
}

} // namespace morvane
