#include "support/RenameFaults.h"

#include "base/FileDescriptor.h"

#include <cerrno>
#include <cstdio>
#include <dlfcn.h>
#include <fcntl.h>
#include <mutex>
#include <utility>

namespace morvane {
namespace {

std::mutex mutex;
QList<int> faults; ///< This and the next are guarded by the mutex.
QByteArray pipeToWaitFor;

int nextFault()
{
    const std::lock_guard lock(mutex);
    return faults.isEmpty() ? 0 : faults.takeFirst();
}

void setFaults(QList<int> errors, const QByteArray &pipe = {})
{
    const std::lock_guard lock(mutex);
    faults = std::move(errors);
    pipeToWaitFor = pipe;
}

void waitForWriter()
{
    const FileDescriptor opened(::open(pipeToWaitFor.constData(), O_RDONLY | O_CLOEXEC));
}

} // namespace

RenameFaults::RenameFaults(QList<int> errors, const QByteArray &pipe)
{
    setFaults(std::move(errors), pipe);
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
    const int error = morvane::nextFault();
    if (error > 0) {
        errno = error;
        return -1;
    }
    if (error == morvane::RenameFaults::held)
        morvane::waitForWriter();
    using Function = int (*)(int, const char *, int, const char *, unsigned);
    static const auto system = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "renameat2"));
    return system(oldFolder, from, newFolder, to, flags);
}
