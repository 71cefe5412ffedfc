#pragma once

#include "attachments/reader/DataFiles.h"

namespace morvane {

/// Leaves this process, for good, what reading one file takes and nothing else: memory, threads, the time,
/// what is open, the `files`, its answer. Two layers, each of which refuses paths by itself: the list of
/// allowed system calls, and Landlock where the kernel has it. Before there is a second thread. False if that
/// could not be done: the process must not look at the file then.
bool closeCage(const DataFiles &files);

} // namespace morvane
