#include "net/LocalNetwork.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <memory>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

bool isUsable(const ifaddrs &interface)
{
    if (!interface.ifa_addr || (interface.ifa_flags & IFF_LOOPBACK) || !(interface.ifa_flags & IFF_UP) ||
        !(interface.ifa_flags & IFF_RUNNING))
        return false;
    if (interface.ifa_addr->sa_family == AF_INET)
        return true;
    if (interface.ifa_addr->sa_family != AF_INET6)
        return false;
    // Every interface that is up has a link-local address, connected or not.
    return !IN6_IS_ADDR_LINKLOCAL(&reinterpret_cast<const sockaddr_in6 *>(interface.ifa_addr)->sin6_addr);
}

} // namespace

bool isLoopbackHost(const QString &host)
{
    if (host.compare("localhost"_L1, Qt::CaseInsensitive) == 0 ||
        host.endsWith(".localhost"_L1, Qt::CaseInsensitive))
        return true;
    const QByteArray address = host.toLatin1();
    in_addr version4{};
    if (inet_pton(AF_INET, address.constData(), &version4) == 1)
        return (ntohl(version4.s_addr) >> 24) == IN_LOOPBACKNET;
    in6_addr version6{};
    return inet_pton(AF_INET6, address.constData(), &version6) == 1 && IN6_IS_ADDR_LOOPBACK(&version6);
}

bool hasNetwork()
{
    ifaddrs *list = nullptr;
    if (getifaddrs(&list) != 0)
        return true; // unknown: do not claim that there is none
    const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> owner(list, &freeifaddrs);
    for (const ifaddrs *interface = list; interface; interface = interface->ifa_next)
        if (isUsable(*interface))
            return true;
    return false;
}

} // namespace morvane
