#pragma once

#include <QByteArrayView>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <optional>

namespace morvane {

/// The manifest of the newest version, as its author wrote it.
struct UpdateInfo {
    QString version; ///< Dots between numbers; one short line.
    qint64 build = 0;
    QString date; ///< Decides nothing.
    QString dmg;  ///< The text of the image's address, an http or https one.
    QString sha256;
    QStringList notes; ///< One line each.
    QStringList requiredVersions;
    bool required = false;
    QString signature; ///< Hexadecimal; empty where the image is not signed.

    bool operator==(const UpdateInfo &) const = default;

    /// Nothing for what is no manifest: no JSON object, a key that is missing or of another type, a version
    /// that is no short line, or an address that no image can have.
    static std::optional<UpdateInfo> fromJson(QByteArrayView json);

    QUrl url() const { return QUrl(dmg, QUrl::StrictMode); }

    /// The image's address with the version behind it, so that no cache answers with the image before.
    QUrl cacheBustedDownloadURL() const;
};

} // namespace morvane
