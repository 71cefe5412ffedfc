#include <cerrno>
#include <cstdio>
#include <seccomp.h>
#include <sstream>
#include <string>
#include <sys/prctl.h>
#include <unistd.h>

/// without-calls NAME[,NAME] PROGRAM ARGUMENT…: runs a program as a kernel would that does not know these
/// system calls. "seccomp" stands for both ways to load a filter.
int main(int argc, char **argv)
{
    if (argc < 3)
        return 2;
    const scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ALLOW);
    std::istringstream names(argv[1]);
    for (std::string name; std::getline(names, name, ',');) {
        const int number = seccomp_syscall_resolve_name(name.c_str());
        seccomp_rule_add_array(filter, SCMP_ACT_ERRNO(ENOSYS), number, 0, nullptr);
        if (name == "seccomp") {
            const scmp_arg_cmp loadsFilter{0, SCMP_CMP_EQ, PR_SET_SECCOMP, 0};
            seccomp_rule_add_array(filter, SCMP_ACT_ERRNO(EINVAL), SCMP_SYS(prctl), 1, &loadsFilter);
        }
    }
    if (seccomp_load(filter) != 0) {
        std::perror("without-calls");
        return 1;
    }
    ::execv(argv[2], argv + 2);
    std::perror(argv[2]);
    return 1;
}
