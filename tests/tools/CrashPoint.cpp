// A library to be loaded in front of all others (LD_PRELOAD): kills the program at one step of an update.
// Which, is told by CRASH_POINT: "before" or "after", a function of the system, and at which of its calls
// that concern the folder in which an update is prepared, such as "after renameat2 1"; of access, those that
// look for the relauncher.

#include <atomic>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

namespace {

constexpr int longestPath = 4096;

struct Point {
    std::string moment;
    std::string function;
    int call = 0;
};

Point fromEnvironment()
{
    Point point;
    const char *text = std::getenv("CRASH_POINT");
    std::istringstream(text ? text : "") >> point.moment >> point.function >> point.call;
    return point;
}

bool concernsUpdate(const std::string &path)
{
    return path.find("/Morvane-update-") != std::string::npos;
}

bool concernsUpdate(int descriptor)
{
    char path[longestPath];
    const ssize_t length =
        ::readlink(("/proc/self/fd/" + std::to_string(descriptor)).c_str(), path, sizeof path);
    return length > 0 && concernsUpdate(std::string(path, static_cast<std::size_t>(length)));
}

/// Calls a function of the system, and dies before or after that where it should.
template <class Function, class... Arguments>
auto pass(const char *name, bool concerns, Arguments... arguments)
{
    static const Point point = fromEnvironment();
    static std::atomic<int> calls = 0;
    const bool isReached = concerns && point.function == name && ++calls == point.call;
    if (isReached && point.moment == "before")
        ::kill(::getpid(), SIGKILL);
    static const auto system = reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
    const auto result = system(arguments...);
    if (isReached)
        ::kill(::getpid(), SIGKILL);
    return result;
}

} // namespace

extern "C" {

int mkdir(const char *path, mode_t mode) noexcept
{
    return pass<int (*)(const char *, mode_t)>("mkdir", concernsUpdate(path), path, mode);
}

int openat(int folder, const char *name, int flags, ...)
{
    mode_t mode = 0;
    if (flags & (O_CREAT | O_TMPFILE)) {
        va_list rest;
        va_start(rest, flags);
        mode = va_arg(rest, mode_t);
        va_end(rest);
    }
    const bool makesFile = flags & O_CREAT;
    return pass<int (*)(int, const char *, int, mode_t)>("openat", makesFile && concernsUpdate(folder),
                                                         folder, name, flags, mode);
}

ssize_t pwrite(int file, const void *bytes, size_t size, off_t offset)
{
    return pass<ssize_t (*)(int, const void *, size_t, off_t)>("pwrite", concernsUpdate(file), file, bytes,
                                                               size, offset);
}

int syncfs(int file) noexcept
{
    return pass<int (*)(int)>("syncfs", concernsUpdate(file), file);
}

int renameat2(int oldFolder, const char *from, int newFolder, const char *to, unsigned flags) noexcept
{
    return pass<int (*)(int, const char *, int, const char *, unsigned)>(
        "renameat2", concernsUpdate(from), oldFolder, from, newFolder, to, flags);
}

int access(const char *path, int how) noexcept
{
    const bool looksForRelauncher = std::string(path).ends_with("/morvane-relauncher");
    return pass<int (*)(const char *, int)>("access", looksForRelauncher, path, how);
}
}
