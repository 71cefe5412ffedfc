#include "attachments/reader/TrappedCalls.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <ucontext.h>

namespace morvane {
namespace {

/// A signal handler has no other way to reach it. Written once, before there is a second thread.
const DataFiles *dataFiles = nullptr;

/// A system call as the thread made it.
class TrappedCall {
public:
    TrappedCall(const siginfo_t &info, void *context)
        : m_number(info.si_syscall), m_machine(static_cast<ucontext_t *>(context)->uc_mcontext)
    {
    }

    long number() const { return m_number; }
#if defined(__x86_64__)
    static constexpr bool isKnown = true;
    long argument(int position) const
    {
        constexpr int registers[]{REG_RDI, REG_RSI, REG_RDX, REG_R10};
        return m_machine.gregs[registers[position]];
    }
    void answer(long result) { m_machine.gregs[REG_RAX] = result; }
#elif defined(__aarch64__)
    static constexpr bool isKnown = true;
    long argument(int position) const { return static_cast<long>(m_machine.regs[position]); }
    void answer(long result) { m_machine.regs[0] = static_cast<unsigned long long>(result); }
#else
    static constexpr bool isKnown = false;
    long argument(int) const { return 0; }
    void answer(long) {}
#endif
    const char *path(int position) const
    {
        // Registers hold numbers. NOLINTNEXTLINE(performance-no-int-to-ptr)
        return reinterpret_cast<const char *>(argument(position));
    }

private:
    long m_number;
    mcontext_t &m_machine;
};

long openDataFile(const char *path, long flags)
{
    if ((flags & O_ACCMODE) != O_RDONLY)
        return -EACCES;
    const int descriptor = dataFiles->open(path);
    return descriptor >= 0 ? descriptor : -EACCES;
}

/// The C library asks in this way for the state of a file that is open.
long stateOfOpenFile(const TrappedCall &call)
{
    if ((call.argument(3) & AT_EMPTY_PATH) == 0 || *call.path(1) != '\0')
        return -EACCES;
    return ::syscall(SYS_fstat, call.argument(0), call.argument(2)) == 0 ? 0 : -errno;
}

long resultOf(const TrappedCall &call)
{
    switch (call.number()) {
#ifdef SYS_open
    case SYS_open:
        return openDataFile(call.path(0), call.argument(1));
#endif
    case SYS_openat:
        return openDataFile(call.path(1), call.argument(2));
    case SYS_newfstatat:
        return stateOfOpenFile(call);
    default:
        return -EPERM;
    }
}

void answer(int, siginfo_t *info, void *context)
{
    const int error = errno;
    TrappedCall call(*info, context);
    call.answer(resultOf(call));
    errno = error;
}

} // namespace

bool answerTrappedCalls(const DataFiles &files)
{
    dataFiles = &files;
    struct sigaction action{};
    action.sa_sigaction = &answer;
    action.sa_flags = SA_SIGINFO | SA_NODEFER;
    return TrappedCall::isKnown && ::sigaction(SIGSYS, &action, nullptr) == 0;
}

} // namespace morvane
