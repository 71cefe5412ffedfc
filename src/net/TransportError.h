#pragma once

#include <QByteArray>
#include <QString>
#include <exception>

namespace morvane {

/// Why a request brought no response, or a body did not come to its end. An HTTP status is never one.
class TransportError : public std::exception {
public:
    enum class Kind {
        NotConnectedToInternet, ///< This computer has no network at all.
        UnresolvedHost,         ///< The host name is unknown.
        CannotConnectToHost,    ///< Refused or unreachable.
        NetworkConnectionLost,  ///< Reset, or ended before the whole response had come.
        TimedOut,               ///< No connection within its limit, or silence for longer than the limit.
        TlsFailure,             ///< No secure connection: certificate, handshake.
        MalformedResponse,      ///< What came is no HTTP.
        TooLarge,               ///< A header, line or body above its limit.
        TooManyRedirects,
        InvalidUrl,     ///< No URL, or neither http nor https.
        InvalidRequest, ///< A header or method that cannot be sent.
        ClientClosed,   ///< The HttpClient went away while the request ran.
        Other,
    };

    /// `detail` is added to the description of the kinds that have no text of their own (Other, TlsFailure).
    explicit TransportError(Kind kind, QString detail = {});

    Kind kind() const { return m_kind; }

    /// Whether the user is told that the connection failed: no network, unknown host, refused, lost, timed
    /// out.
    bool isConnectionFailure() const;

    /// One or two sentences in plain English.
    QString description() const;

    const char *what() const noexcept override { return m_what.constData(); }

private:
    Kind m_kind;
    QString m_detail;
    QByteArray m_what;
};

} // namespace morvane
