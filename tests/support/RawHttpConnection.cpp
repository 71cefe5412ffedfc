#include "support/RawHttpConnection.h"

#include "support/RawHttpServer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <poll.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace morvane {

RawHttpConnection::RawHttpConnection(RawHttpServer &server, int socket, int number)
    : m_server(server), m_socket(socket), m_number(number)
{
    ++m_server.m_open;
}

RawHttpConnection::~RawHttpConnection()
{
    close();
}

std::optional<RawHttpRequest> RawHttpConnection::readRequest()
{
    qsizetype headEnd = m_received.indexOf("\r\n\r\n");
    while (headEnd < 0) {
        if (!receive())
            return std::nullopt;
        headEnd = m_received.indexOf("\r\n\r\n");
    }
    const QList<QByteArray> lines = m_received.first(headEnd).split('\n');
    const QList<QByteArray> requestLine = lines.first().trimmed().split(' ');
    RawHttpRequest request;
    request.connection = m_number;
    request.method = requestLine.value(0);
    request.target = requestLine.value(1);
    for (const QByteArray &line : lines.sliced(1)) {
        const qsizetype colon = line.indexOf(':');
        request.headers.add(line.first(std::max<qsizetype>(colon, 0)), line.sliced(colon + 1).trimmed());
    }
    const qsizetype bodySize = request.headers.value("Content-Length").value_or("0").toLongLong();
    m_received.remove(0, headEnd + 4);
    while (m_received.size() < bodySize)
        if (!receive())
            return std::nullopt;
    request.body = m_received.first(bodySize);
    m_received.remove(0, bodySize);
    m_server.record(request);
    return request;
}

bool RawHttpConnection::skipBytes(qsizetype count)
{
    while (m_received.size() < count) {
        count -= m_received.size();
        m_received.clear();
        if (!receive())
            return false;
    }
    m_received.remove(0, count);
    return true;
}

bool RawHttpConnection::waitForBytes()
{
    return !m_received.isEmpty() || receive();
}

bool RawHttpConnection::send(QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        if (m_socket < 0 || waitForSocket(POLLOUT) == Ready::torn)
            return false;
        const ssize_t sent = ::send(m_socket, bytes.data(), static_cast<std::size_t>(bytes.size()),
                                    MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent < 0 && (errno == EAGAIN || errno == EINTR))
            continue;
        if (sent < 0)
            return false;
        m_server.m_sent += sent;
        bytes = bytes.sliced(sent);
    }
    return true;
}

bool RawHttpConnection::sendInPieces(QByteArrayView bytes, qsizetype pieceSize)
{
    while (!bytes.isEmpty()) {
        const qsizetype size = std::min(pieceSize, bytes.size());
        if (!send(bytes.first(size)))
            return false;
        bytes = bytes.sliced(size);
    }
    return true;
}

bool RawHttpConnection::sendChunk(QByteArrayView bytes)
{
    return send(QByteArray::number(bytes.size(), 16) + "\r\n" + bytes.toByteArray() + "\r\n");
}

bool RawHttpConnection::waitUntil(const std::function<bool()> &condition)
{
    while (!condition()) {
        pollfd tearDown{m_server.m_tearDown, POLLIN, 0};
        if (::poll(&tearDown, 1, 1) > 0)
            return false;
    }
    return true;
}

bool RawHttpConnection::waitUntilClosedByPeer()
{
    while (receive())
        m_received.clear();
    return !m_server.m_torn;
}

void RawHttpConnection::close()
{
    if (m_socket < 0)
        return;
    ::close(m_socket);
    m_socket = -1;
    --m_server.m_open;
}

void RawHttpConnection::reset()
{
    if (m_socket < 0)
        return;
    const linger dropAll{1, 0};
    ::setsockopt(m_socket, SOL_SOCKET, SO_LINGER, &dropAll, sizeof dropAll);
    close();
}

RawHttpConnection::Ready RawHttpConnection::waitForSocket(short events)
{
    std::array<pollfd, 2> descriptors{pollfd{m_socket, events, 0}, pollfd{m_server.m_tearDown, POLLIN, 0}};
    while (::poll(descriptors.data(), descriptors.size(), -1) < 0 && errno == EINTR) {
    }
    return descriptors[1].revents ? Ready::torn : Ready::yes;
}

bool RawHttpConnection::receive()
{
    if (m_socket < 0 || waitForSocket(POLLIN) == Ready::torn)
        return false;
    std::array<char, 64 * 1024> buffer;
    const ssize_t received = ::recv(m_socket, buffer.data(), buffer.size(), 0);
    if (received <= 0) {
        ++m_server.m_closedByPeer;
        return false;
    }
    m_received.append(buffer.data(), received);
    return true;
}

} // namespace morvane
