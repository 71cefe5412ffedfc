#pragma once

#include "support/DownloadServer.h"
#include "support/MorvaneSession.h"

namespace morvane {

/// A bundle of the program, build 1, in a folder with blanks in its path, and an update host on loopback that
/// has build 2 of it. They are made of the program on loopback, or in a trial are those that
/// packaging/try-update.sh has made as bundles are handed out.
class UpdateWorld {
public:
    /// `folder` is where the bundle is laid.
    explicit UpdateWorld(const QString &folder);

    /// Whether this is a trial, which may take its time.
    static bool isTrial();

    /// The program of the bundle, to be started.
    QString program() const { return app() + QStringLiteral("/Contents/MacOS/Morvane"); }
    QString app() const { return parent() + QStringLiteral("/Morvane.app"); }
    /// The folder that the bundle lies in, and what lies beside it or waits in the folder for downloads.
    QString parent() const { return m_folder + QStringLiteral("/My Programs"); }
    QStringList beside() const;
    /// Where the program downloads to.
    QString downloads() const { return m_folder + QStringLiteral("/temporary"); }
    /// For a session that is not started yet.
    void prepare(MorvaneSession &morvane) const;
    /// Lays the bundle anew, where another volume now is in its place.
    void lay() const;
    /// What the bundle takes on the disk, and the hash of all that is in it.
    qint64 size() const;
    QByteArray fingerprint() const;

    /// Offers build 2, with `additions` to its manifest: more keys in JSON, each behind a comma.
    void offer(const QByteArray &additions = {});
    /// Offers it with a hash that is not the image's.
    void offerWithWrongHash();
    /// Offers something else as build 2.
    void offerImage(const QByteArray &image);
    /// The process that runs from the bundle, now or soon; 0 if none comes.
    qint64 process() const;

    DownloadServer host;

private:
    void publish(const QByteArray &sha256, const QByteArray &additions);

    const QString m_folder;
};

} // namespace morvane
