#include "platform/linux/LinuxSingleInstance.h"

#include "base/RegularFile.h"
#include "platform/Log.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSocketNotifier>
#include <QTimer>
#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <thread>

namespace morvane {

namespace {

using namespace std::chrono_literals;

constexpr auto lockName = "instance.lock";
constexpr auto socketName = "instance.socket";

constexpr auto retryTime = 10ms;
/// How long an instance keeps a connection that says nothing.
constexpr auto silenceTime = 5s;

constexpr size_t maximumClients = 32;
constexpr qsizetype maximumMessage = 4096;
constexpr char acknowledgement = '+';

QByteArray packed(const ActivationToken &token)
{
    // One packet, also with hostile environments: a token that does not fit is worth less than the raise.
    const QByteArray message = token.startupID + '\0' + token.xdgToken;
    return message.size() <= maximumMessage ? message : QByteArray(1, '\0');
}

ActivationToken unpacked(const QByteArray &message)
{
    const qsizetype middle = message.indexOf('\0');
    return {message.left(middle), middle < 0 ? QByteArray() : message.mid(middle + 1)};
}

/// The socket's address by way of the folder's descriptor, since a path may be longer than an address.
sockaddr_un socketAddress(int folder)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "/proc/self/fd/%d/%s", folder, socketName);
    return address;
}

FileDescriptor newSocket()
{
    return FileDescriptor(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

bool isOurUser(int socket)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == ::geteuid();
}

/// Hands `token` to the instance; false if none listens or it went away before it took the token.
bool handOver(int folder, const ActivationToken &token, QDeadlineTimer deadline)
{
    const FileDescriptor socket = newSocket();
    const sockaddr_un address = socketAddress(folder);
    if (::connect(socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        return false;
    const QByteArray message = packed(token);
    if (::send(socket.get(), message.constData(), size_t(message.size()), MSG_NOSIGNAL) != message.size())
        return false;
    pollfd waiting{socket.get(), POLLIN, 0};
    while (!deadline.hasExpired() && ::poll(&waiting, 1, int(deadline.remainingTime())) < 0 &&
           errno == EINTR) {
    }
    char answer = 0;
    return ::recv(socket.get(), &answer, 1, 0) == 1 && answer == acknowledgement;
}

} // namespace

struct LinuxSingleInstance::Client {
    FileDescriptor socket;
    std::unique_ptr<QSocketNotifier> readable;
    std::unique_ptr<QTimer> silence;
};

LinuxSingleInstance::LinuxSingleInstance(const QString &folder, std::chrono::milliseconds answerTime)
    : m_answerTime(answerTime)
{
    if (!QFile::exists(folder)) {
        QDir().mkpath(QFileInfo(folder).absolutePath());
        QDir().mkdir(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    m_folder =
        FileDescriptor(::open(QFile::encodeName(folder).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

LinuxSingleInstance::~LinuxSingleInstance() = default;

SingleInstance::Claim LinuxSingleInstance::claim(const ActivationToken &token)
{
    const QDeadlineTimer deadline(m_answerTime);
    m_lock = FileDescriptor(
        ::openat(m_folder.get(), lockName, O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
    if (!m_lock.isOpen()) {
        qCWarning(platformLog) << "another instance would not be noticed:" << systemReason(errno);
        return Claim::first;
    }
    // The instance may be starting (no socket yet) or ending (lock not yet released): both pass.
    while (true) {
        if (::flock(m_lock.get(), LOCK_EX | LOCK_NB) == 0) {
            openSocket();
            return Claim::first;
        }
        if (errno != EWOULDBLOCK && errno != EINTR) {
            qCWarning(platformLog) << "another instance would not be noticed:" << systemReason(errno);
            return Claim::first;
        }
        if (handOver(m_folder.get(), token, deadline))
            return Claim::handedOver;
        if (deadline.hasExpired())
            return Claim::unanswered;
        std::this_thread::sleep_for(retryTime);
    }
}

void LinuxSingleInstance::openSocket()
{
    // Whoever holds the lock owns the name; what lies there is left of a process that is gone.
    ::unlinkat(m_folder.get(), socketName, 0);
    FileDescriptor socket = newSocket();
    const sockaddr_un address = socketAddress(m_folder.get());
    if (::bind(socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0 &&
        ::fchmodat(m_folder.get(), socketName, S_IRUSR | S_IWUSR, 0) == 0 &&
        ::listen(socket.get(), int(maximumClients)) == 0)
        m_socket = std::move(socket);
    else
        qCWarning(platformLog) << "later starts cannot be handed over:" << systemReason(errno);
}

void LinuxSingleInstance::listen(std::function<void(const ActivationToken &)> onActivation)
{
    m_onActivation = std::move(onActivation);
    if (!m_socket.isOpen() || m_notifier)
        return;
    m_notifier = std::make_unique<QSocketNotifier>(m_socket.get(), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                     [this] { acceptClients(); });
}

void LinuxSingleInstance::acceptClients()
{
    while (true) {
        FileDescriptor socket(::accept4(m_socket.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (!socket.isOpen())
            return;
        if (m_clients.size() >= maximumClients || !isOurUser(socket.get()))
            continue;
        auto client = std::make_unique<Client>();
        Client *const address = client.get();
        client->readable = std::make_unique<QSocketNotifier>(socket.get(), QSocketNotifier::Read);
        client->silence = std::make_unique<QTimer>();
        client->silence->setSingleShot(true);
        QObject::connect(client->readable.get(), &QSocketNotifier::activated, client->readable.get(),
                         [this, address] { readFrom(address); });
        QObject::connect(client->silence.get(), &QTimer::timeout, client->silence.get(),
                         [this, address] { readFrom(address); });
        client->silence->start(silenceTime);
        client->socket = std::move(socket);
        m_clients.push_back(std::move(client));
    }
}

void LinuxSingleInstance::readFrom(Client *client)
{
    std::array<char, maximumMessage> buffer;
    const ssize_t size = ::recv(client->socket.get(), buffer.data(), buffer.size(), 0);
    const QByteArray message = size > 0 ? QByteArray(buffer.data(), size) : QByteArray();
    if (size > 0)
        ::send(client->socket.get(), &acknowledgement, 1, MSG_NOSIGNAL);
    // The notifier that called is one of the client's own parts, so it goes only after its signal has ended.
    client->readable->setEnabled(false);
    client->readable.release()->deleteLater();
    client->silence.release()->deleteLater();
    std::erase_if(m_clients, [client](const auto &one) { return one.get() == client; });
    if (size > 0 && m_onActivation)
        m_onActivation(unpacked(message));
}

} // namespace morvane
