// morvane-action-carrier: has elements of one other program do something, each over a line of its own to that
// program.
//
// A program of GTK 3 reads nothing more on such a line while a dialog is open that was opened over it.
// Whatever comes meanwhile, its end included, makes the program hang with the user's next key. So each line
// is kept, without a word, until the dialogs are closed that were not there before it; and this is a process
// of its own, which keeps them, whatever becomes of Morvane, until the program ends.
//
// Descriptor 3 is a socket to Morvane: ActionRequests come, and ActionSigns are answered.

#include "base/FileDescriptor.h"
#include "base/WriteWhole.h"
#include "platform/linux/desktop/ActionRequest.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QStringList>
#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <deque>
#include <fcntl.h>
#include <limits>
#include <optional>
#include <poll.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace morvane;

namespace {

constexpr int control = 3;
constexpr int forever = std::numeric_limits<int>::max();

/// Of lines; a program may claim dialogs without end.
constexpr std::size_t mostLines = 64;

struct Line {
    QString name;
    QStringList dialogs; ///< That were open before it.

    /// Whether the program, which has these dialogs open now, reads it again.
    bool isRead(const QStringList &open) const
    {
        return std::all_of(open.begin(), open.end(),
                           [this](const QString &dialog) { return dialogs.contains(dialog); });
    }
};

bool readWhole(char *bytes, std::size_t size)
{
    while (size > 0) {
        const ssize_t got = ::read(control, bytes, size);
        if (got == 0 || (got < 0 && errno != EINTR))
            return false;
        bytes += std::max<ssize_t>(got, 0);
        size -= std::size_t(std::max<ssize_t>(got, 0));
    }
    return true;
}

/// Nothing at the end of the socket.
std::optional<ActionRequest> nextRequest()
{
    std::uint32_t size = 0;
    if (!readWhole(reinterpret_cast<char *>(&size), sizeof size))
        return std::nullopt;
    QByteArray bytes(qsizetype(size), Qt::Uninitialized);
    if (!readWhole(bytes.data(), size))
        return std::nullopt;
    ActionRequest request;
    QDataStream stream(bytes);
    stream >> request;
    return request;
}

/// Morvane has ended: what is told from now on goes nowhere.
void goOnAlone()
{
    const FileDescriptor nowhere(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    ::dup2(nowhere.get(), control);
}

/// Nobody may be there any more.
void tell(ActionSign::Kind kind, quint32 number)
{
    const ActionSign sign{kind, number};
    writeWhole(control, {reinterpret_cast<const char *>(&sign), sizeof sign});
}

QDBusMessage messageOf(const ActionRequest &request)
{
    auto message = QDBusMessage::createMethodCall({}, request.path, request.interface, request.method);
    QVariantList arguments = request.arguments;
    if (request.interface == "org.freedesktop.DBus.Properties"_L1 && !arguments.isEmpty())
        arguments.last() = QVariant::fromValue(QDBusVariant(arguments.last()));
    message.setArguments(arguments);
    return message;
}

void carry(const ActionRequest &request)
{
    const QDBusConnection line =
        QDBusConnection::connectToPeer(request.address, QString::number(request.number));
    auto kind = ActionSign::Kind::failed;
    if (line.isConnected()) {
        tell(ActionSign::Kind::sent, request.number);
        const QDBusMessage answer = line.call(messageOf(request), QDBus::Block, forever);
        if (answer.type() == QDBusMessage::ReplyMessage)
            kind = answer.arguments().value(0).toBool() ? ActionSign::Kind::yes : ActionSign::Kind::no;
        else if (!line.isConnected())
            kind = ActionSign::Kind::ended;
    }
    tell(kind, request.number);
}

/// Closes the lines that the program reads again, the newest of all lines being `next`.
void replace(std::deque<Line> &lines, Line next)
{
    const auto close = [](const Line &line) {
        QDBusConnection::disconnectFromPeer(line.name);
        return true;
    };
    std::erase_if(lines, [&](const Line &line) { return line.isRead(next.dialogs) && close(line); });
    if (lines.size() >= mostLines && close(lines.front()))
        lines.pop_front();
    lines.push_back(std::move(next));
}

} // namespace

int main(int argc, char **argv)
{
    ::signal(SIGPIPE, SIG_IGN);
    const QCoreApplication application(argc, argv);
    std::deque<Line> lines;
    FileDescriptor program;
    std::array<pollfd, 2> waiting{{{control, POLLIN, 0}, {-1, POLLIN, 0}}};
    while (::poll(waiting.data(), waiting.size(), -1) >= 0 || errno == EINTR) {
        if (waiting[1].revents != 0)
            break;
        if (waiting[0].revents == 0)
            continue;
        const auto request = nextRequest();
        if (request && !program.isOpen())
            program = FileDescriptor(int(::syscall(SYS_pidfd_open, pid_t(request->pid), 0)));
        waiting[1].fd = program.get();
        if (!request) {
            waiting[0].fd = -1;
            goOnAlone();
        }
        if (!program.isOpen())
            break;
        if (!request)
            continue;
        replace(lines, {QString::number(request->number), request->dialogs});
        std::thread(carry, *request).detach();
    }
    std::_Exit(0); // Threads may wait for answers that never come.
}
