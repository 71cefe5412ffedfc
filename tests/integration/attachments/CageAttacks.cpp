#include "CageAttacks.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <csignal>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using Outside = CageAttack::Outside;

/// The bare call: the C library takes detours of its own.
template <typename... Arguments> bool call(long number, Arguments... arguments)
{
    return ::syscall(number, arguments...) >= 0;
}

bool reads(int descriptor)
{
    char byte = 0;
    return descriptor >= 0 && ::read(descriptor, &byte, 1) == 1;
}

} // namespace

AttackedHome::AttackedHome()
{
    m_home.write(u"key"_s, secretKey);
    m_home.write(u"folder/letter"_s, "Dear Sir");
    m_home.write(u"program"_s, "#!/bin/sh\n");
    ::chmod(path("program").constData(), 0700);
}

QByteArray AttackedHome::path(const char *name) const
{
    return QFile::encodeName(m_home.path(QString::fromLatin1(name)));
}

bool AttackedHome::isUntouched() const
{
    const QStringList names = QDir(m_home.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    return m_home.read(u"key"_s) == secretKey && names.contains(u"folder"_s) && !names.contains(u"new"_s) &&
           permissionBits(m_home.path(u"key"_s)) != 0777;
}

std::vector<CageAttack> attacksOnFiles(const AttackedHome &home)
{
    const QByteArray key = home.key();
    const QByteArray made = home.path("new");
    const QByteArray folder = home.path("folder");
    const QByteArray program = home.path("program");
    std::vector<CageAttack> attacks;
    const auto add = [&](const char *name, std::function<bool()> attempt, Outside outside = Outside::works) {
        attacks.push_back({name, std::move(attempt), outside});
    };
    add("reads a file", [=] { return reads(::open(key.constData(), O_RDONLY)); });
    add("reads a file by the old call", [=] { return call(SYS_open, key.constData(), O_RDONLY); });
    add("reads a file by the newest call", [=] {
        open_how how{O_RDONLY, 0, 0};
        return call(SYS_openat2, AT_FDCWD, key.constData(), &how, sizeof how);
    });
    add("reads its environment", [] { return ::open("/proc/self/environ", O_RDONLY) >= 0; });
    add("reads another process's environment",
        [] { return ::open(("/proc/" + std::to_string(::getppid()) + "/environ").c_str(), O_RDONLY) >= 0; });
    add("writes a file", [=] { return ::open(key.constData(), O_WRONLY) >= 0; });
    add("empties a file that it opens for reading",
        [=] { return ::open(key.constData(), O_RDONLY | O_TRUNC) >= 0; });
    add("makes a file that it opens for reading",
        [=] { return ::open(made.constData(), O_RDONLY | O_CREAT, 0600) >= 0; });
    add("makes a file", [=] { return ::creat(made.constData(), 0600) >= 0; });
    add(
        "makes a nameless file", [=] { return ::open(folder.constData(), O_TMPFILE | O_RDWR, 0600) >= 0; },
        Outside::maybe);
    add("takes hold of a path", [=] { return ::open(key.constData(), O_PATH) >= 0; });
    add("lists a folder", [=] { return ::open(folder.constData(), O_RDONLY | O_DIRECTORY) >= 0; });
    add("asks whether a file is there", [=] {
        struct stat state{};
        return call(SYS_newfstatat, AT_FDCWD, key.constData(), &state, 0) ||
               call(SYS_newfstatat, AT_FDCWD, key.constData(), &state, AT_EMPTY_PATH);
    });
    add("asks whether a file is there by other calls", [=] {
        struct statx state{};
        return ::access(key.constData(), F_OK) == 0 || ::faccessat(AT_FDCWD, key.constData(), F_OK, 0) == 0 ||
               call(SYS_statx, AT_FDCWD, key.constData(), 0, STATX_ALL, &state);
    });
    add("follows a link", [] {
        char target[256];
        return ::readlink("/proc/self/exe", target, sizeof target) > 0;
    });
    add("empties a file by its path", [=] { return ::truncate(key.constData(), 0) == 0; });
    add("removes a file", [=] { return ::unlink(key.constData()) == 0; });
    add("renames a file", [=] { return ::rename(key.constData(), made.constData()) == 0; });
    add("links a file", [=] { return ::link(key.constData(), made.constData()) == 0; });
    add("links to a file", [=] { return ::symlink(key.constData(), made.constData()) == 0; });
    add("makes a folder", [=] { return ::mkdir(made.constData(), 0700) == 0; });
    add("makes a pipe", [=] { return ::mkfifo(made.constData(), 0600) == 0; });
    add("lets others read a file", [=] { return ::chmod(key.constData(), 0777) == 0; });
    add("changes a file's times", [=] { return ::utimensat(AT_FDCWD, key.constData(), nullptr, 0) == 0; });
    add("changes its folder", [=] { return ::chdir(folder.constData()) == 0; });
    add("runs a program", [=] { // which ends with 0 if it starts
        ::execl(program.constData(), "program", nullptr);
        return false;
    });
    return attacks;
}

std::vector<CageAttack> attacksOnProcesses(pid_t victim)
{
    std::vector<CageAttack> attacks;
    const auto add = [&](const char *name, std::function<bool()> attempt, Outside outside = Outside::works) {
        attacks.push_back({name, std::move(attempt), outside});
    };
    add("signals a process", [=] { return ::kill(victim, 0) == 0; });
    add("signals every process of its group", [] { return ::kill(0, 0) == 0; });
    add("signals a thread", [=] { return call(SYS_tkill, victim, 0); });
    add("signals a thread of a process", [=] { return call(SYS_tgkill, victim, victim, 0); });
    add("queues a signal", [=] {
        siginfo_t info{};
        info.si_code = SI_QUEUE;
        return call(SYS_rt_sigqueueinfo, victim, 0, &info) ||
               call(SYS_rt_tgsigqueueinfo, victim, victim, 0, &info);
    });
    add("takes hold of a process", [=] { return call(SYS_pidfd_open, victim, 0); });
    add("limits a process", [=] {
        rlimit limit{};
        ::getrlimit(RLIMIT_NOFILE, &limit);
        return ::prlimit(victim, RLIMIT_NOFILE, &limit, nullptr) == 0;
    });
    add("reads the limits of a process", [=] {
        rlimit limit{};
        return ::prlimit(victim, RLIMIT_NOFILE, nullptr, &limit) == 0;
    });
    add("slows a process down", [=] { return ::setpriority(PRIO_PROCESS, victim, 19) == 0; });
    add("schedules a process", [=] {
        sched_param parameter{};
        return ::sched_setscheduler(victim, SCHED_IDLE, &parameter) == 0;
    });
    add("binds a process to a processor", [=] {
        cpu_set_t set;
        CPU_ZERO(&set);
        CPU_SET(0, &set);
        return ::sched_setaffinity(victim, sizeof set, &set) == 0;
    });
    add(
        "traces a process", [=] { return ::ptrace(PTRACE_SEIZE, victim, nullptr, nullptr) == 0; },
        Outside::maybe);
    add(
        "reads a process's memory",
        [=] {
            char here[8]{};
            iovec one{here, sizeof here};
            return ::process_vm_readv(victim, &one, 1, &one, 1, 0) >= 0 ||
                   ::process_vm_writev(victim, &one, 1, &one, 1, 0) >= 0;
        },
        Outside::maybe);
    add("starts a process", [] {
        const pid_t child = ::fork();
        if (child == 0)
            ::_exit(0);
        return child > 0;
    });
    add("starts a process by the old call", [] {
        const long child = ::syscall(SYS_clone, SIGCHLD, nullptr, nullptr, nullptr, nullptr);
        if (child == 0)
            ::_exit(0);
        return child > 0;
    });
    return attacks;
}

std::vector<CageAttack> attacksOnTheSystem()
{
    std::vector<CageAttack> attacks;
    const auto add = [&](const char *name, std::function<bool()> attempt, Outside outside = Outside::works) {
        attacks.push_back({name, std::move(attempt), outside});
    };
    add("opens a connection", [] { return ::socket(AF_INET, SOCK_STREAM, 0) >= 0; });
    add("opens a local connection", [] { return ::socket(AF_UNIX, SOCK_STREAM, 0) >= 0; });
    add("opens a pair of connections", [] {
        int pair[2];
        return ::socketpair(AF_UNIX, SOCK_STREAM, 0, pair) == 0;
    });
#if !__has_feature(address_sanitizer) // which writes into pipes of its own
    add("writes somewhere else than its answer", [] {
        const int other = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 10);
        return ::write(other, "", 0) == 0;
    });
#endif
    add("puts another file in the place of its answer", [] { return ::dup2(STDIN_FILENO, 10) >= 0; });
    add("maps memory that can be run", [] {
        return ::mmap(nullptr, 4096, PROT_READ | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) != MAP_FAILED;
    });
    add("makes memory one that can be run", [] {
        void *memory = ::mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        return ::mprotect(memory, 4096, PROT_READ | PROT_EXEC) == 0;
    });
    add("makes a file in memory", [] { return call(SYS_memfd_create, "program", 0); });
    add("runs an open file", [] {
        char *const none[]{nullptr};
        ::syscall(SYS_execveat, STDIN_FILENO, "", none, none, AT_EMPTY_PATH);
        return errno != EPERM; // another refusal than the cage's
    });
    add("drives a device", [] {
        int bytes = 0;
        return ::ioctl(STDIN_FILENO, FIONREAD, &bytes) == 0 || errno != EPERM;
    });
    add("takes a dangerous option", [] { return ::prctl(PR_SET_DUMPABLE, 1, 0, 0, 0) == 0; });
    add(
        "asks for a key of the kernel",
        [] {
            return call(SYS_keyctl, 0, -3, 0) || call(SYS_add_key, "user", "a", "b", 1, -3) ||
                   call(SYS_request_key, "user", "a", nullptr, -3);
        },
        Outside::maybe);
    add(
        "calls by a ring",
        [] {
            char parameters[256]{};
            return call(SYS_io_uring_setup, 1, parameters);
        },
        Outside::maybe);
    add("leaves its namespace", [] { return ::unshare(CLONE_NEWUSER) == 0; }, Outside::maybe);
    add("watches the machine", [] { return call(SYS_bpf, 0, nullptr, 0) || errno != EPERM; }, Outside::maybe);
    add("handles faults of memory", [] { return call(SYS_userfaultfd, 0); }, Outside::maybe);
    return attacks;
}

} // namespace morvane
