#pragma once

#include "BareHandshake.h"

#include <arpa/inet.h>
#include <cstdlib>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace morvane {

/// The floor over HTTP: one connection, a request, all of its answer, again.
class BareClient {
public:
    explicit BareClient(quint16 port)
    {
        m_socket = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const int on = 1;
        ::setsockopt(m_socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        if (::connect(m_socket, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0)
            std::abort();
        const QByteArray head = ask(bareHandshake);
        const qsizetype begin = head.toLower().indexOf("mcp-session-id: ") + 16;
        m_session = head.mid(begin, head.indexOf('\r', begin) - begin);
    }
    ~BareClient() { ::close(m_socket); }

    QByteArray ask(const QByteArray &text)
    {
        QByteArray request = "POST /mcp HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: application/json\r\n"
                             "Accept: application/json, text/event-stream\r\nContent-Length: " +
                             QByteArray::number(text.size()) + "\r\n";
        if (!m_session.isEmpty())
            request += "Mcp-Session-Id: " + m_session + "\r\nMCP-Protocol-Version: 2025-03-26\r\n";
        request += "\r\n" + text;
        if (::send(m_socket, request.constData(), std::size_t(request.size()), 0) != request.size())
            std::abort();
        QByteArray answer;
        char buffer[65536];
        while (!isWhole(answer)) {
            const ssize_t count = ::recv(m_socket, buffer, sizeof buffer, 0);
            if (count <= 0)
                std::abort();
            answer.append(buffer, count);
        }
        return answer;
    }

private:
    /// The server tells the length of what it has at once, and sends the rest in chunks.
    static bool isWhole(const QByteArray &answer)
    {
        const qsizetype headEnd = answer.indexOf("\r\n\r\n");
        if (headEnd < 0)
            return false;
        constexpr QByteArrayView field = "\r\ncontent-length: ";
        const QByteArray head = answer.first(headEnd + 2).toLower();
        const qsizetype begin = head.indexOf(field) + field.size();
        if (begin < field.size())
            return answer.endsWith("0\r\n\r\n");
        return answer.size() == headEnd + 4 + head.mid(begin, head.indexOf('\r', begin) - begin).toInt();
    }

    int m_socket = -1;
    QByteArray m_session;
};

} // namespace morvane
