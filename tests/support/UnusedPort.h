#pragma once

#include <QtGlobal>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace morvane {

/// A loopback port on which nothing listens. Throws std::runtime_error if there is none.
inline quint16 unusedPort()
{
    const int probe = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (::bind(probe, reinterpret_cast<sockaddr *>(&address), size) != 0 ||
        ::getsockname(probe, reinterpret_cast<sockaddr *>(&address), &size) != 0)
        throw std::runtime_error("no port");
    ::close(probe);
    return ntohs(address.sin_port);
}

} // namespace morvane
