#include "tools/WebTools.h"

#include "async/Cancelled.h"
#include "async/OffMain.h"
#include "async/Race.h"
#include "async/Sleep.h"
#include "base/Text.h"
#include "net/HttpClient.h"
#include "tools/InstantAnswer.h"
#include "tools/SearchResults.h"
#include "tools/StripHTML.h"

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr qsizetype mostResults = 6;
constexpr qsizetype pageCharacters = 6'000;

/// Some servers give programs that name themselves an empty or a reduced page.
constexpr char browserUserAgent[] = "Mozilla/5.0 (Macintosh; Intel Mac OS X 10_15_7) AppleWebKit/605.1.15 "
                                    "(KHTML, like Gecko) Version/17.0 Safari/605.1.15";

QString searchFailure(const QString &reason)
{
    return u"Search failed: "_s + reason;
}

QString searchFailure(int status)
{
    return u"Search failed with HTTP "_s + QString::number(status) + u'.';
}

QString noResults(const QString &query)
{
    return u"No search results were found for \""_s + query +
           u"\". Try a different query or use the web_fetch tool to read a specific page."_s;
}

/// A query item; also what a form would read as a blank is encoded, so that "c++" arrives as such.
QString encodedQuery(const QString &query)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(query));
}

std::optional<QString> decoded(QByteArrayView bytes)
{
    if (!bytes.isValidUtf8())
        return std::nullopt;
    return QString::fromUtf8(bytes);
}

/// The first results as text, empty if the page shows none; nothing if it is no text.
std::optional<QString> firstResults(QByteArrayView page)
{
    const auto html = decoded(page);
    if (!html)
        return std::nullopt;
    const QStringList entries = SearchResults::parseDDGResults(*html);
    return entries.first(std::min(entries.size(), mostResults)).join("\n\n"_L1);
}

QString readableText(QByteArrayView page)
{
    const auto html = decoded(page);
    if (!html)
        return u"Could not decode the page as text."_s;
    const QString text = trimmed(stripHTML(*html));
    return text.isEmpty() ? u"The page returned no readable text."_s : firstCharacters(text, pageCharacters);
}

} // namespace

WebTools::WebTools(HttpClient &http, WebEndpoints endpoints, WebLimits limits)
    : m_http(http), m_endpoints(std::move(endpoints)), m_limits(limits)
{
}

Task<QString> WebTools::webSearch(QString query)
{
    const QUrl url(m_endpoints.htmlSearch + u"/html/?q="_s + encodedQuery(query));
    if (!url.isValid())
        co_return u"Error: could not build the search URL."_s;
    HttpRequest search = request(url);
    search.headers.set("User-Agent", browserUserAgent);
    auto page = co_await load(std::move(search));
    if (!page)
        co_return searchFailure(page.error());
    if (!page->isSuccess())
        co_return searchFailure(page->status);
    if (page->tooLarge)
        co_return searchFailure(TransportError(TransportError::Kind::tooLarge).description());
    const auto results = co_await runOffMain([body = std::move(page->body)] { return firstResults(body); });
    if (!results)
        co_return u"Could not read the search results."_s;
    if (results->isEmpty())
        co_return co_await duckDuckGoInstantAnswer(query);
    co_return *results;
}

Task<QString> WebTools::duckDuckGoInstantAnswer(QString query)
{
    const QUrl url(m_endpoints.instantAnswer + u"/?q="_s + encodedQuery(query) +
                   u"&format=json&no_html=1&skip_disambig=1&kl=us-en"_s);
    if (!url.isValid())
        co_return noResults(query);
    auto page = co_await load(request(url));
    if (!page)
        co_return searchFailure(page.error());
    if (!page->isSuccess())
        co_return searchFailure(page->status);
    if (page->tooLarge)
        co_return searchFailure(TransportError(TransportError::Kind::tooLarge).description());
    const QString answer =
        co_await runOffMain([body = std::move(page->body)] { return InstantAnswer::text(body); });
    co_return answer.isEmpty() ? noResults(query) : answer;
}

Task<QString> WebTools::webFetch(QString url)
{
    // The scheme of a QUrl is in lower case.
    const QUrl address(url);
    if (!address.isValid() || (address.scheme() != "http"_L1 && address.scheme() != "https"_L1))
        co_return u"Error: invalid URL \""_s + url + u"\"."_s;
    HttpRequest get = request(address);
    get.headers.set("User-Agent", browserUserAgent);
    auto page = co_await load(std::move(get));
    if (!page)
        co_return u"Fetch failed: "_s + page.error();
    if (!page->isSuccess())
        co_return u"Fetch failed with HTTP "_s + QString::number(page->status) + u'.';
    if (page->tooLarge)
        co_return u"The page is too large to read."_s;
    co_return co_await runOffMain([body = std::move(page->body)] { return readableText(body); });
}

HttpRequest WebTools::request(const QUrl &url) const
{
    HttpRequest request;
    request.url = url;
    request.silenceLimit = m_limits.silence;
    request.connectLimit = m_limits.silence;
    return request;
}

Task<std::expected<WebTools::Page, QString>> WebTools::load(HttpRequest request)
{
    QString reason;
    try {
        co_return co_await race(receive(&m_http, std::move(request), m_limits.tooManyBytes - 1),
                                failWhenLate(m_limits.whole));
    } catch (const TransportError &error) {
        reason = error.description();
    } catch (const Cancelled &) {
        // A tool answers even then; the agent's run ends at its next turn.
        reason = u"The request was cancelled."_s;
    }
    co_return std::unexpected(reason);
}

Task<WebTools::Page> WebTools::receive(HttpClient *http, HttpRequest request, qint64 maximumBytes)
{
    HttpResponse response = co_await http->open(std::move(request));
    Page page{response.status(), {}, false};
    if (!page.isSuccess())
        co_return page;
    try {
        page.body = co_await response.body(maximumBytes);
    } catch (const TransportError &error) {
        if (error.kind() != TransportError::Kind::tooLarge)
            throw;
        page.tooLarge = true;
    }
    co_return page;
}

Task<WebTools::Page> WebTools::failWhenLate(std::chrono::milliseconds limit)
{
    co_await sleepFor(limit);
    throw TransportError(TransportError::Kind::timedOut);
}

} // namespace morvane
