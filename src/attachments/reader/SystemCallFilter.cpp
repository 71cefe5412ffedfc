#include "attachments/reader/SystemCallFilter.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <initializer_list>
#include <linux/prctl.h>
#include <memory>
#include <sched.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <unistd.h>

namespace morvane {
namespace {

/// Whatever the arguments are. Names that this machine's processor does not have are skipped, here and below.
constexpr std::array allowed{// What is open already.
                             "read", "readv", "pread64", "lseek", "close", "fstat",
                             // Memory and threads.
                             "brk", "munmap", "mremap", "madvise", "futex", "set_robust_list", "rseq",
                             "sched_yield", "exit", "exit_group", "restart_syscall",
                             "eventfd2", // a thread of the toolkit begins with one
                                         // Signals to itself.
                             "rt_sigaction", "rt_sigprocmask", "rt_sigreturn", "sigaltstack",
                             // Facts.
                             "clock_gettime", "clock_getres", "clock_nanosleep", "nanosleep", "gettimeofday",
                             "time", "getpid", "gettid", "getuid", "geteuid", "getgid", "getegid",
                             "getrlimit", "getrandom", "sysinfo"};

/// Answered by TrappedCalls.
constexpr std::array trapped{"open", "openat", "newfstatat"};

/// The C library does without them.
constexpr std::array unknown{"clone3", "statx"};

/// The flags of a new thread, as the C library starts it. Without them it would be a process.
constexpr scmp_datum_t threadFlags = CLONE_VM | CLONE_FS | CLONE_FILES | CLONE_SYSVSEM | CLONE_SIGHAND |
                                     CLONE_THREAD | CLONE_SETTLS | CLONE_PARENT_SETTID | CLONE_CHILD_CLEARTID;

scmp_arg_cmp is(unsigned argument, scmp_datum_t value)
{
    return {argument, SCMP_CMP_EQ, value, 0};
}

scmp_arg_cmp isWithout(unsigned argument, scmp_datum_t bits)
{
    return {argument, SCMP_CMP_MASKED_EQ, bits, 0};
}

/// A filter in the making; refuses whatever is not told.
class Filter {
public:
    Filter() : m_context(seccomp_init(SCMP_ACT_ERRNO(EPERM)), &seccomp_release), m_isWhole(m_context) {}

    void add(const char *call, std::uint32_t action, std::initializer_list<scmp_arg_cmp> conditions = {})
    {
        const int number = seccomp_syscall_resolve_name(call);
        if (number < 0)
            return;
        m_isWhole = m_isWhole &&
                    seccomp_rule_add_array(m_context.get(), action, number,
                                           static_cast<unsigned>(conditions.size()), conditions.begin()) == 0;
    }
    void allow(const char *call, std::initializer_list<scmp_arg_cmp> conditions = {})
    {
        add(call, SCMP_ACT_ALLOW, conditions);
    }

    bool load() const
    {
        return m_isWhole && seccomp_attr_set(m_context.get(), SCMP_FLTATR_CTL_TSYNC, 1) == 0 &&
               seccomp_load(m_context.get()) == 0;
    }

private:
    std::unique_ptr<void, decltype(&seccomp_release)> m_context;
    bool m_isWhole;
};

void allowWithConditions(Filter &filter)
{
    const auto self = static_cast<scmp_datum_t>(::getpid());
#if __has_feature(address_sanitizer)
    // The sanitizer writes into a pipe to see whether memory is there, and asks each thread for its stack.
    filter.allow("pipe2");
    filter.allow("write");
    filter.allow("sched_getaffinity");
#endif
    for (const scmp_datum_t output : {STDOUT_FILENO, STDERR_FILENO}) {
        filter.allow("write", {is(0, output)});
        filter.allow("writev", {is(0, output)});
    }
    for (const scmp_datum_t command : {F_GETFD, F_SETFD, F_GETFL, F_DUPFD_CLOEXEC})
        filter.allow("fcntl", {is(1, command)});
    // No memory becomes a program.
    filter.allow("mmap", {isWithout(2, PROT_EXEC)});
    filter.allow("mprotect", {isWithout(2, PROT_EXEC)});
    filter.allow("clone", {is(0, threadFlags)});
    filter.allow("tgkill", {is(0, self)}); // how a process aborts
    for (const scmp_datum_t process : {scmp_datum_t(0), self})
        filter.allow("sched_getaffinity", {is(0, process)});
    filter.allow("prlimit64", {is(0, 0), is(2, 0)}); // asks for its own limits
    for (const scmp_datum_t command : {PR_SET_NAME, PR_SET_VMA})
        filter.allow("prctl", {is(0, command)});
}

} // namespace

bool filterSystemCalls()
{
    Filter filter;
    for (const char *call : allowed)
        filter.allow(call);
    for (const char *call : trapped)
        filter.add(call, SCMP_ACT_TRAP);
    for (const char *call : unknown)
        filter.add(call, SCMP_ACT_ERRNO(ENOSYS));
    allowWithConditions(filter);
    return filter.load();
}

} // namespace morvane
