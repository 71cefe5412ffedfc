#include "attachments/reader/ProcessLimits.h"

#include "attachments/AttachmentLimits.h"

#include <csignal>
#include <sys/prctl.h>
#include <sys/resource.h>

namespace morvane {
namespace {

/// The data of the document reader alone are some 270 files.
constexpr rlim_t openFiles = 1'024;
/// Below what the user works with, the tools included.
constexpr int lowerPriority = 5;

void limit(__rlimit_resource resource, rlim_t value)
{
    const rlimit both{value, value};
    ::setrlimit(resource, &both);
}

} // namespace

void limitThisProcess()
{
// The sanitizers' own memory takes terabytes of addresses.
#if !__has_feature(address_sanitizer)
    limit(RLIMIT_AS, attachmentLimits::readerMemoryBytes);
#endif
    limit(RLIMIT_CPU, static_cast<rlim_t>(attachmentLimits::readerProcessorTime.count()));
    limit(RLIMIT_CORE, 0);
    limit(RLIMIT_FSIZE, 0);
    limit(RLIMIT_NOFILE, openFiles);
    // A write that the limit refuses is an error, not an end: libraries try to write their caches.
    ::signal(SIGXFSZ, SIG_IGN);
    ::setpriority(PRIO_PROCESS, 0, lowerPriority);
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    ::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
    // Nobody waits for the answer any more once the program is gone.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0);
}

} // namespace morvane
