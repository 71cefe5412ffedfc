#include "platform/linux/desktop/AccessiblePeer.h"

#include "base/FileDescriptor.h"

#include <QUuid>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr auto socketPrefix = "unix:path="_L1;

/// The first part of an address such as "unix:path=/run/user/1000/socket,guid=…"; empty for any other kind:
/// some start a program.
QString socketAddress(const QString &told)
{
    return told.startsWith(socketPrefix) && !told.contains(u';') ? told.section(u',', 0, 0) : QString();
}

/// The process that listens at a socket; 0 if none does. Programs in sandboxes tell paths that are another's
/// outside.
qint64 listenerAt(const QString &address)
{
    const QByteArray path = QByteArray::fromPercentEncoding(address.sliced(socketPrefix.size()).toUtf8());
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    if (path.isEmpty() || path.size() >= qsizetype(sizeof place.sun_path))
        return 0;
    std::memcpy(place.sun_path, path.constData(), std::size_t(path.size()));
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    ucred listener{};
    socklen_t size = sizeof listener;
    const bool isKnown =
        ::connect(socket.get(), reinterpret_cast<const sockaddr *>(&place), sizeof place) == 0 &&
        ::getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &listener, &size) == 0;
    return isKnown ? listener.pid : 0;
}

} // namespace

std::unique_ptr<AccessiblePeer> AccessiblePeer::open(AccessibilityConnection &bus, const QString &service,
                                                     qint64 pid, QDeadlineTimer deadline)
{
    const QString told = bus.ask({service, u"/org/a11y/atspi/accessible/root"_s,
                                  u"org.a11y.atspi.Application"_s, u"GetApplicationBusAddress"_s},
                                 deadline)
                             .values.value(0)
                             .toString();
    const QString address = socketAddress(told);
    if (pid <= 0 || address.isEmpty() || listenerAt(address) != pid)
        return nullptr;
    std::unique_ptr<AccessiblePeer> peer(
        new AccessiblePeer(u"peer-"_s + QUuid::createUuid().toString(QUuid::WithoutBraces)));
    return QDBusConnection::connectToPeer(address, peer->m_name).isConnected() ? std::move(peer) : nullptr;
}

AccessiblePeer::~AccessiblePeer()
{
    QDBusConnection::disconnectFromPeer(m_name);
}

bool AccessiblePeer::isOpen() const
{
    return QDBusConnection(m_name).isConnected();
}

AccessibilityAnswer AccessiblePeer::ask(AccessibilityCall call, QDeadlineTimer deadline)
{
    call.service.clear();
    return askOver(QDBusConnection(m_name), {call}, deadline).first();
}

} // namespace morvane
