#include "net/TransportError.h"

#include <utility>

namespace morvane {

namespace {

QString sentence(TransportError::Kind kind)
{
    using Kind = TransportError::Kind;
    switch (kind) {
    case Kind::NotConnectedToInternet:
        return QStringLiteral("This computer is not connected to the internet.");
    case Kind::UnresolvedHost:
        return QStringLiteral("No server with this name was found.");
    case Kind::CannotConnectToHost:
        return QStringLiteral("The server could not be reached.");
    case Kind::NetworkConnectionLost:
        return QStringLiteral("The connection was lost.");
    case Kind::TimedOut:
        return QStringLiteral("The server did not answer in time.");
    case Kind::TlsFailure:
        return QStringLiteral("A secure connection to the server could not be made.");
    case Kind::MalformedResponse:
        return QStringLiteral("The server sent an answer that could not be understood.");
    case Kind::TooLarge:
        return QStringLiteral("The server's answer is too large.");
    case Kind::TooManyRedirects:
        return QStringLiteral("The server redirected too many times.");
    case Kind::InvalidUrl:
        return QStringLiteral("The address is not a valid http or https address.");
    case Kind::InvalidRequest:
        return QStringLiteral("An API key or another header contains a character that cannot be sent.");
    case Kind::ClientClosed:
        return QStringLiteral("The connection was closed.");
    case Kind::Other:
        return QStringLiteral("The request failed.");
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
    case Kind::NotConnectedToInternet:
    case Kind::UnresolvedHost:
    case Kind::CannotConnectToHost:
    case Kind::NetworkConnectionLost:
    case Kind::TimedOut:
        return true;
    default:
        return false;
    }
}

QString TransportError::description() const
{
    const QString text = sentence(m_kind);
    return m_detail.isEmpty() ? text : text + QLatin1Char(' ') + m_detail;
}

} // namespace morvane
