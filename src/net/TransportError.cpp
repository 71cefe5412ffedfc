#include "net/TransportError.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

QString sentence(TransportError::Kind kind)
{
    using Kind = TransportError::Kind;
    switch (kind) {
    case Kind::notConnectedToInternet:
        return u"This computer is not connected to the internet."_s;
    case Kind::unresolvedHost:
        return u"No server with this name was found."_s;
    case Kind::cannotConnectToHost:
        return u"The server could not be reached."_s;
    case Kind::networkConnectionLost:
        return u"The connection was lost."_s;
    case Kind::timedOut:
        return u"The server did not answer in time."_s;
    case Kind::tlsFailure:
        return u"A secure connection to the server could not be made."_s;
    case Kind::malformedResponse:
        return u"The server sent an answer that could not be understood."_s;
    case Kind::tooLarge:
        return u"The server's answer is too large."_s;
    case Kind::tooManyRedirects:
        return u"The server redirected too many times."_s;
    case Kind::invalidUrl:
        return u"The address is not a valid http or https address."_s;
    case Kind::invalidRequest:
        return u"An API key or another header contains a character that cannot be sent."_s;
    case Kind::clientClosed:
        return u"The connection was closed."_s;
    case Kind::other:
        return u"The request failed."_s;
    }
    return {};
}

} // namespace

TransportError::TransportError(Kind kind, QString detail) : m_kind(kind), m_detail(std::move(detail))
{
    m_what = description().toUtf8();
}

bool TransportError::isConnectionFailure() const
{
    switch (m_kind) {
    case Kind::notConnectedToInternet:
    case Kind::cannotConnectToHost:
    case Kind::networkConnectionLost:
    case Kind::timedOut:
        return true;
    default:
        return false;
    }
}

QString TransportError::description() const
{
    const QString text = sentence(m_kind);
    return m_detail.isEmpty() ? text : text + u' ' + m_detail;
}

} // namespace morvane
