#pragma once

#include <QByteArray>
#include <QString>
#include <exception>

namespace morvane {

/// Why a request brought no response, or a body did not come to its end. An HTTP status is never one.
class TransportError : public std::exception {
public:
    enum class Kind {
        notConnectedToInternet, ///< This computer has no network at all.
        unresolvedHost,         ///< The host name is unknown.
        cannotConnectToHost,    ///< Refused or unreachable.
        networkConnectionLost,  ///< Reset, or ended before the whole response had come.
        timedOut,               ///< No connection within its limit, or silence for longer than the limit.
        tlsFailure,             ///< No secure connection: certificate, handshake.
        malformedResponse,      ///< What came is no HTTP.
        tooLarge,               ///< A header, line or body above its limit.
        tooManyRedirects,
        invalidUrl,     ///< No URL, or neither http nor https.
        invalidRequest, ///< A header or method that cannot be sent.
        clientClosed,   ///< The HttpClient went away while the request ran.
        other,
    };

    /// `detail`, a sentence that says more, is added to the description.
    explicit TransportError(Kind kind, QString detail = {});

    Kind kind() const { return m_kind; }

    /// Whether the user is told that the connection failed: no network, refused, lost, timed out. An unknown
    /// host is none: its name may be mistyped, and its own sentence says so.
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
