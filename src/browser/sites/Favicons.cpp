#include "browser/sites/Favicons.h"

#include "async/Race.h"
#include "async/Sleep.h"
#include "browser/pages/EvaluateWithTimeout.h"
#include "net/TransportError.h"

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

using namespace std::chrono_literals;

constexpr auto timeLimit = 6s;
constexpr auto scriptLimit = 5s;
constexpr qsizetype longestAddress = 8'192;
constexpr int found = 200;

QUrl usualPlace(const QString &scheme, const QString &host)
{
    QUrl address;
    address.setScheme(scheme);
    address.setHost(host);
    address.setPath(u"/favicon.ico"_s);
    return address;
}

Task<std::optional<FetchResult>> nothingAfter(std::chrono::milliseconds limit)
{
    co_await sleepFor(limit);
    co_return std::nullopt;
}

Task<std::optional<FetchResult>> answerOf(Task<FetchResult> fetched)
{
    try {
        co_return co_await std::move(fetched);
    } catch (const TransportError &) { // Which net/ has told the log; the site is shown without an icon.
        co_return std::nullopt;
    }
}

} // namespace

Favicons::Favicons(Fetch fetch, Decode decode) : m_fetch(std::move(fetch)), m_decode(std::move(decode)) {}

QImage Favicons::cached(const QString &host) const
{
    const QImage *icon = m_icons.object(host);
    return icon ? *icon : QImage();
}

Task<QImage> Favicons::fetchFavicon(QString host, QPointer<WebPage> page)
{
    if (const QImage known = cached(host); !known.isNull())
        co_return known;
    QList<QUrl> addresses{usualPlace(u"https"_s, host), usualPlace(u"http"_s, host)};
    if (page) {
        const QVariant named = co_await evaluateWithTimeout(
            u"document.querySelector('link[rel*=\"icon\"]')?.href"_s, page, scriptLimit);
        const QString address = named.toString();
        if (!address.isEmpty() && address.size() <= longestAddress)
            addresses.prepend(QUrl(address));
    }
    for (const QUrl &address : addresses) {
        const auto image = co_await icon(address);
        if (!image)
            continue;
        m_icons.insert(host, new QImage(*image));
        co_return *image;
    }
    co_return QImage();
}

Task<std::optional<QImage>> Favicons::icon(QUrl address)
{
    if (!address.isValid() || (address.scheme() != "https"_L1 && address.scheme() != "http"_L1))
        co_return std::nullopt;
    HttpRequest request;
    request.url = address;
    request.silenceLimit = timeLimit;
    request.redirects = RedirectRule::allowGet;
    // A server that sends a byte now and then would never be silent.
    const auto answer =
        co_await race(answerOf(m_fetch(std::move(request), mostIconBytes)), nothingAfter(timeLimit));
    if (!answer || answer->status != found || answer->body.isEmpty())
        co_return std::nullopt;
    const QImage image = co_await m_decode(answer->body);
    if (image.isNull())
        co_return std::nullopt;
    co_return image;
}

} // namespace morvane
