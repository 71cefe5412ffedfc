#include "net/HttpRequest.h"

using namespace Qt::StringLiterals;

namespace morvane {

std::optional<TransportError> HttpRequest::problem() const
{
    using Kind = TransportError::Kind;
    // QUrl keeps schemes in lower case.
    const bool webScheme = url.scheme() == "http"_L1 || url.scheme() == "https"_L1;
    if (!url.isValid() || !webScheme || url.host().isEmpty())
        return TransportError(Kind::invalidUrl);
    if (!headers.areWellFormed() || !HttpHeaders{{method, {}}}.areWellFormed())
        return TransportError(Kind::invalidRequest);
    return std::nullopt;
}

} // namespace morvane
