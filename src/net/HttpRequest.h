#pragma once

#include "net/HttpHeaders.h"
#include "net/TransportError.h"

#include <QByteArray>
#include <QUrl>
#include <chrono>
#include <optional>

namespace morvane {

/// What happens when the server answers with 301, 302, 303, 307 or 308 and a `Location`. A redirect that is
/// not followed reaches the caller as the response that it is.
enum class RedirectRule {
    /// Never followed.
    none,
    /// Followed with the same method and body. The answers 301, 302 and 303 to anything but GET and HEAD are
    /// not followed, because other clients would drop the body there and turn the request into a GET.
    keepMethod,
    /// As browsers do: 301, 302 and 303 turn all but GET and HEAD into a GET without a body.
    allowGet,
};

/// Whether a redirect may lead from https to http. One that may not, and does, reaches the caller as the
/// response that it is.
enum class EncryptionRule { mayBeLost, kept };

/// One HTTP request with its limits. A body is shared, not copied.
///
/// A redirect to another origin takes only harmless headers along (accept, content type, user agent), so that
/// no key reaches a stranger; a body never goes from https to http.
struct HttpRequest {
    QByteArray method = "GET";
    /// Absolute, http or https; a user name and password in it are sent as basic authentication.
    QUrl url;
    /// Added to the client's own `Accept`, `Accept-Encoding` and `User-Agent`, which they replace.
    HttpHeaders headers;
    /// Sent when not empty, and always with POST, PUT and PATCH.
    QByteArray body;

    /// The longest time in which no byte moves in either direction, from the start on. While nobody reads the
    /// response and the transfer is paused, the time does not run. There is no limit on the whole request.
    std::chrono::milliseconds silenceLimit = std::chrono::seconds(60);
    /// The longest time until a connection stands: name, TCP and TLS. Nothing: as long as silence may last.
    std::optional<std::chrono::milliseconds> connectLimit;

    RedirectRule redirects = RedirectRule::keepMethod;
    EncryptionRule encryption = EncryptionRule::mayBeLost;

    /// All header fields of one response together, in bytes.
    qsizetype maximumHeaderBytes = 256 * 1024;
    /// One line of a body that is read through a LineReader, in bytes.
    qsizetype maximumLineBytes = 16 * 1024 * 1024;

    /// What makes this request one that cannot be sent; nothing if it can.
    std::optional<TransportError> problem() const;
};

} // namespace morvane
