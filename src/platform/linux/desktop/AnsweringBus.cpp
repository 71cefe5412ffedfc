#include "platform/linux/desktop/AnsweringBus.h"

#include "base/FileDescriptor.h"

#include <QByteArray>
#include <algorithm>
#include <cstddef>
#include <optional>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// The name of a socket as the system takes it; that of an abstract one begins with a zero.
std::optional<QByteArray> socketName(const QString &address)
{
    const QString first = address.section(u';', 0, 0).section(u',', 0, 0);
    QByteArray name = QByteArray::fromPercentEncoding(first.section(u'=', 1).toUtf8());
    if (first.startsWith("unix:path="_L1))
        return name;
    if (first.startsWith("unix:abstract="_L1))
        return '\0' + name;
    return std::nullopt;
}

} // namespace

bool isAnswering(const QString &address, QDeadlineTimer deadline)
{
    const std::optional<QByteArray> name = socketName(address);
    if (!name)
        return true;
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    if (name->size() >= qsizetype(sizeof place.sun_path))
        return false;
    std::copy(name->begin(), name->end(), place.sun_path);
    const bool isAbstract = name->startsWith('\0');
    const auto size = socklen_t(offsetof(sockaddr_un, sun_path) + std::size_t(name->size()) + !isAbstract);
    const FileDescriptor bus(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (::connect(bus.get(), reinterpret_cast<const sockaddr *>(&place), size) != 0)
        return false;
    // Each connection begins with this, to which the bus says whom it lets in.
    const QByteArray greeting =
        '\0' + QByteArray("AUTH EXTERNAL ") + QByteArray::number(::getuid()).toHex() + "\r\n";
    if (::send(bus.get(), greeting.constData(), std::size_t(greeting.size()), MSG_NOSIGNAL) < 0)
        return false;
    pollfd answer{bus.get(), POLLIN, 0};
    return ::poll(&answer, 1, int(std::max<qint64>(deadline.remainingTime(), 0))) > 0;
}

} // namespace morvane
