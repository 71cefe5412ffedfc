#include "platform/linux/desktop/ActionCarrier.h"

#include "base/ChildProcess.h"
#include "base/StartDetached.h"
#include "platform/Log.h"
#include "platform/linux/desktop/ElementFacts.h"

#include <QDBusArgument>
#include <QDBusVariant>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// For a process to start and read what it is told.
constexpr std::chrono::seconds startLimit{20};
constexpr qsizetype mostWindows = 1000;
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

/// Waits until a socket is ready for `events`.
bool isReady(const FileDescriptor &socket, short events, QDeadlineTimer deadline)
{
    pollfd waiting{socket.get(), events, 0};
    int found = 0;
    do
        found = ::poll(&waiting, 1, int(deadline.remainingTime()));
    while (found < 0 && errno == EINTR);
    return found > 0;
}

/// Whether nobody is at the other end any more.
bool isEnded(const FileDescriptor &socket)
{
    pollfd other{socket.get(), 0, 0};
    return !socket.isOpen() || (::poll(&other, 1, 0) > 0 && (other.revents & (POLLHUP | POLLERR)) != 0);
}

/// Stands for a process, whoever is given its number later; none if there is no such process.
FileDescriptor processOf(qint64 pid)
{
    return FileDescriptor(int(::syscall(SYS_pidfd_open, pid_t(pid), 0)));
}

bool hasExited(const FileDescriptor &process)
{
    return !process.isOpen() || isReady(process, POLLIN, QDeadlineTimer(0));
}

/// What was answered next to this request; nothing if it does not come in time, or the carrier has ended.
std::optional<ActionSign::Kind> nextSign(const FileDescriptor &socket, quint32 number,
                                         QDeadlineTimer deadline)
{
    while (isReady(socket, POLLIN, deadline)) {
        ActionSign sign;
        if (::recv(socket.get(), &sign, sizeof sign, MSG_WAITALL) != ssize_t(sizeof sign))
            return std::nullopt;
        // Answers to earlier ones come when their dialogs are closed.
        if (sign.number == number)
            return sign.kind;
    }
    return std::nullopt;
}

bool sendWhole(const FileDescriptor &socket, QByteArrayView bytes, QDeadlineTimer deadline)
{
    while (!bytes.isEmpty() && isReady(socket, POLLOUT, deadline)) {
        const ssize_t sent =
            ::send(socket.get(), bytes.data(), std::size_t(bytes.size()), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent < 0 && errno != EAGAIN && errno != EINTR)
            return false;
        bytes = bytes.sliced(std::max<ssize_t>(sent, 0));
    }
    return bytes.isEmpty();
}

/// As it is written into a request.
QVariant plain(const QVariant &argument)
{
    const bool isWrapped = argument.userType() == qMetaTypeId<QDBusVariant>();
    return isWrapped ? argument.value<QDBusVariant>().variant() : argument;
}

} // namespace

QString lineAddress(AccessibilityConnection &bus, const QString &service, qint64 pid, QDeadlineTimer deadline)
{
    const QString told = bus.ask({service, u"/org/a11y/atspi/accessible/root"_s,
                                  u"org.a11y.atspi.Application"_s, u"GetApplicationBusAddress"_s},
                                 deadline)
                             .values.value(0)
                             .toString();
    const QString address = socketAddress(told);
    return pid > 0 && !address.isEmpty() && listenerAt(address) == pid ? address : QString();
}

std::optional<AccessibilityAnswer> ActionCarrier::tell(const AccessibilityCall &call, qint64 pid,
                                                       std::chrono::milliseconds limit,
                                                       const std::stop_token &stop)
{
    const QString address = lineAddress(m_bus, call.service, pid, QDeadlineTimer(limit));
    ActionRequest request{address, call.path, call.interface, call.method};
    if (!address.isEmpty())
        request.dialogs = openDialogs(call.service, QDeadlineTimer(limit));
    request.pid = pid;
    const std::lock_guard lock(m_mutex);
    // The program may have taken its time to tell all that.
    if (stop.stop_requested())
        return std::nullopt;
    if (address.isEmpty())
        return m_bus.ask(call, QDeadlineTimer(limit));
    request.number = ++m_number;
    for (const QVariant &argument : call.arguments)
        request.arguments.append(plain(argument));
    std::erase_if(m_carriers, [](const auto &carrier) { return isEnded(carrier.second); });
    FileDescriptor &carrier = m_carriers[call.service];
    std::optional<AccessibilityAnswer> answer;
    if (carrier.isOpen())
        answer = carry(carrier, request, limit);
    if (!answer) {
        carrier = newCarrier();
        answer = carry(carrier, request, limit);
    }
    return answer ? answer : AccessibilityAnswer{AccessibilityAnswer::Kind::failed, {}};
}

QStringList ActionCarrier::openDialogs(const QString &service, QDeadlineTimer deadline)
{
    const QString accessibleInterface = u"org.a11y.atspi.Accessible"_s;
    const AccessibilityCall question{service, u"/org/a11y/atspi/accessible/root"_s, accessibleInterface,
                                     u"GetChildren"_s};
    const auto windows = referencesOf(m_bus.ask(question, deadline), mostWindows);
    QList<AccessibilityCall> calls;
    for (const AccessibilityReference &window : windows)
        calls.append({window.service, window.path, accessibleInterface, u"GetState"_s});
    const auto answers = m_bus.ask(calls, deadline);
    QStringList dialogs;
    for (qsizetype at = 0; at < windows.size(); ++at) {
        ElementFacts facts;
        facts.states = qdbus_cast<QList<uint>>(answers.at(at).values.value(0));
        if (facts.has(ElementFacts::modalState))
            dialogs.append(windows.at(at).path);
    }
    return dialogs;
}

FileDescriptor ActionCarrier::newCarrier() const
{
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        return {};
    FileDescriptor own(ends[0]);
    const FileDescriptor theirs(ends[1]);
    if (const auto started = startDetached(m_program, {}, currentEnvironment(), theirs.get()); !started)
        qCWarning(platformLog) << "what carries actions does not start:" << started.error();
    return own;
}

std::optional<AccessibilityAnswer> ActionCarrier::carry(const FileDescriptor &carrier,
                                                        const ActionRequest &request,
                                                        std::chrono::milliseconds limit)
{
    using Kind = AccessibilityAnswer::Kind;
    QByteArray bytes;
    QDataStream stream(&bytes, QDataStream::WriteOnly);
    stream << request;
    const auto size = std::uint32_t(bytes.size());
    const QDeadlineTimer start(startLimit);
    const FileDescriptor program = processOf(request.pid);
    const bool isTold = sendWhole(carrier, {reinterpret_cast<const char *>(&size), sizeof size}, start) &&
                        sendWhole(carrier, bytes, start);
    auto sign = isTold ? nextSign(carrier, request.number, start) : std::nullopt;
    if (!sign)
        return std::nullopt;
    if (*sign == ActionSign::Kind::sent) {
        sign = nextSign(carrier, request.number, QDeadlineTimer(limit));
        // A carrier ends with its program, at times before it has passed the answer on. One that crashes
        // leaves a program that may still act.
        if (!sign)
            return AccessibilityAnswer{hasExited(program) ? Kind::ended : Kind::late, {}};
    }
    if (*sign == ActionSign::Kind::failed)
        return AccessibilityAnswer{Kind::failed, {}};
    if (*sign == ActionSign::Kind::ended)
        return AccessibilityAnswer{Kind::ended, {}};
    return AccessibilityAnswer{Kind::answered, {*sign == ActionSign::Kind::yes}};
}

} // namespace morvane
