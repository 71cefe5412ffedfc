#include "support/RenameFaults.h"

#include <cerrno>
#include <cstdio>
#include <dlfcn.h>
#include <mutex>
#include <utility>

namespace morvane {
namespace {

std::mutex mutex;
QList<int> faults; ///< Guarded by the mutex.

int nextFault()
{
    const std::lock_guard lock(mutex);
    return faults.isEmpty() ? 0 : faults.takeFirst();
}

void setFaults(QList<int> errors)
{
    const std::lock_guard lock(mutex);
    faults = std::move(errors);
}

} // namespace

RenameFaults::RenameFaults(QList<int> errors)
{
    setFaults(std::move(errors));
}

RenameFaults::~RenameFaults()
{
    setFaults({});
}

} // namespace morvane

// Takes the place of the system's function in the test programs that look.
extern "C" int renameat2(int oldFolder, const char *from, int newFolder, const char *to,
                         unsigned flags) noexcept
{
    if (const int error = morvane::nextFault()) {
        errno = error;
        return -1;
    }
    using Function = int (*)(int, const char *, int, const char *, unsigned);
    static const auto system = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "renameat2"));
    return system(oldFolder, from, newFolder, to, flags);
}
