#include "attachments/reader/SystemCallFilter.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <sched.h>
#include <seccomp.h>

namespace morvane {
namespace {

/// Calls that fail whatever their arguments. Names that this machine's processor does not have are skipped.
constexpr std::array forbidden{
    // The network.
    "socket", "socketpair", "connect", "bind", "listen", "accept", "accept4", "sendto", "sendmsg", "sendmmsg",
    "io_uring_setup",
    // Other programs and processes.
    "execve", "execveat", "kill", "tkill", "pidfd_open", "pidfd_send_signal", "pidfd_getfd",
    "process_vm_readv", "process_vm_writev",
#if !__has_feature(address_sanitizer) // looks for leaks with these
    "fork", "vfork", "ptrace",
#endif
    "setns", "unshare", "mount", "chroot", "keyctl", "add_key", "request_key", "bpf", "perf_event_open",
    // Changes to files.
    "creat", "openat2", "truncate", "ftruncate", "rename", "renameat", "renameat2", "link", "linkat",
    "symlink", "symlinkat", "unlink", "unlinkat", "mkdir", "mkdirat", "rmdir", "mknod", "mknodat", "chmod",
    "fchmod", "fchmodat", "chown", "fchown", "lchown", "fchownat", "setxattr", "lsetxattr", "fsetxattr",
    "removexattr", "lremovexattr", "fremovexattr", "utimensat", "open_by_handle_at"};

constexpr auto refused = SCMP_ACT_ERRNO(EPERM);

/// Forbids to open files for anything but reading; `flags` is the position of the argument that tells.
bool forbidWriting(scmp_filter_ctx filter, const char *call, unsigned flags)
{
    const int number = seccomp_syscall_resolve_name(call);
    if (number < 0)
        return true;
    for (const scmp_datum_t mode : {O_WRONLY, O_RDWR}) {
        const scmp_arg_cmp writes{flags, SCMP_CMP_MASKED_EQ, O_ACCMODE, mode};
        if (seccomp_rule_add_array(filter, refused, number, 1, &writes) != 0)
            return false;
    }
    return true;
}

/// Allows new threads, which some decoders want, and no new processes.
bool forbidProcesses([[maybe_unused]] scmp_filter_ctx filter)
{
#if __has_feature(address_sanitizer)
    return true;
#else
    // The flags of this call lie in memory, where no filter sees them; the C library then takes the older
    // one.
    const scmp_arg_cmp isProcess{0, SCMP_CMP_MASKED_EQ, CLONE_THREAD, 0};
    return seccomp_rule_add_array(filter, SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(clone3), 0, nullptr) == 0 &&
           seccomp_rule_add_array(filter, refused, SCMP_SYS(clone), 1, &isProcess) == 0;
#endif
}

} // namespace

bool filterSystemCalls()
{
    const std::unique_ptr<void, decltype(&seccomp_release)> filter(seccomp_init(SCMP_ACT_ALLOW),
                                                                   &seccomp_release);
    if (!filter)
        return false;
    for (const char *call : forbidden) {
        const int number = seccomp_syscall_resolve_name(call);
        if (number >= 0 && seccomp_rule_add_array(filter.get(), refused, number, 0, nullptr) != 0)
            return false;
    }
    return forbidProcesses(filter.get()) && forbidWriting(filter.get(), "open", 1) &&
           forbidWriting(filter.get(), "openat", 2) && seccomp_load(filter.get()) == 0;
}

} // namespace morvane
