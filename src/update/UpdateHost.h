#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

namespace morvane {

/// Where updates come from, and who must have signed them. A constant of the build.
struct UpdateHost {
    QString origin;       ///< https, or http on 127.0.0.1; without a slash at the end.
    QString usualOrigin;  ///< That of releases.
    QByteArray publicKey; ///< The 32 bytes of an Ed25519 key; empty where updates are not signed.

    QUrl manifestURL() const { return QUrl(origin + QStringLiteral("/downloads/latest.json")); }

    /// Whether an image may come from this address: any https one, and the host itself.
    bool allows(const QUrl &image) const
    {
        const QUrl host(origin);
        return image.scheme() == QLatin1String("https") ||
               (image.scheme() == host.scheme() && image.host() == host.host() &&
                image.port() == host.port());
    }

    /// Whether this is a build whose updates come from somewhere else than those of releases.
    bool isUnusual() const { return origin != usualOrigin; }
};

} // namespace morvane
