#pragma once

#include "support/RawHttpServer.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <mutex>
#include <optional>

namespace morvane {

/// A loopback server that has files to be downloaded, understands ranges, and misbehaves as a test says. Any
/// thread.
class DownloadServer {
public:
    struct File {
        QByteArray content;
        QByteArray entityTag = "\"v1\"";
        QByteArray lastModified = {};
    };

    /// What the next answer does that is not as it should be; each is used up by one request.
    struct Fault {
        enum class Kind {
            none,
            cutOff,        ///< The connection is reset after `bytes` bytes of the body.
            stall,         ///< Nothing comes after `bytes` bytes until the client leaves.
            status,        ///< Nothing but the status `bytes`.
            wholeInstead,  ///< The range is not heeded, and the whole file comes.
            otherRange,    ///< The rest comes from one byte later than was asked for.
            otherTag,      ///< A part comes although the file is another one.
            encoded,       ///< Says that the body is compressed.
            redirect,      ///< To `target`.
            withoutLength, ///< Chunked.
            tooMany,       ///< More bytes than the head says.
        };
        Kind kind = Kind::none;
        qint64 bytes = 0;
        QByteArray target = {};
    };

    /// On a port that is free where none is given.
    explicit DownloadServer(quint16 port = 0);

    QUrl url(const QString &path) const { return m_server.url(path); }
    /// "http://127.0.0.1:{port}", without a slash at the end.
    QString origin() const;

    void setFile(const QString &path, File file);
    void setFaults(QList<Fault> faults);

    QList<RawHttpRequest> requests() const { return m_server.requests(); }
    RawHttpServer &server() { return m_server; }

private:
    void serve(RawHttpConnection &connection);
    bool answer(RawHttpConnection &connection, const RawHttpRequest &request);

    mutable std::mutex m_mutex; ///< Guards the two below.
    QHash<QByteArray, File> m_files;
    QList<Fault> m_faults;
    RawHttpServer m_server;
};

} // namespace morvane
