#include "support/RawHttpServer.h"

#include <cstdlib>
#include <memory>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

RawHttpServer::RawHttpServer(Script script, quint16 port) : m_script(std::move(script))
{
    m_tearDown = ::eventfd(0, EFD_CLOEXEC);
    m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    auto *const generic = reinterpret_cast<sockaddr *>(&address);
    socklen_t size = sizeof address;
    const int again = 1; // also while connections of another server there are fading
    ::setsockopt(m_listener, SOL_SOCKET, SO_REUSEADDR, &again, sizeof again);
    if (::bind(m_listener, generic, size) != 0 || ::listen(m_listener, 512) != 0 ||
        ::getsockname(m_listener, generic, &size) != 0)
        std::abort(); // without a loopback socket no test means anything
    m_port = ntohs(address.sin_port);
    m_acceptor = std::thread([this] { acceptAll(); });
}

RawHttpServer::~RawHttpServer()
{
    m_torn = true;
    ::eventfd_write(m_tearDown, 1);
    m_acceptor.join();
    for (std::thread &script : m_scripts)
        script.join();
    ::close(m_listener);
    ::close(m_tearDown);
}

RawHttpServer::Script RawHttpServer::answering(Answer answer)
{
    return [answer = std::move(answer)](RawHttpConnection &connection) {
        while (const auto request = connection.readRequest())
            if (!connection.send(answer(*request)))
                return;
    };
}

QUrl RawHttpServer::url(const QString &pathAndQuery) const
{
    return QUrl(u"http://127.0.0.1:%1%2"_s.arg(m_port).arg(pathAndQuery));
}

QList<RawHttpRequest> RawHttpServer::requests() const
{
    const std::lock_guard lock(m_mutex);
    return m_requests;
}

void RawHttpServer::acceptAll()
{
    while (true) {
        pollfd descriptors[]{{m_listener, POLLIN, 0}, {m_tearDown, POLLIN, 0}};
        ::poll(descriptors, 2, -1);
        if (m_torn)
            return;
        const int socket = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0)
            continue;
        const int noDelay = 1;
        ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof noDelay);
        const int number = m_accepted++;
        m_scripts.emplace_back([this, socket, number] {
            RawHttpConnection connection(*this, socket, number);
            m_script(connection);
        });
    }
}

void RawHttpServer::record(const RawHttpRequest &request)
{
    const std::lock_guard lock(m_mutex);
    m_requests.append(request);
}

QByteArray rawHttpResponse(int status, const QByteArray &body, const HttpHeaders &headers)
{
    HttpHeaders all = headers;
    if (!all.contains("Content-Length"))
        all.add("Content-Length", QByteArray::number(body.size()));
    return rawHttpHead(status, all) + body;
}

QByteArray rawHttpHead(int status, const HttpHeaders &headers)
{
    QByteArray head = "HTTP/1.1 " + QByteArray::number(status) + " Status\r\n";
    for (const auto &[name, value] : headers.fields())
        head += name + ": " + value + "\r\n";
    return head + "\r\n";
}

} // namespace morvane
