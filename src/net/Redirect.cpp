#include "net/Redirect.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// What says nothing about the user, and may go to any origin.
constexpr std::array<QByteArrayView, 7> harmlessHeaders{
    "Accept", "Accept-Encoding", "Accept-Language", "Content-Type", "User-Agent", "Range", "If-Range"};

bool isRedirect(int status)
{
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

bool keepsMethod(int status)
{
    return status == 307 || status == 308;
}

int portOf(const QUrl &url)
{
    return url.port(url.scheme() == "https"_L1 ? 443 : 80);
}

bool isSameOrigin(const QUrl &one, const QUrl &other)
{
    return one.scheme() == other.scheme() && one.host() == other.host() && portOf(one) == portOf(other);
}

bool isHarmless(const HttpHeaders::Field &field)
{
    return std::any_of(harmlessHeaders.begin(), harmlessHeaders.end(), [&field](QByteArrayView name) {
        return field.name.compare(name, Qt::CaseInsensitive) == 0;
    });
}

HttpHeaders harmlessOnly(const HttpHeaders &headers)
{
    HttpHeaders kept;
    for (const HttpHeaders::Field &field : headers.fields())
        if (isHarmless(field))
            kept.add(field.name, field.value);
    return kept;
}

} // namespace

std::optional<HttpRequest> redirected(const HttpRequest &request, int status, const HttpHeaders &headers)
{
    const auto location = headers.value("Location");
    if (request.redirects == RedirectRule::none || !isRedirect(status) || !location || location->isEmpty())
        return std::nullopt;

    HttpRequest next = request;
    next.url = request.url.resolved(QUrl::fromEncoded(*location));
    const bool isPlainRead = request.method == "GET" || request.method == "HEAD";
    if (!isPlainRead && !keepsMethod(status)) {
        if (request.redirects != RedirectRule::allowGet)
            return std::nullopt;
        next.method = "GET";
        next.body.clear();
        next.headers.remove("Content-Type");
    }
    const bool losesEncryption = request.url.scheme() == "https"_L1 && next.url.scheme() != "https"_L1;
    if (losesEncryption && (!next.body.isEmpty() || request.encryption == EncryptionRule::kept))
        return std::nullopt;
    if (!isSameOrigin(request.url, next.url))
        next.headers = harmlessOnly(next.headers);
    return next;
}

} // namespace morvane
