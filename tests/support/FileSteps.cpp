#include "support/FileSteps.h"

#include <cstdio>
#include <dlfcn.h>
#include <mutex>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace morvane {
namespace {

std::mutex mutex;
std::optional<QList<FileSteps::Step>> steps; ///< Nothing while nobody looks. Guarded by the mutex.

void note(FileSteps::Step::Kind kind, const struct stat &status)
{
    const std::lock_guard lock(mutex);
    if (steps)
        steps->append({kind, status.st_ino, status.st_size});
}

template <class Function> Function systemFunction(const char *name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace

FileSteps::FileSteps()
{
    const std::lock_guard lock(mutex);
    steps.emplace();
}

FileSteps::~FileSteps()
{
    const std::lock_guard lock(mutex);
    steps.reset();
}

QList<FileSteps::Step> FileSteps::all() const
{
    const std::lock_guard lock(mutex);
    return *steps;
}

} // namespace morvane

// These take the place of the system's functions in the test programs that look.

extern "C" int fsync(int descriptor)
{
    struct stat status{};
    if (::fstat(descriptor, &status) == 0)
        morvane::note(morvane::FileSteps::Step::Kind::synced, status);
    static const auto system = morvane::systemFunction<int (*)(int)>("fsync");
    return system(descriptor);
}

extern "C" int rename(const char *from, const char *to) noexcept
{
    struct stat status{};
    if (::lstat(from, &status) == 0)
        morvane::note(morvane::FileSteps::Step::Kind::renamed, status);
    static const auto system = morvane::systemFunction<int (*)(const char *, const char *)>("rename");
    return system(from, to);
}
