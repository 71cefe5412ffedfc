#pragma once

#include <QByteArray>
#include <QString>

namespace morvane {

/// What holds for all requests of an HttpClient.
struct HttpClientOptions {
    /// Sent where a request names no `User-Agent` of its own.
    QByteArray userAgent = "Morvane";
    /// A file of certificates in PEM form that are trusted instead of the system's; empty for the system's.
    QString trustedCertificates;
};

} // namespace morvane
