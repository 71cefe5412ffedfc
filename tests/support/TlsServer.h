#pragma once

#include "support/TestCertificate.h"

#include <QProcess>
#include <QString>
#include <QTemporaryDir>
#include <QUrl>
#include <QtGlobal>

namespace morvane {

/// A real https server on loopback that serves files of a temporary folder: HTTP/1.1 by openssl's s_server,
/// where each file holds a whole response, or HTTP/2 by nghttpd, where each file is a body.
class TlsServer {
public:
    enum class Protocol { http1, http2 };

    TlsServer(Protocol protocol, const TestCertificate &certificate);
    ~TlsServer();

    /// Whether it takes connections.
    bool isRunning() const { return m_port != 0; }
    QUrl url(const QString &file) const;
    void addFile(const QString &name, const QByteArray &content);

private:
    void startHttp1(const TestCertificate &certificate);
    void startHttp2(const TestCertificate &certificate);

    QTemporaryDir m_folder;
    QProcess m_process;
    quint16 m_port = 0;
};

} // namespace morvane
