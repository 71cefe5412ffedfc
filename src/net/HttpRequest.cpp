#include "net/HttpRequest.h"

namespace morvane {

std::optional<TransportError> HttpRequest::problem() const
{
    using Kind = TransportError::Kind;
    // QUrl keeps schemes in lower case.
    const bool webScheme = url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
    if (!url.isValid() || !webScheme || url.host().isEmpty())
        return TransportError(Kind::InvalidUrl);
    if (!headers.areWellFormed() || !HttpHeaders{{method, {}}}.areWellFormed())
        return TransportError(Kind::InvalidRequest);
    return std::nullopt;
}

} // namespace morvane
