#include "support/TlsServer.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int attempts = 5;

sockaddr_in loopback(quint16 port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

quint16 freePort()
{
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof address;
    ::bind(socket, reinterpret_cast<sockaddr *>(&address), size);
    ::getsockname(socket, reinterpret_cast<sockaddr *>(&address), &size);
    ::close(socket);
    return ntohs(address.sin_port);
}

bool takesConnections(quint16 port)
{
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in address = loopback(port);
    const bool connected =
        ::connect(socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    ::close(socket);
    return connected;
}

} // namespace

TlsServer::TlsServer(Protocol protocol, const TestCertificate &certificate)
{
    m_process.setWorkingDirectory(m_folder.path());
    if (protocol == Protocol::http1)
        startHttp1(certificate);
    else
        startHttp2(certificate);
}

TlsServer::~TlsServer()
{
    m_process.kill();
    m_process.waitForFinished();
}

QUrl TlsServer::url(const QString &file) const
{
    return QUrl(u"https://127.0.0.1:%1/%2"_s.arg(m_port).arg(file));
}

void TlsServer::addFile(const QString &name, const QByteArray &content)
{
    QDir(m_folder.path()).mkpath(QFileInfo(name).path());
    QFile file(m_folder.filePath(name));
    if (file.open(QIODevice::WriteOnly))
        file.write(content);
}

void TlsServer::startHttp1(const TestCertificate &certificate)
{
    m_process.start(u"openssl"_s, {u"s_server"_s, u"-accept"_s, u"127.0.0.1:0"_s, u"-HTTP"_s, u"-cert"_s,
                                   certificate.certificateFile(), u"-key"_s, certificate.keyFile()});
    static const QRegularExpression accepting(u"ACCEPT \\S+:(\\d+)"_s);
    QString output;
    while (m_process.waitForReadyRead()) {
        output += QString::fromLatin1(m_process.readAllStandardOutput());
        if (const auto match = accepting.match(output); match.hasMatch()) {
            m_port = static_cast<quint16>(match.captured(1).toInt());
            return;
        }
    }
}

void TlsServer::startHttp2(const TestCertificate &certificate)
{
    // nghttpd does not tell which port it got, so a free one is chosen; it ends at once if that is taken.
    for (int attempt = 0; attempt < attempts && m_port == 0; ++attempt) {
        const quint16 port = freePort();
        m_process.start(u"nghttpd"_s,
                        {u"--address=127.0.0.1"_s, u"--htdocs="_s + m_folder.path(), u"--echo-upload"_s,
                         QString::number(port), certificate.keyFile(), certificate.certificateFile()});
        m_process.waitForStarted();
        while (!m_process.waitForFinished(10) && m_process.state() == QProcess::Running) {
            if (takesConnections(port)) {
                m_port = port;
                return;
            }
        }
    }
}

} // namespace morvane
