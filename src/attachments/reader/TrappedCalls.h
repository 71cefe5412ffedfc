#pragma once

#include "attachments/reader/DataFiles.h"

namespace morvane {

/// From now on this process itself answers the system calls with paths that SystemCallFilter traps: opening
/// one of `files`, which must outlive every other use of the process, and asking for the state of an open
/// file. All others fail. False on a processor for which this is not written.
bool answerTrappedCalls(const DataFiles &files);

} // namespace morvane
