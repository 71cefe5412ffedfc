#pragma once

namespace morvane {

enum class PathRestriction {
    enforced,
    unknownToKernel, ///< Nothing has changed.
    failed           ///< The kernel knows it and refused it.
};

/// Has the kernel (Landlock) refuse this process every path for good: to read, to write, to run, to list, to
/// make and to remove; also, as far as it knows them, the network and signals to other processes. What is
/// open stays open. Before there is a second thread, and without the right to new privileges.
PathRestriction restrictPaths();

} // namespace morvane
