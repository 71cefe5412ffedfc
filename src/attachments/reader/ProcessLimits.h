#pragma once

namespace morvane {

/// Gives up what this process does not need for reading one file: memory and processor time beyond
/// AttachmentLimits.h, files to write, core dumps, being looked at by other processes, new privileges. What
/// the system cannot limit stays as it is; what must be refused is refused by the cage.
void limitThisProcess();

} // namespace morvane
