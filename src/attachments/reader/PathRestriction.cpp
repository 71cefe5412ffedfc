#include "attachments/reader/PathRestriction.h"

#include "base/FileDescriptor.h"

#include <array>
#include <cstdint>
#include <sys/syscall.h>
#include <unistd.h>

namespace morvane {
namespace {

/// What the kernel takes, which is longer than what the headers of Debian 12 know. Older kernels take the
/// beginning, as long as the rest is zero.
struct Ruleset {
    std::uint64_t files;
    std::uint64_t network;
    std::uint64_t scopes;
};

constexpr std::uint64_t firstBits(int count)
{
    return (std::uint64_t(1) << count) - 1;
}

/// All that a kernel of this version can refuse. Versions only ever add to it.
Ruleset everything(long version)
{
    constexpr std::array fileRights{13, 14, 15, 15, 16}; // of the versions 1 to 5
    const auto known = static_cast<std::size_t>(version) < fileRights.size()
                           ? static_cast<std::size_t>(version)
                           : fileRights.size();
    constexpr std::uint64_t connectAndBind = firstBits(2);
    constexpr std::uint64_t socketsAndSignals = firstBits(2);
    return {firstBits(fileRights[known - 1]), version >= 4 ? connectAndBind : 0,
            version >= 6 ? socketsAndSignals : 0};
}

} // namespace

PathRestriction restrictPaths()
{
    constexpr unsigned askForVersion = 1;
    const long version = ::syscall(SYS_landlock_create_ruleset, nullptr, 0, askForVersion);
    if (version < 1)
        return PathRestriction::unknownToKernel;
    const Ruleset refused = everything(version);
    // Rules would be exceptions; there are none.
    const FileDescriptor ruleset(
        static_cast<int>(::syscall(SYS_landlock_create_ruleset, &refused, sizeof refused, 0)));
    if (!ruleset.isOpen() || ::syscall(SYS_landlock_restrict_self, ruleset.get(), 0) != 0)
        return PathRestriction::failed;
    return PathRestriction::enforced;
}

} // namespace morvane
