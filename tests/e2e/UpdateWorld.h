#pragma once

#include "support/DownloadServer.h"
#include "support/MorvaneSession.h"
#include "support/SampleArchive.h"

namespace morvane {

/// A bundle of the program on loopback, build 1, in a folder with blanks in its path, and an update host that
/// has build 2 of it.
class UpdateWorld {
public:
    /// `folder` is where the bundle is laid.
    explicit UpdateWorld(const QString &folder);

    /// The program of the bundle, to be started.
    QString program() const { return app() + QStringLiteral("/Contents/MacOS/Morvane"); }
    QString app() const { return parent() + QStringLiteral("/Morvane.app"); }
    /// The folder that the bundle lies in, and what lies beside it.
    QString parent() const { return m_folder + QStringLiteral("/My Programs"); }
    QStringList beside() const;
    /// For a session that is not started yet.
    void prepare(MorvaneSession &morvane) const;

    /// Offers build 2, with `additions` to its manifest: more keys in JSON, each behind a comma.
    void offer(const QByteArray &additions = {});
    /// Offers it with a hash that is not the image's.
    void offerWithWrongHash();
    /// The process that runs from the bundle, now or soon; 0 if none comes.
    qint64 process() const;

    DownloadServer host;

private:
    void lay() const;
    SampleArchive image() const;
    void publish(const QByteArray &sha256, const QByteArray &additions);

    const QString m_folder;
};

} // namespace morvane
