#include "base/ChildProcess.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <vector>

namespace morvane {

namespace {

std::unexpected<QString> systemFailure(int error)
{
    return std::unexpected(QString::fromLocal8Bit(::strerror(error)));
}

struct Pipe {
    FileDescriptor readEnd;
    FileDescriptor writeEnd;

    bool open()
    {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0)
            return false;
        readEnd = FileDescriptor(ends[0]);
        writeEnd = FileDescriptor(ends[1]);
        return ::fcntl(readEnd.get(), F_SETFL, O_NONBLOCK) == 0;
    }
};

/// What happens in the child between its birth and the program's start.
class SpawnPlan {
public:
    /// A negative descriptor stands for the null device.
    SpawnPlan(int input, int output, int errors, int control)
    {
        ::posix_spawn_file_actions_init(&m_actions);
        ::posix_spawnattr_init(&m_attributes);
        connectStandard(STDIN_FILENO, input, O_RDONLY);
        connectStandard(STDOUT_FILENO, output, O_WRONLY);
        connectStandard(STDERR_FILENO, errors, O_WRONLY);
        int firstClosed = STDERR_FILENO + 1;
        if (control >= 0)
            ::posix_spawn_file_actions_adddup2(&m_actions, control, firstClosed++);
        // Libraries open descriptors of their own, not all of them with O_CLOEXEC.
        ::posix_spawn_file_actions_addclosefrom_np(&m_actions, firstClosed);

        sigset_t none;
        sigset_t all;
        ::sigemptyset(&none);
        ::sigfillset(&all);
        ::posix_spawnattr_setsigmask(&m_attributes, &none);
        ::posix_spawnattr_setsigdefault(&m_attributes, &all);
        // A session of its own is a process group, too, and has no terminal to wait for a password at.
        ::posix_spawnattr_setflags(&m_attributes,
                                   POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnPlan()
    {
        ::posix_spawn_file_actions_destroy(&m_actions);
        ::posix_spawnattr_destroy(&m_attributes);
    }
    SpawnPlan(const SpawnPlan &) = delete;
    SpawnPlan &operator=(const SpawnPlan &) = delete;

    const posix_spawn_file_actions_t *actions() const { return &m_actions; }
    const posix_spawnattr_t *attributes() const { return &m_attributes; }

private:
    void connectStandard(int standard, int descriptor, int nullMode)
    {
        if (descriptor < 0)
            ::posix_spawn_file_actions_addopen(&m_actions, standard, "/dev/null", nullMode, 0);
        else
            ::posix_spawn_file_actions_adddup2(&m_actions, descriptor, standard);
    }

    posix_spawn_file_actions_t m_actions{};
    posix_spawnattr_t m_attributes{};
};

/// Pointers to texts that outlive them, as exec takes them.
std::vector<char *> pointers(const QList<QByteArray> &texts)
{
    std::vector<char *> list;
    list.reserve(static_cast<std::size_t>(texts.size()) + 1);
    for (const QByteArray &text : texts)
        list.push_back(const_cast<char *>(text.constData()));
    list.push_back(nullptr);
    return list;
}

} // namespace

std::expected<ChildProcess, QString> ChildProcess::start(const Options &options)
{
    Pipe output;
    Pipe errors;
    const bool hasOutput = options.output == Output::ownPipe;
    const bool hasErrors = options.errors == Errors::ownPipe;
    if ((hasOutput && !output.open()) || (hasErrors && !errors.open()))
        return systemFailure(errno);

    int errorEnd = hasErrors ? errors.writeEnd.get() : -1;
    if (options.errors == Errors::withOutput)
        errorEnd = output.writeEnd.get();
    const SpawnPlan plan(options.input, output.writeEnd.get(), errorEnd, options.control);
    const QList<QByteArray> arguments = QList{options.program} + options.arguments;
    ChildProcess child;
    const int error =
        ::posix_spawn(&child.m_pid, options.program.constData(), plan.actions(), plan.attributes(),
                      pointers(arguments).data(), pointers(options.environment).data());
    if (error != 0) {
        child.m_pid = 0;
        return systemFailure(error);
    }
    child.m_endNotice = FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, child.m_pid, 0)));
    child.m_output = std::move(output.readEnd);
    child.m_errors = std::move(errors.readEnd);
    return child;
}

ChildProcess::ChildProcess(ChildProcess &&other) noexcept
    : m_pid(std::exchange(other.m_pid, 0)), m_status(other.m_status), m_output(std::move(other.m_output)),
      m_errors(std::move(other.m_errors)), m_endNotice(std::move(other.m_endNotice))
{
}

ChildProcess &ChildProcess::operator=(ChildProcess &&other) noexcept
{
    std::swap(m_pid, other.m_pid);
    std::swap(m_status, other.m_status);
    std::swap(m_output, other.m_output);
    std::swap(m_errors, other.m_errors);
    std::swap(m_endNotice, other.m_endNotice);
    return *this;
}

ChildProcess::~ChildProcess()
{
    if (!isRunning())
        return;
    signalGroup(SIGKILL);
    waitForStatus();
}

std::optional<int> ChildProcess::takeStatus()
{
    return reap(WNOHANG);
}

int ChildProcess::waitForStatus()
{
    return reap(0).value_or(0);
}

void ChildProcess::signalGroup(int signal)
{
    if (isRunning())
        ::kill(-m_pid, signal);
}

std::optional<int> ChildProcess::reap(int options)
{
    if (!isRunning())
        return m_status;
    int status = 0;
    pid_t reaped = 0;
    do
        reaped = ::waitpid(m_pid, &status, options);
    while (reaped < 0 && errno == EINTR);
    if (reaped == 0)
        return std::nullopt;
    m_pid = 0;
    if (reaped > 0)
        m_status = WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
    return m_status;
}

QList<QByteArray> currentEnvironment()
{
    QList<QByteArray> environment;
    for (char **variable = ::environ; variable && *variable; ++variable)
        environment.append(*variable);
    return environment;
}

} // namespace morvane
