#include "support/FileSteps.h"

#include <cerrno>
#include <cstdio>
#include <dlfcn.h>
#include <mutex>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace morvane {
namespace {

std::mutex mutex;
std::optional<QList<FileSteps::Step>>
    steps; ///< Nothing while nobody looks. Guarded by the mutex, as the next.
int failure = 0;

void note(FileSteps::Step::Kind kind, const struct stat &status)
{
    const std::lock_guard lock(mutex);
    if (steps)
        steps->append({kind, status.st_ino, status.st_size});
}

int syncFailure()
{
    const std::lock_guard lock(mutex);
    return failure;
}

/// Carries out a system's function that brings what the descriptor stands for to the disk.
int sync(FileSteps::Step::Kind kind, int descriptor, int (*system)(int))
{
    struct stat status{};
    if (::fstat(descriptor, &status) == 0)
        note(kind, status);
    const int error = syncFailure();
    if (error == 0)
        return system(descriptor);
    errno = error;
    return -1;
}

template <class Function> Function systemFunction(const char *name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace

FileSteps::FileSteps(int syncError)
{
    const std::lock_guard lock(mutex);
    steps.emplace();
    failure = syncError;
}

FileSteps::~FileSteps()
{
    const std::lock_guard lock(mutex);
    steps.reset();
    failure = 0;
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
    static const auto system = morvane::systemFunction<int (*)(int)>("fsync");
    return morvane::sync(morvane::FileSteps::Step::Kind::synced, descriptor, system);
}

extern "C" int syncfs(int descriptor) noexcept
{
    static const auto system = morvane::systemFunction<int (*)(int)>("syncfs");
    return morvane::sync(morvane::FileSteps::Step::Kind::volumeSynced, descriptor, system);
}

extern "C" int rename(const char *from, const char *to) noexcept
{
    struct stat status{};
    if (::lstat(from, &status) == 0)
        morvane::note(morvane::FileSteps::Step::Kind::renamed, status);
    static const auto system = morvane::systemFunction<int (*)(const char *, const char *)>("rename");
    return system(from, to);
}
