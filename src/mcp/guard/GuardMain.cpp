// morvane-server-guard PROGRAM ARGUMENT...: runs a tool server, and sees to it that neither it nor anything
// that it started outlives Morvane, however Morvane ends.
//
// Descriptor 3 is a socket to Morvane. The guard answers on it once, with the system's error number of the
// start (0: it runs). When the other end closes, every descendant gets SIGTERM, and what is left after two
// seconds SIGKILL. Descendants that left their process group or lost their parents are found, too, since the
// guard is where such processes are reparented to.
//
// It is two processes, so that one of them can be killed: the first starts the second, which starts the
// server. When the second is gone, what is left of the family comes to the first, which ends it. When the
// first is gone, Morvane closes the socket, and the second ends it.

#include "mcp/guard/Descendants.h"
#include "mcp/guard/EndFamily.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int control = 3;

[[noreturn]] void becomeServer(char **command, int report, pid_t guard)
{
    ::setpgid(0, 0);
    // For the case that the guard itself is killed.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != guard)
        ::_exit(127);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::execv(command[0], command);
    const std::int32_t error = errno;
    [[maybe_unused]] const ssize_t written = ::write(report, &error, sizeof error);
    ::_exit(127);
}

/// Starts the server; gives the system's error number, or 0.
std::int32_t start(char **command)
{
    int report[2];
    if (::pipe2(report, O_CLOEXEC) != 0)
        return errno;
    const pid_t guard = ::getpid();
    const pid_t server = ::fork();
    if (server < 0)
        return errno;
    if (server == 0)
        becomeServer(command, report[1], guard);
    ::setpgid(server, server); // whichever of the two comes first
    ::close(report[1]);
    std::int32_t error = 0;
    if (::read(report[0], &error, sizeof error) != sizeof error)
        error = 0;
    ::close(report[0]);
    return error;
}

/// The server's pipes are its own; held open here, their ends would never be seen.
void leavePipes()
{
    const int nothing = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    for (int standard = 0; standard < control; ++standard)
        ::dup2(nothing, standard);
    ::close(nothing);
}

/// Takes the status of everything that has ended; false when there is no child any more.
bool reap()
{
    while (true) {
        const pid_t ended = ::waitpid(-1, nullptr, WNOHANG);
        if (ended == 0)
            return true;
        if (ended < 0 && errno != EINTR)
            return false;
    }
}

void signalAll(int signal)
{
    for (const pid_t process : morvane::descendants(::getpid()))
        ::kill(process, signal);
}

/// Waits for signals until `deadline`.
void waitForSignal(int signals, Clock::time_point deadline)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    pollfd wait{signals, POLLIN, 0};
    ::poll(&wait, 1, left > 0 ? static_cast<int>(left) : 0);
    signalfd_siginfo information{};
    while (::read(signals, &information, sizeof information) > 0)
        continue;
}

void endAll(int signals)
{
    morvane::endFamily({.now = [] { return Clock::now(); },
                        .signalAll = &signalAll,
                        .reap = &reap,
                        .waitUntil = [signals](Clock::time_point end) { waitForSignal(signals, end); }});
}

bool asksForEnd(int signals)
{
    bool asks = false;
    signalfd_siginfo information{};
    while (::read(signals, &information, sizeof information) > 0)
        asks = asks || information.ssi_signo != SIGCHLD;
    return asks;
}

/// The signals by which a process learns that another has ended, or that it is to end; they are blocked.
int watchedSignals()
{
    sigset_t watched;
    ::sigemptyset(&watched);
    for (const int signal : {SIGCHLD, SIGTERM, SIGINT, SIGHUP, SIGPIPE})
        ::sigaddset(&watched, signal);
    ::sigprocmask(SIG_BLOCK, &watched, nullptr);
    ::sigdelset(&watched, SIGPIPE);
    return ::signalfd(-1, &watched, SFD_CLOEXEC | SFD_NONBLOCK);
}

/// The second process: runs the server until it has ended by itself or is to end.
void guardServer(char **command)
{
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    const int signals = watchedSignals();
    const std::int32_t error = start(command);
    leavePipes();
    ::send(control, &error, sizeof error, MSG_NOSIGNAL);
    while (reap()) {
        pollfd waits[]{{control, POLLIN, 0}, {signals, POLLIN, 0}};
        ::poll(waits, 2, -1);
        if (waits[0].revents != 0 || asksForEnd(signals)) {
            endAll(signals);
            return;
        }
    }
}

/// The first process: waits for the end of the second, and ends what that has left.
void standBehind(pid_t second, int signals)
{
    leavePipes();
    while (::waitpid(second, nullptr, WNOHANG) == 0) {
        pollfd wait{signals, POLLIN, 0};
        ::poll(&wait, 1, -1);
        if (asksForEnd(signals))
            ::kill(second, SIGTERM);
    }
    endAll(signals);
}

} // namespace

int main(int count, char **arguments)
{
    if (count < 2)
        return 2;
    ::fcntl(control, F_SETFD, FD_CLOEXEC);
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    const int signals = watchedSignals();
    const pid_t second = ::fork();
    if (second < 0) {
        const std::int32_t error = errno;
        ::send(control, &error, sizeof error, MSG_NOSIGNAL);
    } else if (second == 0) {
        guardServer(arguments + 1);
    } else {
        standBehind(second, signals);
    }
    return 0;
}
